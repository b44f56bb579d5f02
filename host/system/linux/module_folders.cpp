// Where Linux keeps PKCS #11 modules: the folders of the distributions, and p11-kit's configuration.
#include "host/system/module_folders.h"

#include "host/system/system.h"

namespace zr::host {

std::vector<std::string> moduleFolders() {
    std::vector<std::string> folders;
    for (const char* libraries : {"/usr/lib/x86_64-linux-gnu", "/usr/lib64", "/usr/lib",
                                  "/usr/local/lib/x86_64-linux-gnu", "/usr/local/lib"}) {
        for (const char* folder : {"/pkcs11", "/softhsm", ""}) {
            folders.push_back(std::string(libraries).append(folder));
        }
    }
    return folders;
}

std::vector<std::string> moduleConfigurationFolders() {
    std::vector<std::string> folders;
    if (std::string user = userConfigurationFolder(); !user.empty()) {
        folders.push_back(user.append("/pkcs11/modules"));
    }
    folders.emplace_back("/etc/pkcs11/modules");
    folders.emplace_back("/usr/share/p11-kit/modules");
    return folders;
}

std::vector<std::string> moduleFileNames(const std::string& name) {
    const std::string file = name + ".so";
    return {name, file, "lib" + file};
}

}  // namespace zr::host
