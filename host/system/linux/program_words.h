// Words and variables as the calls that start a program take them.
#pragma once

#include <string>
#include <vector>

namespace zr::host {

/// @return the addresses of the texts, which stay the caller's, and a null at the end.
inline std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace zr::host
