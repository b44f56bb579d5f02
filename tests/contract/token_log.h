// A token whose provider writes a log, and what each call adds to it.
#pragma once

#include <functional>

#include "tests/contract/token.h"
#include "tests/support/log_file.h"

namespace zr::test {

inline Lines operator+(Lines first, const Lines& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// The lines of an operation, with others between its first and its last.
inline Lines whole(const std::string& name, const Lines& between = {}) {
    return Lines{"[" + name + "] Begin"} + between + Lines{"[" + name + "] End"};
}

/// The lines of an operation that leaves early.
inline Lines broken(const std::string& name, const Lines& between = {}) {
    return Lines{"[" + name + "] Begin"} + between;
}

/// What AddRef and Release of a class write.
inline Lines addRef(const std::string& className, int count) {
    return {"[AddRef] [" + className + "::AddRef] call..." + std::to_string(count)};
}
inline Lines release(const std::string& className, int count, const Lines& between = {}) {
    const std::string name = "[Release] [" + className + "::Release] ";
    return Lines{name + "call..."} + between + Lines{name + "count=" + std::to_string(count)};
}

class TokenLogTest : public ModuleTest {
protected:
    TokenLogTest() {
        folder.enableLog();
        provider = makeProvider();
        EXPECT_HR(S_OK, provider->Load(Text(module.path())));
        EXPECT_HR(S_OK, provider->OpenKey(0, reinterpret_cast<void**>(&token)));
        VariantInit(&result);
    }
    ~TokenLogTest() override {
        token->Release();
        provider->Release();
    }

    /// The lines that some calls write.
    Lines told(const std::function<void()>& calls) {
        const std::size_t before = readLogLines(folder.home()).size();
        calls();
        Lines lines = readLogLines(folder.home());
        lines.erase(lines.begin(), lines.begin() + static_cast<Lines::difference_type>(before));
        return lines;
    }

    void logIn() { EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0)); }

    ITokenProvider* provider = nullptr;
    IKeyObject* token = nullptr;
    VARIANT result;
};

}  // namespace zr::test
