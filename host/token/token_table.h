// The tokens of a module.
#pragma once

#include <zrkey/zrkey.hpp>

#include <string>
#include <vector>

namespace zr::host {

/// An open token and its texts.
struct TokenRow {
    LONG index = 0;
    std::string label;
    std::string serial;
    std::string manufacturer;
    std::string model;
    zrkey::ComRef<IKeyObject> token;
};

struct TokenTable {
    INT slots = 0;
    /// Without slots that cannot be opened, and slots that say nothing: without a label, and with no
    /// serial number or zeros alone. Their token is not initialised.
    std::vector<TokenRow> rows;
};

TokenTable readTokens(ITokenProvider& provider);

}  // namespace zr::host
