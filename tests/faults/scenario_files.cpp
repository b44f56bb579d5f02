// A session from Load to Unload: files.
#include "tests/faults/oracle.h"
#include "tests/faults/scenario.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

/// A file is searched among the data objects on the token.
std::string searchFor(CK_SESSION_HANDLE session) {
    return callOf("C_FindObjectsInit", session) + ", {0x0=0 0x1=1})";
}

/// The look-up of FileExists, which stays open on a match.
bool expectLookUp(Step* step, CK_SESSION_HANDLE session, const std::string& label) {
    if (!step->isOk(searchFor(session))) {
        return false;
    }
    if (findLabel(*step, session, label, 1) != 0) {
        step->leavesSearchOpen();
        return true;
    }
    step->call(callOf("C_FindObjectsFinal", session) + ")");
    return false;
}

/// The look-up and the reading of OpenFile.
/// @return false when the file cannot be opened.
bool expectOpening(Step* step, CK_SESSION_HANDLE session, const std::string& label,
                   CK_OBJECT_HANDLE* handle, std::string* contents) {
    if (!step->isOk(searchFor(session))) {
        return false;
    }
    *handle = findLabel(*step, session, label, 2);
    step->call(callOf("C_FindObjectsFinal", session) + ")");
    if (*handle == 0) {
        return false;
    }
    const RecordingAnswer length =
        step->call(callOn("C_GetAttributeValue", session, *handle) + ", {0x11})");
    if (length.result != CKR_OK) {
        // A value that cannot be read opens as an empty file.
        return true;
    }
    const Values value = readAnnounced(*step, session, *handle, length);
    *contents = value ? value->front() : "";
    return value.has_value();
}

}  // namespace

void Scenario::useFiles(Token& token) {
    createFile(token, "40");
    // On a match the search stays open: countContainers continues and closes it.
    findFile(token, "41", "40");
    countContainers(token);
    findFile(token, "99", "98");
    File file = openFile("OpenFile", token, "7", "6");
    if (file.object) {
        readFile(&file, 4);
        seekFile(&file, -3, 2, file.contents.size() - 3);
        readFile(&file, 3);
        seekFile(&file, 0, 2, 0);
        readFile(&file, 1000);
        checkSize(file);
        flushFile(token, file);
        closeFile(&file);
        releaseFile(&file);
    }
    file = openFile("OpenFile of none", token, "8", "7");
    if (file.object) {
        releaseFile(&file);
    }
    deleteFile("41", "40");
}

void Scenario::createFile(const Token& token, const std::string& name) {
    Step step(m_context, "CreateFile");
    void* const untouched = this;
    void* created = untouched;
    const HRESULT hr = token.object->CreateFile(Text(name), 0, 0, 0, 0, &created);
    // An existing name does not matter.
    expectLookUp(&step, token.session, std::to_string(std::stoi(name) - 1));
    const std::string attributes = "{0x0=0 0x1=1 0x3[" + std::to_string(name.size()) + "] 0x11[0]}";
    const RecordingAnswer answer =
        step.call(callOf("C_CreateObject", token.session) + ", " + attributes + ")");
    if (answer.result != CKR_OK) {
        step.expect(E_FAIL, hr);
        step.equal("the file", untouched, created);
        return;
    }
    step.expect(S_OK, hr);
    step.equal("the label", name, m_context.module.read(answer.handle, CKA_LABEL));
    if (created == untouched || !created) {
        step.problem("handed out no file");
        return;
    }
    VARIANT size = poisoned();
    ComRef<IKeyFile> file;
    file.reset(static_cast<IKeyFile*>(created));
    file->GetSize(&size);
    step.equal("the size", LONG{0}, size.lVal);
    step.equal("the file's count", 0UL, static_cast<unsigned long>(file.release()->Release()));
}

void Scenario::findFile(const Token& token, const std::string& name, const std::string& label) {
    Step step(m_context, "FileExists");
    VARIANT exists = poisoned();
    const HRESULT hr = token.object->FileExists(Text(name), &exists);
    const bool isFound = expectLookUp(&step, token.session, label);
    step.expect(isFound ? S_OK : E_FAIL, hr);
    step.equal("the type", static_cast<int>(VT_I4), static_cast<int>(exists.vt));
    step.equal("the value", LONG{isFound}, exists.lVal);
}

Scenario::File Scenario::openFile(const char* name, const Token& token, const std::string& fileName,
                                  const std::string& label) {
    Step step(m_context, name);
    void* const untouched = this;
    void* opened = untouched;
    const HRESULT hr = token.object->OpenFile(Text(fileName), &opened);
    File file;
    if (!expectOpening(&step, token.session, label, &file.handle, &file.contents)) {
        step.expect(E_FAIL, hr);
        step.equal("the file", untouched, opened);
        return {};
    }
    step.expect(S_OK, hr);
    if (opened == untouched || !opened) {
        step.problem("handed out no file");
        return {};
    }
    file.object.reset(static_cast<IKeyFile*>(opened));
    return file;
}

void Scenario::readFile(File* file, ULONG length) {
    Step step(m_context, "Read");
    VARIANT data = poisoned();
    const HRESULT hr = file->object->Read(length, &data);
    if (file->position + length > file->contents.size()) {
        step.expect(E_FAIL, hr);
        step.equal("the type", static_cast<int>(VT_UI1), static_cast<int>(data.vt));
        return;
    }
    step.expect(S_OK, hr);
    step.equal("the bytes", file->contents.substr(file->position, length), takeBytes(&data));
    file->position += length;
}

void Scenario::seekFile(File* file, LONG offset, INT origin, std::size_t position) {
    Step step(m_context, "Seek");
    step.expect(S_OK, file->object->Seek(offset, origin));
    // A position outside the file changes nothing; a seek to the end always goes to the beginning.
    if (position < file->contents.size() || (offset == 0 && origin == 2)) {
        file->position = position;
    }
}

void Scenario::checkSize(const File& file) {
    Step step(m_context, "GetSize");
    VARIANT size = poisoned();
    step.expect(S_OK, file.object->GetSize(&size));
    step.equal("the type", static_cast<int>(VT_I4), static_cast<int>(size.vt));
    step.equal("the size", static_cast<LONG>(file.contents.size()), size.lVal);
}

void Scenario::flushFile(const Token& token, const File& file) {
    Step step(m_context, "Flush");
    const std::string before = m_context.module.read(file.handle, CKA_VALUE);
    const HRESULT hr = file.object->Flush();
    // An empty value is passed as a null pointer.
    const std::string length =
        file.contents.empty() ? "" : "[" + std::to_string(file.contents.size()) + "]";
    const bool isWritten = step.isOk(callOn("C_SetAttributeValue", token.session, file.handle) +
                                     ", {0x11" + length + "})");
    step.expect(isWritten ? S_OK : E_FAIL, hr);
    step.equal("the value", isWritten ? file.contents : before,
               m_context.module.read(file.handle, CKA_VALUE));
}

void Scenario::closeFile(File* file) {
    {
        Step step(m_context, "Close");
        step.expect(S_OK, file->object->Close());
    }
    if (file->contents.empty()) {
        return;
    }
    // Close freed the contents: nothing is written, and the object keeps its value.
    Step step(m_context, "Flush after Close");
    step.expect(E_FAIL, file->object->Flush());
}

void Scenario::releaseFile(File* file) {
    Step step(m_context, "Release of a file");
    step.equal("the count", 0UL, static_cast<unsigned long>(file->object.release()->Release()));
}

/// Uses a separate token, because DeleteFile keeps the file that it opened, and with it the token.
void Scenario::deleteFile(const std::string& name, const std::string& label) {
    Token token = openToken(0);
    if (!token.object) {
        return;
    }
    CK_OBJECT_HANDLE handle = 0;
    bool isOpened = false;
    {
        Step step(m_context, "DeleteFile");
        const HRESULT hr = token.object->DeleteFile(Text(name));
        std::string contents;
        isOpened = expectOpening(&step, token.session, label, &handle, &contents);
        const bool isDeleted =
            isOpened && step.isOk(callOn("C_DestroyObject", token.session, handle) + ")");
        step.expect(isDeleted ? S_OK : E_FAIL, hr);
    }
    releaseToken(&token, isOpened);
}

}  // namespace zr::test
