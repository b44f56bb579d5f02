// A dialog as the system wants it: its controls in one block of memory, made at run time.
#pragma once

#include <string>
#include <vector>

#include <windows.h>

namespace zr::host {

/// A rectangle in dialog units.
struct DialogPlace {
    short x;
    short y;
    short width;
    short height;
};

class DialogTemplate {
public:
    DialogTemplate(DWORD style, DWORD extendedStyle, const std::wstring& title);

    /// @param kind  0x80 a button, 0x81 an edit control, 0x82 a text.
    void add(WORD kind, WORD id, DWORD style, DialogPlace place, const std::wstring& text);
    void setSize(short width, short height);
    /// Valid as long as this is not changed.
    const DLGTEMPLATE* get() const;

private:
    void append(WORD word) { m_words.push_back(word); }
    void append(DWORD number);
    void append(const std::wstring& text);
    void append(DialogPlace place);

    std::vector<WORD> m_words;
};

}  // namespace zr::host
