// No line editor on Windows: the console edits lines itself.
#include "host/system/line_editor.h"

namespace zr::host {

std::unique_ptr<LineEditor> LineEditor::make() {
    return nullptr;
}

}  // namespace zr::host
