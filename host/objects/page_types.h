// The types of the page library, in TypeScript.
#pragma once

#include <string>

namespace zr::host {

/// The whole file web/page/zrkey.d.ts.
std::string pageTypes();

}  // namespace zr::host
