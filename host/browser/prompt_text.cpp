// The words of a prompt.
#include "host/browser/prompt_text.h"

#include <utf8cpp/utf8.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "host/browser/shown_characters.h"

namespace zr::host {
namespace {

constexpr std::string_view kCutMark = " [cut]";
constexpr std::string_view kIndent = "    ";
/// An origin is never cut: its end says whose site it is.
constexpr std::size_t kWhole = 100000;
constexpr std::size_t kMostOfTokenText = 160;
constexpr std::size_t kMostOfValue = 600;
constexpr std::size_t kMostOfBlock = 4096;

/// Marks above and below a letter. A heap of them would cover other lines.
constexpr CharacterRange kMarks[] = {{0x300, 0x36F},   {0x483, 0x489},   {0x591, 0x5BD},
                                     {0x610, 0x61A},   {0x64B, 0x65F},   {0x6D6, 0x6ED},
                                     {0xE31, 0xE3A},   {0xE47, 0xE4E},   {0x1AB0, 0x1AFF},
                                     {0x1DC0, 0x1DFF}, {0x20D0, 0x20FF}, {0xFE20, 0xFE2F}};

/// What is shown for one character.
struct Piece {
    std::string text;
    std::size_t columns = 0;
};

Piece codeFor(const char* format, unsigned number) {
    std::array<char, 16> text = {};
    std::snprintf(text.data(), text.size(), format, number);
    return {text.data(), std::string_view(text.data()).size() + 2};
}

bool isWide(char32_t character) {
    return character > 0x7E || (character >= U'A' && character <= U'Z') || character == U'm' ||
           character == U'w' || character == U'@' || character == U'%';
}

/// Reads texts character by character.
class PieceReader {
public:
    PieceReader(std::string_view text, Markup markup, bool keepsBlanks)
        : m_text(text), m_markup(markup), m_keepsBlanks(keepsBlanks) {}

    bool isAtEnd() const { return m_text.empty(); }
    Piece next() {
        auto end = m_text.begin();
        char32_t character = 0;
        try {
            character = utf8::next(end, m_text.end());
        } catch (const utf8::exception&) {
            const auto byte = static_cast<unsigned char>(m_text.front());
            m_text.remove_prefix(1);
            m_isAfterBlank = m_isAfterMark = false;
            return codeFor("[0x%02X]", byte);
        }
        const std::string bytes(m_text.begin(), end);
        m_text.remove_prefix(bytes.size());
        const bool isMark = isIn(kMarks, character);
        const bool isCode = !isShown(character) || isOddBlank(character) ||
                            (isMark && m_isAfterMark) ||
                            (m_markup == Markup::kPossible && (bytes == "<" || bytes == "&"));
        m_isAfterBlank = character == U' ' && !isCode;
        m_isAfterMark = isMark;
        return isCode ? codeFor("[U+%04X]", static_cast<unsigned>(character))
                      : Piece{bytes, isWide(character) ? 2U : 1U};
    }

private:
    /// Many blanks would move what follows to another line, or out of the window.
    bool isOddBlank(char32_t character) const {
        return character == U' ' && !m_keepsBlanks && (m_isAfterBlank || m_text.empty());
    }

    std::string_view m_text;
    Markup m_markup;
    bool m_keepsBlanks;
    bool m_isAfterBlank = true;
    bool m_isAfterMark = true;
};

std::vector<Piece> piecesOf(std::string_view text, Markup markup, bool keepsBlanks) {
    std::vector<Piece> pieces;
    PieceReader reader(text, markup, keepsBlanks);
    while (!reader.isAtEnd()) {
        pieces.push_back(reader.next());
    }
    return pieces;
}

void cut(std::vector<Piece>& pieces, std::size_t most) {
    std::size_t size = 0;
    std::size_t fitting = 0;  // with the mark behind them
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        size += pieces[i].text.size();
        if (size + kCutMark.size() <= most) {
            fitting = i + 1;
        }
    }
    if (size > most) {
        pieces.resize(fitting);
        pieces.push_back({std::string(kCutMark), kCutMark.size()});
    }
}

/// Appends the lines of a text whose first line has a beginning of ours.
void breakLines(const std::string& beginning, const std::vector<Piece>& pieces,
                std::vector<std::string>& lines) {
    std::string line = beginning;
    std::size_t columns = beginning.size();
    for (const Piece& piece : pieces) {
        if (columns + piece.columns > kPromptColumns) {
            lines.push_back(line);
            line = kIndent;
            columns = kIndent.size();
        }
        line.append(piece.text);
        columns += piece.columns;
    }
    lines.push_back(line);
}

void append(std::vector<std::string>& lines, const std::vector<std::string>& more) {
    lines.insert(lines.end(), more.begin(), more.end());
}

}  // namespace

std::string shownText(std::string_view text, std::size_t most, Markup markup) {
    std::vector<Piece> pieces = piecesOf(text, markup, false);
    cut(pieces, most);
    std::string shown;
    for (const Piece& piece : pieces) {
        shown.append(piece.text);
    }
    return shown;
}

std::vector<std::string> shownValue(const std::string& name, std::string_view value,
                                    std::size_t most, Markup markup) {
    std::vector<Piece> pieces = piecesOf(value, markup, false);
    cut(pieces, most);
    std::vector<std::string> lines;
    breakLines(std::string(name).append(": "), pieces, lines);
    return lines;
}

std::vector<std::string> shownBlock(std::string_view text, Markup markup) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (end != std::string_view::npos && line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        breakLines("> ", piecesOf(line, markup, true), lines);
    }
    return lines;
}

PromptLines linesOf(const PinQuestion& question, Markup markup) {
    PromptLines lines;
    lines.head.push_back(std::string("A web site asks to ").append(question.purpose).append("."));
    append(lines.head, shownValue("Site", question.origin, kWhole, markup));
    append(lines.body, shownValue("Token", question.label, kMostOfTokenText, markup));
    append(lines.body, shownValue("Serial number", question.serial, kMostOfTokenText, markup));
    if (!question.tries.empty()) {
        append(lines.body, {"", question.tries});
    }
    return lines;
}

PromptLines linesOf(const Confirmation& confirmation, Markup markup) {
    PromptLines lines;
    lines.head.push_back(confirmation.title);
    append(lines.head, shownValue("Site", confirmation.origin, kWhole, markup));
    for (const auto& [name, value] : confirmation.lines) {
        append(lines.body, shownValue(name, value, kMostOfValue, markup));
    }
    if (confirmation.text.size() > kMostOfBlock) {
        append(lines.body, {"", "The text is too long to be shown here."});
    } else if (!confirmation.text.empty()) {
        append(lines.body, {"", "Text:"});
        append(lines.body, shownBlock(confirmation.text, markup));
    }
    return lines;
}

}  // namespace zr::host
