// What the options of the compiled commands say, apart from how they are read.
#pragma once

#include <zrkey/automation.h>

#include <optional>
#include <string>

#include "pin_source.h"

namespace zr::host {

struct ReportOptions {
    bool json = false;
    bool verbose = false;
};

struct ModuleOptions {
    std::string path;        ///< empty: the variable ZRKEY_MODULE
    std::string workFolder;  ///< where config.xml lies; empty: the current directory
};

/// At most one of the three is given; the one token that is there needs none.
struct TokenChoice {
    std::optional<LONG> index;
    std::optional<std::string> label;
    std::optional<std::string> serial;
};

struct TokenOptions {
    ReportOptions report;
    ModuleOptions module;
    TokenChoice choice;
};

struct PinOptions {
    std::optional<PinSource> source;
    bool securityOfficer = false;
};

/// At most one of the two is given; the one certificate of a token needs none.
struct CertificateChoice {
    std::optional<std::string> name;
    std::optional<LONG> index;
};

}  // namespace zr::host
