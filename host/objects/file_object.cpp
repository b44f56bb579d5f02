// The class File of the object model.
#include "host/objects/file_object.h"

namespace zr::host {
namespace {

ULONG sizeOf(FileObject& file, const Arguments& arguments) {
    zrkey::Variant size;
    arguments.require(file.use(arguments)->GetSize(size.receive()));
    return static_cast<ULONG>(size.toNumber().value_or(0));
}

Value readBytes(FileObject& file, const Arguments& arguments, ULONG length) {
    zrkey::ByteArray bytes;
    arguments.require(file.use(arguments)->Read(length, bytes.receive()));
    return bytesOf(bytes);
}

Value read(FileObject& file, const Arguments& arguments) {
    const LONG length = arguments.integer(0);
    if (length < 0) {
        throw arguments.wrong(0, "is negative");
    }
    return readBytes(file, arguments, static_cast<ULONG>(length));
}

Value readAll(FileObject& file, const Arguments& arguments) {
    arguments.require(file.use(arguments)->Seek(0, 0));
    return readBytes(file, arguments, sizeOf(file, arguments));
}

Value getSize(FileObject& file, const Arguments& arguments) {
    return static_cast<double>(sizeOf(file, arguments));
}

Value seek(FileObject& file, const Arguments& arguments) {
    arguments.require(file.use(arguments)->Seek(arguments.integer(0), arguments.integer(1)));
    return true;
}

Value write(FileObject& file, const Arguments& arguments) {
    arguments.require(file.use(arguments)->Write(arguments.byteArray(0)));
    return true;
}

Value flush(FileObject& file, const Arguments& arguments) {
    arguments.require(file.use(arguments)->Flush());
    return true;
}

Value closeFile(FileObject& file, const Arguments& arguments) {
    if (!file.isClosed()) {
        arguments.require(file.use(arguments)->Close());
        file.close();
    }
    return true;
}

}  // namespace

std::span<const Member> fileMembers() {
    using enum ParameterKind;
    static const Member members[] = {
        libraryCall<getSize>("GetSize", {}, Kind::kNumber,
                             "Returns the size of the content in bytes."),
        libraryCall<read>(
            "Read", {{"length", kInteger}}, Kind::kBytes,
            "Reads bytes at the position and advances it; fails with E_FAIL when fewer are left; "
            "length must not be negative."),
        composedCall<readAll>("readAll", {}, Kind::kBytes,
                              "Reads the whole content and moves the position to its end."),
        libraryCall<seek>(
            "Seek", {{"offset", kInteger}, {"origin", kInteger, true}}, Kind::kBoolean,
            "Moves the position; offset counts from the beginning (origin 0 or left out), from the "
            "position (1) or from the end (2), where 0 moves to the beginning; a position outside "
            "the "
            "content, or at its end, is ignored."),
        libraryCall<write>("Write", {{"data", kBytes}}, Kind::kBoolean,
                           "Always fails with E_INVALIDARG; use writeFile of the token."),
        libraryCall<flush>(
            "Flush", {}, Kind::kBoolean,
            "Writes the content back to the token; with a module that does not report the length "
            "of a value it erases the value, so use writeFile of the token."),
        libraryCall<closeFile>(
            "Close", {}, Kind::kBoolean,
            "Frees the content without writing it back; the file cannot be used afterwards.")
            .forClosed()};
    return members;
}

}  // namespace zr::host
