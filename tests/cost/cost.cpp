// cost MODULE: does each operation of a list by the library and by hand, with the instant module. Under
// callgrind it writes a count of instructions for each, by the name "OPERATION library" or
// "OPERATION floor"; check-cost compares their ratios and prepares the folder. MODULE is in that folder.
// On Linux alone, because callgrind is.
#include <alloca.h>
#include <malloc.h>
#include <valgrind/callgrind.h>
#include <zrkey/zrkey.hpp>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "model/log_scope.h"
#include "runtime/string_convert.h"
#include "tests/cost/floor.h"
#include "tests/support/fixtures/library.h"

namespace zr::test {
namespace {

constexpr std::size_t kTextLength = 4096;
constexpr std::size_t kMiB = 1 << 20;
constexpr std::size_t kPlaces = 8;
constexpr std::size_t kPlaceDistance = 512 + 16;
/// The contents of the file of the instant module.
constexpr ULONG kFileSize = sizeof(unsigned long);

/// Does a piece of work several times and has its instructions counted. It was done twice before: what
/// happens only once does not count.
void countOnce(const std::string& name, int times, const std::function<bool()>& work) {
    if (!work() || !work()) {
        throw std::runtime_error(name + " failed");
    }
    // The free blocks that earlier work has left decide how long the next allocation searches.
    malloc_trim(0);
    CALLGRIND_ZERO_STATS;
    for (int i = 0; i < times; ++i) {
        work();
    }
    CALLGRIND_DUMP_STATS_AT(name.c_str());
}

/// Counts with the stack at several places, which check-cost adds up. Copying and comparing take other
/// ways for other alignments, and where a page ends.
void count(const std::string& name, int times, const std::function<bool()>& work) {
    for (std::size_t place = 0; place < kPlaces; ++place) {
        auto* const onStack = static_cast<volatile char*>(alloca((place + 1) * kPlaceDistance));
        onStack[0] = 0;
        countOnce(name, times, work);
    }
}

void compare(const std::string& name, int times, const std::function<bool()>& byLibrary,
             const std::function<bool()>& byHand) {
    count(name + " library", times, byLibrary);
    count(name + " floor", times, byHand);
}

const unsigned char* bytesOf(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

const uint16_t* unitsOf(const OLECHAR* text) {
    return reinterpret_cast<const uint16_t*>(text);
}

void require(bool isDone, const char* step) {
    if (!isDone) {
        throw std::runtime_error(step);
    }
}

class Token {
public:
    explicit Token(const char* module) {
        require(zrkey::createProvider(provider) == S_OK && provider->Load(Text(module)) == S_OK &&
                    provider->OpenKey(0, token.receive()) == S_OK &&
                    token->VerifyPIN(Text("1234"), 0) == S_OK,
                "cannot open the token");
        ComRef<IKeyContainer> container;
        require(token->OpenContainer(Variant::fromNumber(0), container.receive()) == S_OK &&
                    container->GetKeyCert(true, certificate.receive()) == S_OK,
                "cannot open the certificate");
    }

    ComRef<ITokenProvider> provider;
    ComRef<IKeyObject> token;
    ComRef<IKeyCertificate> certificate;
};

void compareCertificates(const Token& on) {
    compare(
        "EnumContainer", 1,
        [&on] {
            Variant names;
            return on.token->EnumContainer(0, names.receive()) == S_OK;
        },
        [] { return floorListCertificates() != 0; });
    compare(
        "OpenContainer", 50,
        [&on] {
            ComRef<IKeyContainer> container;
            ComRef<IKeyCertificate> certificate;
            return on.token->OpenContainer(Variant::fromNumber(0), container.receive()) == S_OK &&
                   container->GetKeyCert(true, certificate.receive()) == S_OK;
        },
        [] { return floorOpenCertificate() != 0; });
    compare(
        "GetCertData", 50,
        [&on] {
            Variant data;
            return on.certificate->GetCertData(data.receive()) == S_OK;
        },
        [] { return floorReadCertificate() != 0; });
}

void compareSignatures(const Token& on) {
    const std::string content(32, 'd');
    const ByteArray data(content);
    const ByteArray signature(std::string(256, 's'));
    compare(
        "SignData", 50,
        [&] {
            Variant result;
            return on.token->SignData(nullptr, data, on.certificate.get(), result.receive()) ==
                   S_OK;
        },
        [&] { return floorSign(bytesOf(content), content.size()) != 0; });
    compare(
        "VerifyData", 50,
        [&] {
            return on.token->VerifyData(data, on.certificate.get(), nullptr, signature) == S_OK;
        },
        [&] { return floorVerify(bytesOf(content), content.size()) != 0; });
}

void compareDigest(const Token& on, const std::string& name, std::size_t size, int times) {
    const std::string content(size, 'd');
    const ByteArray data(content);
    const Text md5("MD5");
    compare(
        name, times,
        [&] {
            Variant result;
            return on.token->DigestData(md5, data, result.receive()) == S_OK;
        },
        [&] { return floorDigest(bytesOf(content), content.size()) != 0; });
}

void compareTokens(const Token& on) {
    compare(
        "OpenKey", 50,
        [&on] {
            ComRef<IKeyObject> token;
            return on.provider->OpenKey(0, token.receive()) == S_OK && token;
        },
        [] { return floorOpenToken() != 0; });
    const Text seven("7");
    compare(
        "OpenFile", 50,
        [&] {
            ComRef<IKeyFile> file;
            Variant data;
            return on.token->OpenFile(seven, file.receive()) == S_OK &&
                   file->Read(kFileSize, data.receive()) == S_OK && file->Close() == S_OK;
        },
        [] { return floorReadFile() != 0; });
}

void compareCallsByName(const Token& on) {
    const Text name("GetSignAlgo");
    LPOLESTR names = name.get();
    compare(
        "GetIDsOfNames", 50,
        [&] {
            DISPID id = 0;
            return on.token->GetIDsOfNames(IID_NULL, &names, 1, 0, &id) == S_OK && id == 30;
        },
        [&] { return floorFindMember(unitsOf(name)) == 30; });
    const DISPID id = idOf(on.token.get(), "GetDigestMethod");
    DISPPARAMS none = {};
    compare(
        "Invoke", 50,
        [&] {
            Variant result;
            return on.token->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &none, result.receive(),
                                    nullptr, nullptr) == S_OK;
        },
        [id] { return floorCallMember(static_cast<int>(id)) != 0; });
}

void compareTexts() {
    const std::string ascii(kTextLength, 'a');
    std::u16string wide(kTextLength + 1, u'\0');
    compare(
        "UTF-8 to UTF-16", 5,
        [&] {
            return ZConvUTF8ToUnicode(ascii.c_str(), reinterpret_cast<OLECHAR*>(wide.data()),
                                      kTextLength + 1) > 0;
        },
        [&] {
            return floorUtf8ToUtf16(ascii.c_str(), reinterpret_cast<uint16_t*>(wide.data()),
                                    kTextLength + 1) != 0;
        });
    const std::u16string han(kTextLength, u'\u6f22');
    const zrkey::Text text(reinterpret_cast<const OLECHAR*>(han.c_str()));
    std::string narrow(3 * kTextLength + 4, '\0');
    compare(
        "UTF-16 to UTF-8", 5,
        [&] {
            return ZBstrToUtf8(text.get(), narrow.data(),
                               static_cast<unsigned int>(narrow.size())) > 0;
        },
        [&] { return floorUtf16ToUtf8(unitsOf(text.get()), narrow.data(), narrow.size()) != 0; });
}

void compareLog() {
    ZRLog log;
    log.SetFilePath("library.log");
    compare(
        "log line", 20,
        [&log] {
            LogScope::withoutBegin(&log, "Load").message("a message\n", 1);
            return true;
        },
        [] { return floorLog("floor.log", "Load", 1, "a message\n") != 0; });
}

void compareAll(const char* module) {
    const Token token(module);
    require(floorOpen(module) != 0, "cannot open the module");
    compareSignatures(token);
    compareDigest(token, "DigestData 64 B", 64, 50);
    compareDigest(token, "DigestData 1 MiB", kMiB, 1);
    compareCertificates(token);
    compareTokens(token);
    compareCallsByName(token);
    compareTexts();
    compareLog();
}

}  // namespace
}  // namespace zr::test

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2 || RUNNING_ON_VALGRIND == 0) {
        std::fprintf(stderr, "usage: valgrind --tool=callgrind cost MODULE; see check-cost\n");
        return 2;
    }
    // The stack begins below the arguments: from here on it does not depend on their length.
    constexpr std::uintptr_t kPage = 4096;
    const auto frame = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    auto* const rest = static_cast<volatile char*>(alloca(frame % kPage + 1));
    rest[0] = 0;
    try {
        zr::test::compareAll(arguments[1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "cost: %s\n", error.what());
        return 1;
    }
    return 0;
}
