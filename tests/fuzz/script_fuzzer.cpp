// Any script in the script host, with limits of time and memory: as text, or made of statements
// that use the objects in any order. The memory of the whole process stays near the limit.
#include <fcntl.h>
#include <unistd.h>

#include <iterator>
#include <string>
#include <utility>

#include "host/output/console.h"
#include "host/script/engine.h"
#include "tests/fuzz/fuzz_module.h"
#include "tests/fuzz/input.h"
#include "tests/fuzz/objects.h"
#include "tests/fuzz/script_memory.h"

namespace {

// Besides the counted memory, a call may hold its arguments again in other encodings, and the text
// of an error is made outside the engine.
constexpr std::size_t kCopies = 4;
constexpr std::size_t kElsewhere = 1 << 20;

/// A console whose streams are discarded; the fuzzer's own reports are still printed.
zr::host::Console& quietConsole() {
    const int report = dup(STDERR_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDERR_FILENO);
    static zr::host::Console console(zr::host::Diagnostics::kDropped);
    dup2(report, STDERR_FILENO);
    close(report);
    close(nowhere);
    return console;
}

/// Statements that share the names p, k, f and v: a provider, a token, a function and any value.
constexpr const char* kStatements[] = {
    "p = new TokenProvider()",
    "v = p.Load(arguments[0])",
    "k = p.OpenKey(0)",
    "k = p.OpenKey(v)",
    "v = p.GetKeyCount()",
    "p.Unload()",
    "v = k.GetLabel()",
    "v = k.VerifyPIN('1234', 0)",
    "v = k.VerifyPIN(v, 1)",
    "v = k.FileExists('1')",
    "v = k.FileExists(v)",
    "v = k.GetTotalSize()",
    "f = k.GetLabel",
    "f = p.OpenKey",
    "v = f.call(p, 0)",
    "v = f.call(k, v, k, p)",
    "v = f.apply(v, [1, 'x'])",
    "v = f.call(v)",
    "f = f.bind(k)",
    "v = f(v)",
    "k = null",
    "p = null",
    "Duktape.gc()",
    "k.x = p; p.x = k",
    "delete k.x",
    "v = k.x",
    "k.GetLabel = function () { return v; }",
    "v = k[v]",
    "v = v in k",
    "for (var n in k) v = n",
    "v = Object.keys(p)",
    "v = Object.getOwnPropertyNames(k)",
    "Object.setPrototypeOf(k, p)",
    "v = Object.create(k)",
    "v = Object.getPrototypeOf(p)",
    "Object.freeze(k)",
    "Object.defineProperty(k, 'x', {get: function () { k = null; Duktape.gc(); return p; }})",
    "v = new Proxy(k, {})",
    "v = new Proxy({}, {get: function () { return k; }})",
    "Duktape.fin(k)(k)",
    "v = Duktape.fin(p)",
    "Duktape.fin(k, function (x) { v = x; })",
    "v = {toString: function () { k = null; Duktape.gc(); return '1'; }}",
    "v = {valueOf: function () { throw p; }}",
    "v = [k, p, v]",
    "v = v[0]",
    "throw v",
    "throw k",
    "v = TokenProvider()",
    "v = new TokenProvider(k)",
    "TokenProvider.call(k)",
    "v = p instanceof TokenProvider",
    "TokenProvider.prototype = k",
    "v = String(v)",
    "v = v + v",
    "v = v.x = v",
    "v = JSON.stringify(k)",
    "v = JSON.stringify([v, k])",
    "v = Duktape.enc('jx', k)",
    "v = Duktape.info(k)",
    "print(v)",
    "print(k, p, f)",
    "v = '\\ud800'",
    "v = 'a\\0b'",
    "v = 'GetLabel'",
    "v = 1e300",
    "v = NaN",
    "v = -1",
    "v = null",
    "v = undefined",
    "v = Symbol('x')",
    "v = true",
    "v = new Uint8Array([1, 2, 3])",
    "v = new Uint8Array(v.buffer, 1, 1)",
    "v = new ArrayBuffer(9)",
    "v = new Uint8Array(1000000)",
    "f = function () { return f(); }; f()",
    "v = new Duktape.Thread(function (x) { Duktape.Thread['yield'](k.GetLabel()); throw k; })",
    "v = Duktape.Thread.resume(v, k)",
    "v = v.hresult",
    "v = v.stack",
    "v = v.message",
    "k = p.tokens()[0]",
    "v = k.certificates()[0]",
    "v = k.OpenContainer(0)",
    "v = v.GetKeyCert()",
    "v = v.pem()",
    "v = k.sign(p.fromText('a'), v)",
    "v = k.SignData(p.fromText('a'), v)",
    "v = k.OpenFile('1')",
    "v = k.CreateFile('1')",
    "v = v.readAll()",
    "v = k.writeFile('1', v)",
    "v = p.toHex(v)",
    "v = p.fromBase64(v)",
    "v = p.fromText(v)",
    "v.Close()",
    "k.Close()",
    "p.Close()",
    "v = readFile('config.xml')",
    "v = readFile('config.xml', 'utf8')",
    "v = readFile(v)",
    "v = environment",
    "v = require('./config.xml')",
    "sleep(0.001)",
    "exit(v)",
};

/// Takes the functions away that would change files or wait for a user. On the line of the input, so
/// that its lines keep their numbers.
const std::string kSafe =
    "['writeFile', 'readLine', 'readPin'].forEach(function (name) {"
    " delete this[name]; }, this); ";

/// The statements in any order, one for each byte; an error in one does not stop the others.
std::string compose(zr::fuzz::Input& input) {
    std::string script = "var p, k, f, v;\n";
    while (!input.isAtEnd()) {
        const std::uint8_t choice = input.byte();
        const std::string statement = kStatements[choice % std::size(kStatements)];
        script +=
            choice >= 250 ? statement + ";\n" : "try { " + statement + "; } catch (e) { v = e; }\n";
    }
    return script;
}

/// A limit of memory that the command takes, from 1 MiB to 16 MiB.
std::size_t memoryLimit(std::uint8_t choice) {
    return (1 + choice % std::size_t{16}) << 20;
}

/// Whether the script's objects are those that are called by GetIDsOfNames and Invoke.
bool isLateBound(std::uint8_t choice) {
    return (choice & 16) != 0;
}

void runScript(const std::string& text, std::size_t memory, bool lateBound) {
    static zr::host::Console& console = quietConsole();
    const std::string path = zr::fuzz::modulePath();
    zr::fuzz::answerFrom(nullptr);
    zr::host::ScriptLimits limits;
    limits.time = std::chrono::milliseconds(200);
    limits.bytes = memory;
    const zr::fuzz::AllocatedBytes allocated;
    {
        zr::host::ScriptEngine engine(console, limits);
        const std::string source = kSafe + text;
        zr::host::Script script = {"fuzz.js", source, {path}};
        script.isLateBound = lateBound;
        engine.run(std::move(script));
    }
    zr::fuzz::expect(allocated.most() <= memory * kCopies + kElsewhere,
                     "a script's memory is limited");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isPrepared = (zr::fuzz::writeConfig("<driver><algo>a</algo></driver>"), true);
    zr::fuzz::expect(isPrepared);
    zr::fuzz::Input input(data, size);
    // An input that begins with a zero is a list of statements, with a one a list of requests for
    // memory; any other is a script. The last byte chooses the limit and the
    // objects.
    const std::uint8_t kind = size > 0 ? input.byte() : std::uint8_t{2};
    const std::uint8_t choice = size > 0 ? data[size - 1] : std::uint8_t{0};
    const std::size_t memory = memoryLimit(choice);
    if (kind == 1) {
        zr::fuzz::useMemory(input, memory);
    } else if (kind == 0) {
        runScript(compose(input), memory, isLateBound(choice));
    } else {
        runScript(std::string(reinterpret_cast<const char*>(data), size), memory,
                  isLateBound(choice));
    }
    return 0;
}
