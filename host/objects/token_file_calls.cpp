// The class Token of the object model: files.
#include <cstdlib>

#include "host/objects/file_object.h"
#include "host/objects/token_object.h"
#include "host/token/token_files.h"

namespace zr::host {
namespace {

/// Ends the search that a successful FileExists leaves open, and with which the next calls would
/// fail or go on: counting the containers ends it.
void endSearch(IKeyObject& token) {
    zrkey::Variant count;
    token.GetContainerCount(count.receive());
}

/// The number of a file, as FileExists takes it.
unsigned numberIn(const Arguments& arguments) {
    constexpr unsigned kLast = 65536;
    const std::string name = toUtf8(arguments.text(0));
    constexpr std::size_t kMostDigits = 5;
    const bool isNumber = !name.empty() && name.size() <= kMostDigits &&
                          name.find_first_not_of("0123456789") == std::string::npos;
    const unsigned long number = isNumber ? std::stoul(name) : 0;
    if (number < 1 || number > kLast) {
        throw arguments.wrong(0, "is not a number from 1 to 65536");
    }
    return static_cast<unsigned>(number);
}

/// The number that the library reads in a name which it accepts.
unsigned libraryNumber(const std::string& name) {
    return static_cast<unsigned>(std::strtoul(name.c_str(), nullptr, 10));
}

}  // namespace

Value createFile(TokenObject& token, const Arguments& arguments) {
    const CallText name(arguments.text(0));
    const auto library = token.use(arguments);
    zrkey::ComRef<IKeyFile> file;
    const HRESULT result = library->CreateFile(name.get(), 0, 0, 0, 0, file.receive());
    // It calls FileExists itself.
    endSearch(*library.get());
    arguments.require(result);
    return std::make_shared<FileObject>(std::move(file));
}

Value fileExists(TokenObject& token, const Arguments& arguments) {
    const CallText name(arguments.text(0));
    const auto library = token.use(arguments);
    zrkey::Variant exists;
    arguments.require(library->FileExists(name.get(), exists.receive()));
    endSearch(*library.get());
    return static_cast<double>(exists.toNumber().value_or(0));
}

Value openFile(TokenObject& token, const Arguments& arguments) {
    const CallText name(arguments.text(0));
    zrkey::ComRef<IKeyFile> file;
    arguments.require(token.use(arguments)->OpenFile(name.get(), file.receive()));
    return std::make_shared<FileObject>(std::move(file));
}

Value deleteFile(TokenObject& token, const Arguments& arguments) {
    const CallText name(arguments.text(0));
    {
        // Only to see whether it is there. The library's own DeleteFile keeps a reference to the token
        // for ever, and with it the session, the login and the PIN.
        zrkey::ComRef<IKeyFile> file;
        arguments.require(token.use(arguments)->OpenFile(name.get(), file.receive()));
    }
    try {
        const auto session = token.openSession(arguments, CryptokiSession::Access::kReadWrite);
        deleteTokenFile(*session, libraryNumber(name.utf8()));
    } catch (const Failure& failure) {
        // The library's result, whatever the cause.
        throw arguments.refused(E_FAIL, failure.cause);
    }
    return true;
}

Value enumFiles(TokenObject& token, const Arguments& arguments) {
    zrkey::Variant files;
    arguments.require(token.use(arguments)->EnumFiles(files.receive()));
    return Nothing();
}

Value writeFile(TokenObject& token, const Arguments& arguments) {
    const unsigned number = numberIn(arguments);
    if (arguments.bytes(1).size() > kLargestFile) {
        throw arguments.wrong(1, "has more than 1048576 bytes");
    }
    const auto session = token.openSession(arguments, CryptokiSession::Access::kReadWrite);
    writeTokenFile(*session, number, std::string(arguments.bytes(1)));
    return true;
}

}  // namespace zr::host
