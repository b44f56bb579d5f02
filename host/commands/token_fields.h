// The fields of a token that commands show.
#pragma once

#include "host/output/report.h"
#include "host/token/token_session.h"

namespace zr::host {

inline Record tokenFields(const TokenRow& row) {
    return {{"index", static_cast<std::uint64_t>(row.index)},
            {"label", row.label},
            {"serial", row.serial},
            {"manufacturer", row.manufacturer},
            {"model", row.model}};
}

}  // namespace zr::host
