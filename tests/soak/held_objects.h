// One object of each class over the instant module, and the operations on them.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/support/fixtures/library.h"

namespace zr::test {

/// What a host holds that works with the token. Every step must succeed: a failure throws an exception
/// that names the step.
class HeldObjects {
public:
    /// @param module  its path relative to the current directory, which contains a configuration.
    explicit HeldObjects(const std::string& module);

    ComRef<ITokenProvider> provider;
    ComRef<IKeyObject> token;
    ComRef<IKeyContainer> container;
    ComRef<IKeyCertificate> certificate;
    ComRef<IKeyFile> file;  ///< "6"
    /// A module that is loaded and unloaded: an Unload ends every token of its module.
    std::string otherModule;
    ByteArray data{"data to sign"};
    ByteArray signature{std::string(256, '\1')};
};

struct Operation {
    std::string name;
    HRESULT expected;
    std::function<HRESULT(HeldObjects& objects)> call;
    /// The most that each call keeps in memory by contract: 0, or what docs/habits.md says of it.
    std::size_t keptBytes = 0;
};

std::vector<Operation> providerOperations();
std::vector<Operation> tokenOperations();
std::vector<Operation> objectOperations();
/// All of these, and each member that can be called by name.
std::vector<Operation> allOperations();

/// Throws when an operation did not return what is expected of it.
void require(HRESULT expected, HRESULT hr, const std::string& step);

/// A copy of the instant module in the current directory, which is a module of its own. A provider keeps
/// it loaded: a module with a C++ library of its own, as on Windows, leaves memory of that library behind
/// whenever it is freed. soak frees its module in each round.
class ModuleCopy {
public:
    explicit ModuleCopy(const std::string& name);
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
    ComRef<ITokenProvider> m_keeper;
};

}  // namespace zr::test
