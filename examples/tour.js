// A tour of one token: what it is, a call that fails, and a login.
//
//     zrkey run tour.js MODULE [PIN]
//
// Without PIN there is no login. PIN is tried once: a token locks itself after a few wrong PINs.
// Other users of the computer can see a PIN in a command line; that is fit for a test token only.
//
// MODULE is the token maker's PKCS #11 library. Its path is always relative to the current
// directory, which must also contain "config.xml":
//
//     <driver><algo>...</algo><digest>...</digest></driver>

var modulePath = arguments[0];
var pin = arguments[1];
var USER = 0; // the kind of PIN; 1 is the security officer's

if (!modulePath) {
    throw new Error("usage: zrkey run tour.js MODULE [PIN]");
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

if (pin === undefined) {
    print("login:         none, no PIN is given");
} else {
    print("login:         " + (token.VerifyPIN(pin, USER) ? "logged in" : "not logged in"));
}

// Objects close with their last reference: the token logs out, then the provider frees the module.
token = null;
provider = null;
