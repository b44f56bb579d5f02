// The provider of the library that this program is linked with, and Load as that library does it.
#include "host/objects/provider_object.h"
#include "host/system/module_search.h"
#include "host/system/system.h"
#include "host/system/utf8_path.h"
#include "host/token/paths.h"

namespace zr::host {
namespace {

/// The library's limit for the current directory and the path together.
constexpr std::size_t kLongestPath = 259;

/// The file that the library loads for a path, which it takes relative to the current directory even
/// when it begins with a separator.
std::string fileOf(const std::string& path) {
    return toUtf8((currentFolder() / toPath("./" + path)).lexically_normal());
}

/// Whether the library loads that file: otherwise it refuses the path before it loads any.
bool canUse(const std::string& path) {
    const std::string folder = toUtf8(currentFolder());
    return folder.size() + 1 + path.size() <= kLongestPath &&
           pathProblem(folder, PathUse::kFolder).empty();
}

}  // namespace

HRESULT ProviderObject::create(std::shared_ptr<ProviderObject>& provider) {
    zrkey::ComRef<ITokenProvider> made;
    const HRESULT result = zrkey::createProvider(made);
    if (SUCCEEDED(result)) {
        provider = std::make_shared<ProviderObject>(std::move(made));
    }
    return result;
}

void loadAsLibrary(ProviderObject& provider, const Arguments& arguments, const WideText& path) {
    const CallText text(path);
    const auto library = provider.use(arguments);
    const std::string file = fileOf(text.utf8());
    searchBesideModule(file);
    const bool isUsable = canUse(text.utf8());
    const HRESULT result = library->Load(text.get());
    if (SUCCEEDED(result) || isUsable) {
        provider.noteLoad(*library.get(), file, result);
    }
    arguments.require(result);
}

}  // namespace zr::host
