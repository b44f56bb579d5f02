// A line of input that the user edits on the terminal, on Linux by libedit.
#include "host/system/line_editor.h"

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <string>

#include <histedit.h>
#include <utf8cpp/utf8.h>

#include "host/system/system.h"
#include "host/system/terminal.h"

namespace zr::host {
namespace {

constexpr int kMostRemembered = 1000;

/// The names in columns would not be read when they fill more than a screen.
constexpr std::size_t kMostShown = 200;

std::string commonStart(const std::vector<std::string>& names) {
    std::string start = names.front();
    for (const std::string& name : names) {
        const auto end = std::mismatch(start.begin(), start.end(), name.begin(), name.end()).first;
        start.erase(end, start.end());
    }
    return start;
}

/// A stream of a descriptor of its own.
struct StreamCloser {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, StreamCloser>;

Stream openStream(int descriptor, const char* mode) {
    const int own = duplicateDescriptor(descriptor);
    Stream stream(own < 0 ? nullptr : fdopen(own, mode));
    if (!stream && own >= 0) {
        closeDescriptor(own);
    }
    return stream;
}

class LibeditEditor final : public LineEditor {
public:
    LibeditEditor(Stream input, Stream output)
        : m_input(std::move(input)), m_output(std::move(output)) {
        // Texts are UTF-8 whatever the user's locale says.
        if (!std::setlocale(LC_CTYPE, "C.UTF-8")) {
            std::setlocale(LC_CTYPE, "");
        }
        m_editor = el_init("zrkey", m_input.get(), m_output.get(), m_output.get());
        m_history = history_init();
        if (!isReady()) {
            return;
        }
        HistEvent event;
        history(m_history, &event, H_SETSIZE, kMostRemembered);
        history(m_history, &event, H_SETUNIQUE, 1);
        el_set(m_editor, EL_CLIENTDATA, this);
        el_set(m_editor, EL_PROMPT, givePrompt);
        el_set(m_editor, EL_EDITOR, "emacs");
        el_set(m_editor, EL_SIGNAL, 0);
        el_set(m_editor, EL_HIST, history, m_history);
        el_set(m_editor, EL_GETCFN, readCharacter);
        // Wide: the editor makes copies of other texts and does not free them.
        el_wset(m_editor, EL_ADDFN, L"zrkey-complete", L"Completes a name", completeName);
        el_set(m_editor, EL_BIND, "^I", "zrkey-complete", nullptr);
        el_set(m_editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    }
    ~LibeditEditor() override {
        if (m_history) {
            history_end(m_history);
        }
        if (m_editor) {
            el_end(m_editor);
        }
    }
    LibeditEditor(const LibeditEditor&) = delete;
    LibeditEditor& operator=(const LibeditEditor&) = delete;

    bool isReady() const { return m_editor && m_history; }

    LineResult read(const std::string& prompt, ErasedBytes& line) override {
        m_prompt = prompt;
        // The size of the terminal may be another one since the last line.
        el_resize(m_editor);
        int count = 0;
        m_isCancelled = false;
        const char* const text = el_gets(m_editor, &count);
        if (!text || count <= 0) {
            show("\n");
            return m_isCancelled ? LineResult::kCancelled : LineResult::kEnd;
        }
        std::string_view read(text, static_cast<std::size_t>(count));
        read = read.substr(0, read.find_last_not_of("\r\n") + 1);
        line.assign(read.begin(), read.end());
        if (read.find_first_not_of(' ') != std::string_view::npos) {
            HistEvent event;
            history(m_history, &event, H_ENTER, std::string(read).c_str());
        }
        return LineResult::kLine;
    }

private:
    static LibeditEditor& of(EditLine* editor) {
        void* data = nullptr;
        el_get(editor, EL_CLIENTDATA, &data);
        return *static_cast<LibeditEditor*>(data);
    }

    static char* givePrompt(EditLine* editor) { return of(editor).m_prompt.data(); }

    /// Reads a character of UTF-8. Bytes that are not valid become U+FFFD.
    static int readCharacter(EditLine* editor, wchar_t* character) {
        LibeditEditor& self = of(editor);
        std::string bytes;
        do {
            char byte = 0;
            std::error_code error;
            if (readSome(fileno(self.m_input.get()), &byte, 1, error) != 1) {
                self.m_isCancelled = error == std::errc::interrupted;
                return error ? -1 : 0;
            }
            bytes.push_back(byte);
        } while (isPart(bytes));
        *character = utf8::is_valid(bytes)
                         ? static_cast<wchar_t>(utf8::unchecked::peek_next(bytes.begin()))
                         : L'\uFFFD';
        return 1;
    }

    /// Whether more bytes belong to a character.
    static bool isPart(const std::string& bytes) {
        const auto first = static_cast<unsigned char>(bytes.front());
        const std::size_t size = first < 0xC0 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
        return bytes.size() < size &&
               (bytes.size() == 1 || (static_cast<unsigned char>(bytes.back()) & 0xC0) == 0x80);
    }

    static unsigned char completeName(EditLine* editor, int) {
        LibeditEditor& self = of(editor);
        const LineInfo& line = *el_line(editor);
        const LineCompletion found =
            self.complete({line.buffer, static_cast<std::size_t>(line.cursor - line.buffer)});
        if (found.names.empty()) {
            return CC_REFRESH_BEEP;
        }
        const std::string more = commonStart(found.names).substr(found.typed);
        if (!more.empty()) {
            return el_insertstr(editor, more.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
        }
        if (found.names.size() == 1) {
            return CC_REFRESH_BEEP;
        }
        self.showNames(found.names);
        return CC_REDISPLAY;
    }

    void showNames(const std::vector<std::string>& names) {
        std::string text = "\n";
        std::size_t used = 0;
        constexpr std::size_t kWidth = 80;
        for (std::size_t i = 0; i < std::min(names.size(), kMostShown); ++i) {
            if (used > 0 && used + 2 + names[i].size() > kWidth) {
                text.append("\n");
                used = 0;
            }
            text.append(used > 0 ? "  " : "").append(names[i]);
            used += names[i].size() + 2;
        }
        show(text.append(names.size() > kMostShown ? "  ...\n" : "\n"));
    }

    void show(const std::string& text) {
        std::fputs(text.c_str(), m_output.get());
        std::fflush(m_output.get());
    }

    Stream m_input;
    Stream m_output;
    EditLine* m_editor = nullptr;
    History* m_history = nullptr;
    std::string m_prompt;
    bool m_isCancelled = false;
};

}  // namespace

std::unique_ptr<LineEditor> LineEditor::make() {
    if (!isTerminal(kStandardInput) || !isTerminal(kStandardError)) {
        return nullptr;
    }
    Stream input = openStream(kStandardInput, "r");
    Stream output = openStream(kStandardError, "w");
    if (!input || !output) {
        return nullptr;
    }
    auto editor = std::make_unique<LibeditEditor>(std::move(input), std::move(output));
    return editor->isReady() ? std::move(editor) : nullptr;
}

}  // namespace zr::host
