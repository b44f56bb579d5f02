// The reference of the object model, in Markdown.
#pragma once

#include <string>

namespace zr::host {

/// The whole page docs/object-model.md.
std::string objectReference();

}  // namespace zr::host
