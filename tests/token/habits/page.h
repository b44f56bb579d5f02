// The code that docs/habits.md shows, extracted by page_code.
#pragma once

#include <zrkey/zrkey.hpp>

#include <iosfwd>
#include <string>
#include <vector>

namespace zr::test {

struct PageCode {
    std::string name;  ///< heading and line in the document
    /// @param module    the module's absolute path.
    /// @param provider  with the module loaded.
    /// @param token     opened and logged in.
    void (*run)(const char* module, zrkey::ComRef<ITokenProvider>& provider,
                zrkey::ComRef<IKeyObject>& token);
    std::string shown;  ///< what the document says that it prints
};

/// What GoogleTest shows of it.
void PrintTo(const PageCode& code, std::ostream* out);

extern const std::vector<PageCode> kPageCode;

}  // namespace zr::test
