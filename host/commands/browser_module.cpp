// zrkey browser module: the PKCS #11 module that web pages reach.
#include <CLI/CLI.hpp>

#include "host/commands/browser_options.h"
#include "host/output/printable.h"
#include "host/system/system.h"
#include "host/system/utf8_path.h"
#include "host/token/load_cause.h"
#include "host/token/module_places.h"
#include "host/token/paths.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

struct BrowserModuleOptions : ScopeOptions {
    std::string path;
    std::string configuration;
    bool isRemoved = false;
};

/// The file of a module, by its path or by a name as for --module. Throws a Failure.
std::string requireModule(const std::string& name) {
    const std::string asked = "use the module " + inQuotes(name);
    const fs::path given = toPath(name);
    std::error_code error;
    const bool isPath = given.has_parent_path() || fs::exists(given, error);
    const std::optional<fs::path> found = isPath ? std::nullopt : findModule(modulePlaces(), name);
    const fs::path file = absolutePath(found.value_or(given)).lexically_normal();
    if (const std::optional<Cause> cause = findFileCause(file)) {
        throw commandFailure(kExitModule, asked, cause->text,
                             "give the path of a PKCS #11 module, or a name that p11-kit knows");
    }
    if (const std::string problem = pathProblem(toUtf8(file), PathUse::kModule); !problem.empty()) {
        throw commandFailure(kExitModule, asked, "its path " + problem,
                             "rename it, or use it through a link");
    }
    return toUtf8(file);
}

std::string requireConfiguration(const std::string& name) {
    const fs::path file = absolutePath(toPath(name)).lexically_normal();
    std::error_code error;
    if (!fs::is_regular_file(file, error)) {
        throw commandFailure(kExitModule, "use the configuration " + inQuotes(toUtf8(file)),
                             error ? error.message() : "it is not a regular file",
                             "give the path of a file for the library");
    }
    return toUtf8(file);
}

/// What is used, from both files.
Report showModule() {
    const SitePolicy policy = SitePolicy::read();
    if (policy.module().empty()) {
        throw commandFailure(kExitNotFound, "show the module of zrkey-browser",
                             "browser.json names none", "set it by zrkey browser module PATH");
    }
    Report report{"module:\t" + printable(policy.module()) + '\n', {{"module", policy.module()}}};
    if (!policy.configuration().empty()) {
        report.output += "configuration:\t" + printable(policy.configuration()) + '\n';
        report.fields.push_back({"configuration", policy.configuration()});
    }
    return report;
}

Report browserModule(const BrowserModuleOptions& options) {
    const bool isSet = !options.path.empty() || !options.configuration.empty();
    if (!isSet && !options.isRemoved) {
        return showModule();
    }
    std::optional<std::string> module;
    std::optional<std::string> configuration;
    if (!options.path.empty()) {
        module = requireModule(options.path);
    }
    if (!options.configuration.empty()) {
        configuration = requireConfiguration(options.configuration);
    }
    const bool isChanged = changeSettings(options.scope(), [&](BrowserSettings& settings) {
        if (options.isRemoved) {
            settings.module.reset();
            settings.configuration.reset();
        }
        if (module) {
            settings.module = module;
        }
        if (configuration) {
            settings.configuration = configuration;
        }
    });
    Report report;
    report.fields = {{"scope", std::string(nameOf(options.scope()))}, {"changed", isChanged}};
    if (options.isRemoved) {
        report.output = "removed the module\n";
    }
    const auto add = [&report](const char* name, const std::optional<std::string>& value) {
        if (value) {
            report.output.append(name).append(":\t").append(printable(*value)).append("\n");
            report.fields.push_back({name, *value});
        }
    };
    add("module", module);
    add("configuration", configuration);
    return report;
}

}  // namespace

void addBrowserModuleCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "browser module", browserModule);
    CLI::Option* path = command.add_option("PATH", options->path, "The module, a path or a name")
                            ->type_name("")
                            ->check(isNotEmpty());
    CLI::Option* configuration =
        command
            .add_option("--config", options->configuration,
                        "The configuration for the library; the default is its built-in one")
            ->type_name("FILE")
            ->check(isNotEmpty());
    command
        .add_flag("--remove", options->isRemoved,
                  "Removes module and configuration from the settings")
        ->excludes(path)
        ->excludes(configuration);
    addScopeOptions(command, *options, "The settings");
}

}  // namespace zr::host
