// The options of the commands, as values.
#pragma once

#include <zrkey/automation.h>

#include <optional>
#include <string>

#include "host/token/pin_source.h"

namespace zr::host {

class Console;

struct ReportOptions {
    bool json = false;
    bool verbose = false;
    bool quiet = false;          ///< only failures on standard error
    Console* console = nullptr;  ///< the streams of the command, while it runs
};

struct ModuleOptions {
    std::string path;           ///< a path or a name; empty: see chooseModule
    std::string workFolder;     ///< may contain config.xml; empty: the current folder
    std::string configuration;  ///< a file; empty: it is looked for in its places
};

/// At most one of the three is given; none is needed when there is only one token.
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
    bool lastTry = false;  ///< use the last try without a question
};

/// At most one is given; none is needed when the token has only one certificate.
struct CertificateChoice {
    std::optional<std::string> name;  ///< the ID as text, else the subject's common name
    std::optional<std::string> id;    ///< the bytes of the ID
    std::optional<LONG> index;
};

}  // namespace zr::host
