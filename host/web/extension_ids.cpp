// The identifiers of our extension.
#include "host/web/extension_ids.h"

#include <sstream>

#include "host/web/host_names.h"

namespace zr::host {

std::vector<std::string> ownExtensions() {
    std::vector<std::string> ids = {kFirefoxExtension};
    // One of each store, separated by blanks; none before it is published.
    std::istringstream words(std::string(kChromiumExtension).append(" " ZRKEY_STORE_EXTENSION_IDS));
    for (std::string id; words >> id;) {
        ids.push_back(id);
    }
    return ids;
}

}  // namespace zr::host
