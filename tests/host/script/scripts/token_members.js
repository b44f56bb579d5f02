// Every member of a token that late-bound scripts know, on the token with a label of module
// arguments[0].
var provider = new TokenProvider();
provider.Load(arguments[0]);

function open() {
    for (var index = 0; index < provider.GetKeyCount(); ++index) {
        var candidate = provider.OpenKey(index);
        if (candidate.GetLabel() !== "") {
            return candidate;
        }
    }
    throw new Error("no token with a label");
}

var token = open();

function show(name) {
    var args = Array.prototype.slice.call(arguments, 1);
    try {
        print(name + ": " + JSON.stringify(token[name].apply(token, args)));
    } catch (error) {
        print(error.message);
    }
}

show("GetLabel");
show("GetDigestMethod");
show("GetSignAlgo");
show("GetTotalSize");
show("GetFreeSize");
["GetMaxRetryCount", "GetRemainRetryCount", "IsDefaultPIN"].forEach(function (name) {
    show(name, 0);
    show(name);
});
show("Lock");
show("Unlock");
show("UnlockPIN", "12345678", "1234");
show("UnlockPIN", "12345678");
show("UnlockPIN");
show("FileExists", "7");
show("FileExists", "0");
show("FileExists", 7);
show("VerifyPIN", "1234", 2);
show("VerifyPIN", 1234, 0);
show("VerifyPIN", "1234");
show("VerifyPIN", "12345", 0);
show("VerifyPIN", "1234", 0);
show("VerifyPIN", "1234", 0.9);
["SetLabel", "ModifyPIN", "CreateFile", "OpenFile", "EnumFiles", "DeleteFile", "DigestData",
 "CreateContainer", "GetContainerCount", "OpenContainer", "DeleteContainer", "EnumContainer",
 "SignData", "VerifyData"].forEach(function (name) {
    show(name, "1234", "12345", 0);
});

// A token that is let go logs out and closes its session: opening many of them must not run out,
// and one login is left when the others are gone.
for (var i = 0; i < 2000; ++i) {
    token = open();
}
show("GetLabel");

// The token keeps its provider and the module.
provider = null;
Duktape.gc();
show("VerifyPIN", "1234", 0);
