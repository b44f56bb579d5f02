// A tour of one token: what it is, a refused login, and a login.
//
//     zrkey run tour.js MODULE [PIN]
//
// MODULE is the token maker's PKCS #11 library. Its path is always relative to the current
// directory, which must also contain "config.xml":
//
//     <driver><algo>...</algo><digest>...</digest></driver>

var modulePath = arguments[0];
var pin = arguments[1] || "1234";
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

// A module that does not report a size returns all bits set.
function size(bytes) {
    return bytes === 0xFFFFFFFF ? "not reported" : bytes + " bytes";
}

print("serial number: " + token.GetSerialNumber());
print("label:         " + token.GetLabel());
print("manufacturer:  " + token.GetManufacturerID());
print("model:         " + token.GetModelID());
print("total size:    " + size(token.GetTotalSize()));
print("free size:     " + size(token.GetFreeSize()));

// A refused login is an error like any other; the result code does not say why.
try {
    token.VerifyPIN(pin + "0", USER);
    throw new Error("the token took a wrong PIN");
} catch (error) {
    if (error.hresult === undefined) {
        throw error;
    }
    print("wrong PIN:     " + error.message);
}

print("right PIN:     " + (token.VerifyPIN(pin, USER) ? "logged in" : "not logged in"));

// Objects close with their last reference: the token logs out, then the provider frees the module.
token = null;
provider = null;
