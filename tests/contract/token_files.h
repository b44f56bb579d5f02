// A logged-in token whose data files are opened and read.
#pragma once

#include "tests/contract/token.h"

namespace zr::test {

class TokenFilesFixture : public LoggedInTokenTest {
protected:
    IKeyFile* open(const std::string& name) {
        IKeyFile* file = nullptr;
        EXPECT_HR(S_OK, token->OpenFile(Text(name), reinterpret_cast<void**>(&file)));
        return file;
    }

    std::string read(IKeyFile* file, ULONG length) {
        VARIANT data;
        VariantInit(&data);
        EXPECT_HR(S_OK, file->Read(length, &data));
        return takeBytes(&data);
    }

    LONG sizeOf(IKeyFile* file) {
        VARIANT size = {};
        EXPECT_HR(S_OK, file->GetSize(&size));
        return size.lVal;
    }

    /// All that a file holds.
    std::string contents(const std::string& name) {
        IKeyFile* file = open(name);
        const std::string bytes = read(file, static_cast<ULONG>(sizeOf(file)));
        file->Release();
        return bytes;
    }
};

}  // namespace zr::test
