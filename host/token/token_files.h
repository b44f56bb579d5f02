// The files of the library as data objects of the token: their list, new content for one, and its
// end. The library does not do the first two, and keeps a token open after the third.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/token/direct_session.h"

namespace zr::host {

/// The largest content that a file is given.
inline constexpr std::size_t kLargestFile = kLongestValue;

struct TokenFile {
    CK_OBJECT_HANDLE object = 0;
    unsigned number = 0;  ///< by which it is found: its label is this number minus one
    std::size_t size = 0;
    bool isPrivate = false;
};

/// The data objects whose labels are numbers of files, in the order of the module. The library
/// finds the first of those with the same number. Throws a Failure.
std::vector<TokenFile> listFiles(DirectSession& direct);

enum class WrittenFile {
    kCreated,   ///< there was none
    kChanged,   ///< it has another value now
    kReplaced,  ///< the module changes no values: a new object took its place
};

/// Gives a file its content. Throws a Failure; the file then is as it was, unless the failure says
/// otherwise.
/// @param number  by which it is found.
WrittenFile writeTokenFile(DirectSession& direct, unsigned number, const std::string& content);

/// Deletes the file that the library finds by a number. Throws a Failure.
void deleteTokenFile(DirectSession& direct, unsigned number);

}  // namespace zr::host
