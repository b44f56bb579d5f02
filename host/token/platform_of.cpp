// The platform that a shared library was built for, from the first bytes of its file.
#include "host/token/platform_of.h"

#include <utility>

namespace zr::host {
namespace {

using namespace std::string_view_literals;

/// @param isBig  whether the most significant byte comes first.
std::size_t readNumber(std::string_view bytes, std::size_t offset, std::size_t size, bool isBig) {
    std::size_t number = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const std::size_t at = offset + (isBig ? i : size - 1 - i);
        number = number << 8 | (at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0U);
    }
    return number;
}

using Processor = std::pair<std::size_t, const char*>;

template <std::size_t size>
std::string nameOf(const Processor (&known)[size], std::size_t machine) {
    for (const auto& [number, name] : known) {
        if (number == machine) {
            return name;
        }
    }
    return "processor " + std::to_string(machine);
}

std::string platformOfElf(std::string_view header) {
    constexpr Processor kProcessors[] = {
        {3, "x86"},  {8, "MIPS"},    {20, "PowerPC"}, {21, "PPC64"},   {22, "S/390"},
        {40, "ARM"}, {62, "x86-64"}, {183, "ARM64"},  {243, "RISC-V"}, {258, "LoongArch"}};
    constexpr std::size_t kClass = 4;
    constexpr std::size_t kByteOrder = 5;
    constexpr std::size_t kMachine = 18;
    constexpr std::size_t kPc64 = 62;
    const std::size_t machine =
        readNumber(header, kMachine, 2, readNumber(header, kByteOrder, 1, false) == 2);
    const bool hasShortPointers = readNumber(header, kClass, 1, false) == 1;
    std::string platform = "Linux ";
    platform.append(nameOf(kProcessors, machine));
    return hasShortPointers && machine == kPc64 ? platform.append(" with 32-bit pointers")
                                                : platform;
}

std::string platformOfPe(std::string_view header) {
    constexpr Processor kProcessors[] = {
        {0x14C, "x86"}, {0x1C4, "ARM"}, {0x8664, "x86-64"}, {0xAA64, "ARM64"}};
    constexpr std::size_t kOffset = 0x3C;
    const std::size_t start = readNumber(header, kOffset, 4, false);
    if (start >= header.size() || !header.substr(start).starts_with("PE\0\0"sv)) {
        return {};
    }
    std::string platform = "Windows ";
    return platform.append(nameOf(kProcessors, readNumber(header, start + 4, 2, false)));
}

}  // namespace

std::string platformOf(std::string_view header) {
    if (header.starts_with("\x7F"
                           "ELF")) {
        return platformOfElf(header);
    }
    if (header.starts_with("MZ")) {
        return platformOfPe(header);
    }
    return header.starts_with("\xCF\xFA\xED\xFE") ? "macOS" : "";
}

}  // namespace zr::host
