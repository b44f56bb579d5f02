// Tokens with very many certificates and files.
#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "tests/soak/held_objects.h"
#include "tests/soak/scale.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

long setting(const char* name) {
    const char* value = std::getenv(name);
    const long count = value ? std::atol(value) : 0;
    if (count < 2) {
        throw std::runtime_error(std::string(name) + " is not set");
    }
    return count;
}

void requireEqual(const std::string& expected, const std::string& actual) {
    if (expected != actual) {
        throw std::runtime_error("\"" + actual + "\" instead of \"" + expected + "\"");
    }
}

/// The name of a container, by its place from 0: the instant module numbers its objects from 1.
std::string nameOf(long index) {
    char name[16];
    std::snprintf(name, sizeof name, "%08lx", static_cast<unsigned long>(index + 1));
    return name;
}

void checkNames(IKeyObject* token, long count) {
    Variant counted;
    require(S_OK, token->GetContainerCount(counted.receive()), "GetContainerCount");
    requireEqual(std::to_string(count), std::to_string(counted.toNumber().value_or(-1)));
    Variant listed;
    require(S_OK, token->EnumContainer(0, listed.receive()), "EnumContainer");
    const std::vector<std::string> names = listed.toTexts().value();
    requireEqual(std::to_string(count), std::to_string(names.size()));
    for (long i = 0; i < count; ++i) {
        requireEqual(nameOf(i), names[static_cast<std::size_t>(i)]);
    }
}

void checkContainer(IKeyObject* token, const VARIANT& which, long index) {
    ComRef<IKeyContainer> container;
    ComRef<IKeyCertificate> certificate;
    Text id;
    require(S_OK, token->OpenContainer(which, container.receive()), "OpenContainer");
    require(S_OK, container->GetKeyCert(true, certificate.receive()), "GetKeyCert");
    require(S_OK, certificate->GetCertID(id.receive()), "GetCertID");
    requireEqual(nameOf(index), id.utf8());
    Variant data;
    require(S_OK, certificate->GetCertData(data.receive()), "GetCertData");
}

/// A file is found under the number of its label plus one; its contents are its label.
void checkFile(IKeyObject* token, long label) {
    const Text name(std::to_string(label + 1));
    Variant exists;
    require(S_OK, token->FileExists(name, exists.receive()), "FileExists");
    ComRef<IKeyFile> file;
    require(S_OK, token->OpenFile(name, file.receive()), "OpenFile");
    Variant size;
    require(S_OK, file->GetSize(size.receive()), "GetSize");
    ByteArray contents;
    require(S_OK, file->Read(static_cast<ULONG>(size.toNumber().value_or(0)), contents.receive()),
            "Read");
    requireEqual(std::to_string(label), contents.bytes().value());
    require(S_OK, file->Close(), "Close");
}

void checkSamples(IKeyObject* token, long certificates, long files, long samples) {
    // The name of a file is at most 65536, so its label is at most one less.
    const long lastFile = std::min(files, 65535L);
    for (long i = 0; i < samples; ++i) {
        const long index = samples > 1 ? i * (certificates - 1) / (samples - 1) : 0;
        checkContainer(token, Variant::fromNumber(static_cast<LONG>(index)), index);
        checkContainer(token, Variant::fromText(zrkey::Text(nameOf(index))), index);
        checkFile(token, 1 + (samples > 1 ? i * (lastFile - 1) / (samples - 1) : 0));
    }
}

}  // namespace

bool checkObjects(std::FILE* report, long samples) {
    const long certificates = setting("ZRKEY_INSTANT_CERTIFICATES");
    const long files = setting("ZRKEY_INSTANT_FILES");
    ComRef<ITokenProvider> provider;
    ComRef<IKeyObject> token;
    require(S_OK, zrkey::createProvider(provider), "createProvider");
    require(S_OK, provider->Load(Text(relativePath(ZR_INSTANT_MODULE))), "Load");
    require(S_OK, provider->OpenKey(0, token.receive()), "OpenKey");
    checkNames(token.get(), certificates);
    checkSamples(token.get(), certificates, files, 2);
    const ProcessUse before = processUse();
    checkNames(token.get(), certificates);
    checkSamples(token.get(), certificates, files, samples);
    const ProcessUse after = processUse();
    const bool isFlat = heapGrowth(before, after) <= static_cast<long long>(kAllowedHeapBytes) &&
                        after.descriptors <= before.descriptors;
    std::fprintf(report,
                 "%ld certificates listed twice, %ld of them opened; %ld of %ld files read: %s "
                 "(heap %+lld bytes)\n",
                 certificates, samples, samples, files, isFlat ? "flat" : "GREW",
                 heapGrowth(before, after));
    return isFlat;
}

}  // namespace zr::test
