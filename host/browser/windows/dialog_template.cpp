// A dialog as the system wants it.
#include "host/browser/windows/dialog_template.h"

namespace zr::host {
namespace {

constexpr WORD kFontSize = 9;
// Where the block has the number of controls and the size.
constexpr std::size_t kCount = 4;
constexpr std::size_t kWidth = 7;

}  // namespace

DialogTemplate::DialogTemplate(DWORD style, DWORD extendedStyle, const std::wstring& title) {
    append(style | DS_SETFONT);
    append(extendedStyle);
    append(WORD{0});
    append(DialogPlace{0, 0, 0, 0});
    append(WORD{0});  // no menu
    append(WORD{0});  // the usual class
    append(title);
    append(kFontSize);
    append(std::wstring(L"MS Shell Dlg"));
}

void DialogTemplate::add(WORD kind, WORD id, DWORD style, DialogPlace place,
                         const std::wstring& text) {
    if (m_words.size() % 2 != 0) {
        append(WORD{0});
    }
    append(style | WS_CHILD | WS_VISIBLE);
    append(DWORD{0});
    append(place);
    append(id);
    append(WORD{0xFFFF});  // a class by its number
    append(kind);
    append(text);
    append(WORD{0});  // no data
    ++m_words[kCount];
}

void DialogTemplate::setSize(short width, short height) {
    m_words[kWidth] = static_cast<WORD>(width);
    m_words[kWidth + 1] = static_cast<WORD>(height);
}

const DLGTEMPLATE* DialogTemplate::get() const {
    return reinterpret_cast<const DLGTEMPLATE*>(m_words.data());
}

void DialogTemplate::append(DWORD number) {
    append(LOWORD(number));
    append(HIWORD(number));
}

void DialogTemplate::append(const std::wstring& text) {
    for (const wchar_t unit : text) {
        append(static_cast<WORD>(unit));
    }
    append(WORD{0});
}

void DialogTemplate::append(DialogPlace place) {
    for (const short number : {place.x, place.y, place.width, place.height}) {
        append(static_cast<WORD>(number));
    }
}

}  // namespace zr::host
