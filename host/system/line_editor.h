// A line of input that the user edits on the terminal, with a history and completion; one
// implementation per target. On Windows there is none: the system's console edits lines itself.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/system/erasing_allocator.h"

namespace zr::host {

enum class LineResult { kLine, kEnd, kCancelled };

/// What can replace the end of a line.
struct LineCompletion {
    std::size_t typed = 0;           ///< how many bytes of the names are typed already
    std::vector<std::string> names;  ///< sorted
};

/// The history is in memory only, and ends with the editor.
class LineEditor {
public:
    /// @return null when standard input or standard error is not a terminal, or this target has no
    ///         editor. To be called before standard error is redirected.
    static std::unique_ptr<LineEditor> make();
    virtual ~LineEditor() = default;

    /// Reads a line, shown on standard error.
    /// @param line  receives it without its end.
    virtual LineResult read(const std::string& prompt, ErasedBytes& line) = 0;

    /// @param complete  gets the line up to the cursor.
    void setCompletion(std::function<LineCompletion(std::string_view)> complete) {
        m_complete = std::move(complete);
    }

protected:
    LineCompletion complete(std::string_view text) const {
        return m_complete ? m_complete(text) : LineCompletion();
    }

private:
    std::function<LineCompletion(std::string_view)> m_complete;
};

}  // namespace zr::host
