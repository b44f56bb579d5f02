// A tour of one token: what it is, a call that fails, and a login.
//
//     zrkey run tour.js MODULE
//     zrkey run tour.js MODULE login
//     zrkey run --pin env:PIN tour.js MODULE login
//
// Without "login" there is no login. The PIN is asked for on the terminal, unless --pin says where it
// is. It is tried once: a token locks itself after a few wrong PINs.
//
// MODULE is the token maker's PKCS #11 library. Its path is always relative to the current
// directory, which must also contain "config.xml":
//
//     <driver><algo>...</algo><digest>...</digest></driver>

var modulePath = arguments[0];
var wantsLogin = arguments[1] === "login";
var USER = 0; // the kind of PIN; 1 is the security officer's

if (!modulePath || (arguments.length > 1 && !wantsLogin)) {
    printError("usage: zrkey run tour.js MODULE [login]");
    exit(2);
}

// Everything starts with a provider and a module.
var provider = new TokenProvider();
provider.Load(modulePath);

var count = provider.GetKeyCount();
print("slots with a token: " + count);

// A slot may hold a token that nobody has set up yet; its label is blank.
var token = null;
for (var index = 0; index < count && token === null; ++index) {
    var candidate = provider.OpenKey(index);
    if (candidate && candidate.GetLabel() !== "") {
        token = candidate;
        print("opened token " + index);
    }
}
candidate = null;
if (token === null) {
    throw new Error("no token with a label; set one up first");
}

// A token that does not report a size returns all bits set.
function size(bytes) {
    return bytes === 0xFFFFFFFF ? "not reported" : bytes + " bytes";
}

print("serial number: " + token.GetSerialNumber());
print("label:         " + token.GetLabel());
print("manufacturer:  " + token.GetManufacturerID());
print("model:         " + token.GetModelID());
print("total size:    " + size(token.GetTotalSize()));
print("free size:     " + size(token.GetFreeSize()));

// A call that fails throws an error with the result code. There is no PIN of the kind 2, so the
// token is not asked, and no retry is used.
try {
    token.VerifyPIN("none", 2);
    throw new Error("a PIN of an unknown kind was accepted");
} catch (error) {
    if (error.hresult === undefined) {
        throw error;
    }
    print("failing call:  " + error.message);
}

if (wantsLogin) {
    var pin = readPin("user PIN of " + token.GetLabel() + ": ");
    print("login:         " + (token.VerifyPIN(pin, USER) ? "logged in" : "not logged in"));
} else {
    print("login:         none was asked for");
}

// Objects close with their last reference: the token logs out, then the provider frees the module.
token = null;
provider = null;
