// Paths: a resolved path fits its buffer, is normalised, and equals the result of an independent
// implementation.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "runtime/path_utils.h"
#include "tests/fuzz/expect.h"
#include "tests/fuzz/input.h"

namespace {

using zr::fuzz::expect;

/// Resolves the path from its end: every ".." removes one component before it, "." none.
std::string resolveBackwards(std::string path) {
    for (char& c : path) {
        c = c == '\\' ? '/' : c;
    }
    if (path.front() == '.') {
        char directory[4096];
        ZGetCurrentPath(directory, sizeof directory);
        path = directory + ("/" + path);
    }
    std::size_t end = path.rfind('/');
    std::string result = path.substr(end == path.npos ? 0 : end + 1);
    std::size_t skipped = 0;
    while (end != path.npos) {
        const std::size_t before = end == 0 ? path.npos : path.rfind('/', end - 1);
        const std::size_t begin = before == path.npos ? 0 : before + 1;
        const std::string component = path.substr(begin, end - begin);
        if (component == "..") {
            ++skipped;
        } else if (component != "." && skipped > 0) {
            --skipped;
        } else if (component != ".") {
            result.insert(0, component + "/");
        }
        end = before;
    }
    return result;
}

void checkResolution(const std::string& path, int size) {
    // On the heap, with the exact size: the sanitizer finds a write past its end.
    const auto room = static_cast<std::size_t>(size < 0 ? 0 : size);
    std::vector<char> out(room, 'u');
    expect(ZGetAbsolutionPath(path.c_str(), out.data(), size) == 0, "resolving ends with 0");
    const std::string text = path.c_str();
    if (text.empty()) {
        expect(std::vector<char>(room, 'u') == out, "an empty path writes nothing");
        return;
    }
    const std::string expected = resolveBackwards(text);
    if (room <= expected.size()) {
        expect(std::vector<char>(room, 'u') == out, "what does not fit is not written");
        return;
    }
    expect(expected == out.data(), "a path is resolved");
    expect(std::strchr(out.data(), '\\') == nullptr, "a path is normalised");

    std::vector<char> inPlace(text.begin(), text.end());
    inPlace.resize(std::max(text.size(), expected.size()) + 1);
    ZGetAbsolutionPath(inPlace.data(), inPlace.data(), static_cast<int>(inPlace.size()));
    expect(expected == inPlace.data(), "a path is resolved in its own buffer");
}

void checkIdentifier(const std::string& text) {
    const GUID zero = {};
    const GUID guid = ZCreateGUIDFromString(text.c_str());
    const std::string used = text.c_str();
    const bool hasForm = used.size() == 36 && used[8] == '-' && used[13] == '-' &&
                         used[18] == '-' && used[23] == '-';
    expect(hasForm || guid == zero, "another form gives zeros");
    if (hasForm && used.find_first_not_of("0123456789abcdefABCDEF-") == used.npos) {
        expect(guid.Data1 == ZHexStringToInt(used.c_str(), 8), "the first part is read");
        expect(guid.Data4[7] == ZHexStringToInt(used.c_str() + 34, 2), "the last byte is read");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zr::fuzz::Input input(data, size);
    const int small = static_cast<int>(input.number<std::uint16_t>() % 400) - 2;
    const int length = static_cast<int>(input.below(65));
    const std::string path = input.rest();
    checkResolution(path, 260);
    checkResolution(path, small);
    checkIdentifier(path);
    ZHexStringToInt(path.data(), std::min(length, static_cast<int>(path.size())));

    std::string inPlace = path;
    ZConvertLinuxPath(inPlace.data());
    expect(std::strlen(inPlace.c_str()) == std::strlen(path.c_str()), "the length stays");
    expect(std::strchr(inPlace.c_str(), '\\') == nullptr, "no backslash is left");

    std::vector<char> directory(static_cast<std::size_t>(std::max(small, 0)));
    const int needed = ZGetModulePath(directory.data(), small);
    expect(small <= 0 || std::strlen(directory.data()) <= static_cast<std::size_t>(needed),
           "the folder is cut to its buffer");
    ZGetModuleFilePath(directory.data(), static_cast<unsigned int>(std::max(small, 0)));
    ZGetCurrentPath(directory.data(), static_cast<unsigned int>(std::max(small, 0)));
    return 0;
}
