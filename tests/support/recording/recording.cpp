// The recording module, as tests use it.
#include "tests/support/recording/recording.h"

#include <filesystem>
#include <stdexcept>

#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

// On Windows the names have no drive: the files are on the drive of the start directory.
const std::filesystem::path s_start = std::filesystem::current_path();

std::string absolutePath(const char* file) {
    return (s_start.root_name() / file).string();
}

}  // namespace

Recording::Recording() : m_module(LoadLibraryA(file().c_str())) {
    using GetControl = RecordingModule* (*)();
    const auto getControl = reinterpret_cast<GetControl>(reinterpret_cast<void*>(
        m_module ? GetProcAddress(m_module, "GetRecordingModule") : nullptr));
    if (!getControl) {
        throw std::runtime_error("the recording module does not load");
    }
    m_control = getControl();
    m_control->reset();
}

Recording::~Recording() {
    FreeLibrary(m_module);
}

std::string Recording::path() const {
    return relativePath(ZR_RECORDING_MODULE);
}

std::string Recording::noListPath() const {
    return relativePath(ZR_NO_LIST_MODULE);
}

std::string Recording::file() {
    return absolutePath(ZR_RECORDING_MODULE);
}

std::string Recording::noListFile() {
    return absolutePath(ZR_NO_LIST_MODULE);
}

std::vector<std::string> Recording::takeCalls() {
    std::vector<std::string> calls;
    for (std::size_t i = 0; i < m_control->callCount(); ++i) {
        calls.emplace_back(m_control->call(i), m_control->callLength(i));
    }
    m_control->clearCalls();
    return calls;
}

std::size_t Recording::count(const std::string& function) const {
    std::size_t found = 0;
    for (std::size_t i = 0; i < m_control->callCount(); ++i) {
        const std::string call = m_control->call(i);
        found += call.compare(0, function.size() + 1, function + "(") == 0 ? 1 : 0;
    }
    return found;
}

CK_OBJECT_HANDLE Recording::addTokenObject(CK_OBJECT_CLASS objectClass) {
    const CK_OBJECT_HANDLE object = m_control->addObject();
    makeTokenObject(object, objectClass);
    return object;
}

void Recording::makeTokenObject(CK_OBJECT_HANDLE object, CK_OBJECT_CLASS objectClass) {
    const CK_BBOOL isOnToken = CK_TRUE;
    m_control->setAttribute(object, CKA_CLASS, &objectClass, sizeof objectClass);
    m_control->setAttribute(object, CKA_TOKEN, &isOnToken, sizeof isOnToken);
}

CK_OBJECT_HANDLE Recording::addCertificate(const std::string& id, const std::string& value) {
    const CK_OBJECT_HANDLE object = addTokenObject(CKO_CERTIFICATE);
    const CK_CERTIFICATE_TYPE type = CKC_X_509;
    m_control->setAttribute(object, CKA_CERTIFICATE_TYPE, &type, sizeof type);
    m_control->setAttribute(object, CKA_ID, id.data(), id.size());
    m_control->setAttribute(object, CKA_VALUE, value.data(), value.size());
    return object;
}

CK_OBJECT_HANDLE Recording::addKey(CK_OBJECT_CLASS objectClass, const std::string& id) {
    const CK_OBJECT_HANDLE object = addTokenObject(objectClass);
    const CK_KEY_TYPE type = CKK_RSA;
    m_control->setAttribute(object, CKA_KEY_TYPE, &type, sizeof type);
    m_control->setAttribute(object, CKA_ID, id.data(), id.size());
    return object;
}

CK_OBJECT_HANDLE Recording::addData(const std::string& label, const std::string& value) {
    const CK_OBJECT_HANDLE object = m_control->addObject();
    addDataAt(object, label, value);
    return object;
}

void Recording::addDataAt(CK_OBJECT_HANDLE object, const std::string& label,
                          const std::string& value) {
    makeTokenObject(object, CKO_DATA);
    m_control->setAttribute(object, CKA_LABEL, label.data(), label.size());
    m_control->setAttribute(object, CKA_VALUE, value.data(), value.size());
}

std::string Recording::read(CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type) const {
    std::size_t length = 0;
    const void* value = m_control->attribute(object, type, &length);
    return value ? std::string(static_cast<const char*>(value), length) : "(none)";
}

}  // namespace zr::test
