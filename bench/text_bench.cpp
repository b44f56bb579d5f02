// Text between UTF-8 and UTF-16, beside utfcpp and a plain loop.
#include <utf8.h>
#include <zrkey/zrkey.hpp>

#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "bench/comparison.h"
#include "platform/kernel.h"
#include "runtime/string_convert.h"

namespace zr::bench {
namespace {

constexpr std::size_t kCharacters = 4096;

/// ASCII letters in UTF-8.
std::string asciiText(std::size_t length = kCharacters) {
    std::string text;
    for (std::size_t i = 0; i < length; ++i) {
        text.push_back(static_cast<char>('a' + i % 26));
    }
    return text;
}

/// Chinese characters in UTF-16: one unit each, three bytes in UTF-8.
std::vector<OLECHAR> cjkUnits() {
    std::vector<OLECHAR> units;
    for (std::size_t i = 0; i < kCharacters; ++i) {
        units.push_back(static_cast<OLECHAR>(0x4E00 + i));
    }
    return units;
}

std::string cjkText() {
    const std::vector<OLECHAR> units = cjkUnits();
    std::string text;
    utf8::utf16to8(units.begin(), units.end(), std::back_inserter(text));
    return text;
}

void measureAsciiLoop(Comparison& comparison) {
    const std::string text = asciiText();
    std::vector<OLECHAR> out(kCharacters + 1);
    comparison.measure(
        [&] {
            require(ZConvUTF8ToUnicode(text.c_str(), out.data(), kCharacters + 1) ==
                        static_cast<int>(kCharacters) + 1,
                    "not converted");
            keep(out.data());
        },
        [&] {
            OLECHAR* to = out.data();
            for (const char c : text) {
                *to++ = static_cast<unsigned char>(c);
            }
            *to = 0;
            keep(out.data());
        });
}

void measureAsciiLibrary(Comparison& comparison) {
    const std::string text = asciiText();
    std::vector<OLECHAR> out(kCharacters + 1);
    comparison.measure(
        [&] {
            require(ZConvUTF8ToUnicode(text.c_str(), out.data(), kCharacters + 1) != 0,
                    "not converted");
            keep(out.data());
        },
        [&] {
            *utf8::utf8to16(text.begin(), text.end(), out.data()) = 0;
            keep(out.data());
        });
}

void measureCjk(Comparison& comparison) {
    std::vector<OLECHAR> units = cjkUnits();
    units.push_back(0);
    std::vector<char> out(3 * kCharacters + 1);
    comparison.measure(
        [&] {
            require(ZConvUnicodeToUTF8(units.data(), out.data(),
                                       static_cast<unsigned int>(out.size())) ==
                        static_cast<int>(out.size()),
                    "not converted");
            keep(out.data());
        },
        [&] {
            *utf8::utf16to8(units.begin(), units.end() - 1, out.data()) = 0;
            keep(out.data());
        });
}

/// A text made by utfcpp, and allocated by the function that is looked up each time, as the library
/// has to do.
BSTR lookedUpText(const std::string& text) {
    const std::unique_ptr<OLECHAR[]> units(new OLECHAR[text.size() + 1]);
    *utf8::utf8to16(text.begin(), text.end(), units.get()) = 0;
    const HMODULE platform = LoadLibraryA("OleAut32.dll");
    const auto allocate = reinterpret_cast<decltype(&SysAllocString)>(
        reinterpret_cast<void*>(GetProcAddress(platform, "SysAllocString")));
    const BSTR made = allocate(units.get());
    FreeLibrary(platform);
    return made;
}

void measureString(Comparison& comparison, const std::string& text) {
    comparison.measure([&] { SysFreeString(ZSysAllocUTF8String(text.c_str())); },
                       [&] { SysFreeString(lookedUpText(text)); });
}

}  // namespace

void textRows(Bench& bench) {
    bench.row({"text/ascii", "a loop that copies byte by byte", Measure::kTime}, measureAsciiLoop);
    bench.row({"text/ascii-utfcpp", "utf8to16 of utfcpp"}, measureAsciiLibrary);
    bench.row({"text/cjk", "utf16to8 of utfcpp"}, measureCjk);
    bench.row({"text/bstr-cjk", "utfcpp, and SysAllocString looked up"},
              [](Comparison& comparison) { measureString(comparison, cjkText()); });
    bench.row({"text/bstr-label", "utfcpp, and SysAllocString looked up; 32 ASCII characters"},
              [](Comparison& comparison) { measureString(comparison, asciiText(32)); });
}

}  // namespace zr::bench
