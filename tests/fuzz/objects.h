// Objects and arguments that the fuzzers share.
#pragma once

#include <zrkey/zrkey.hpp>

#include <cstdio>
#include <fstream>
#include <string>

#include "tests/fuzz/expect.h"

namespace zr::fuzz {

using zrkey::ByteArray;
using zrkey::ComRef;
using zrkey::Text;
using zrkey::Variant;

/// A text of arbitrary units, zeros among them.
inline Text textOfUnits(const std::string& bytes) {
    Text text;
    text.reset(SysAllocStringLen(nullptr, static_cast<UINT>(bytes.size() / 2)));
    bytes.copy(reinterpret_cast<char*>(text.get()), bytes.size() / 2 * 2);
    return text;
}

inline ComRef<ITokenProvider> makeProvider() {
    ComRef<ITokenProvider> provider;
    expect(zrkey::createProvider(provider) == S_OK);
    return provider;
}

inline void writeConfig(const std::string& text) {
    // Created again: the system flushes a file that was truncated to the disk when it is closed.
    std::remove("config.xml");
    std::ofstream("config.xml", std::ios::binary) << text;
}

}  // namespace zr::fuzz
