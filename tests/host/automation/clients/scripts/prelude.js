// Before every script in JScript of this folder.
var failures = 0;

function fail(message) {
    ++failures;
    WScript.Echo("FAILED " + message);
}

function expectEqual(what, expected, actual) {
    if (expected !== actual) {
        fail(what + ": " + typeof actual + " " + actual + ", not " + typeof expected + " " + expected);
    }
}

function hex(number) {
    return ((number >>> 16) + 0x10000).toString(16).substr(1) +
           ((number & 0xFFFF) + 0x10000).toString(16).substr(1);
}

// @param number       of the error in hex: "80004005"
// @param description  null when any will do
function expectError(what, number, description, call) {
    try {
        call();
    } catch (error) {
        expectEqual(what + ", number", number, hex(error.number));
        if (description !== null) {
            expectEqual(what + ", description", description, error.description);
            expectEqual(what + ", message", description, error.message);
        }
        return;
    }
    fail(what + ": no error");
}

function variable(name) {
    return new ActiveXObject("WScript.Shell").Environment("Process")(name);
}

function loadedProvider() {
    var provider = new ActiveXObject("ZRKey.TokenProvider");
    provider.Load(variable("ZRKEY_MODULE"));
    return provider;
}

function loggedInToken() {
    var token = loadedProvider().OpenKey(0);
    token.VerifyPIN("1234");
    return token;
}

// The last statement of every script.
function finish() {
    WScript.Echo("== end");
    WScript.Quit(failures);
}
