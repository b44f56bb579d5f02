// Keeps a note on a token: writes it into a file of the token, reads it back and deletes it.
//
//     cscript //nologo keep_note.js NAME TEXT [MODULE]
//
// NAME is the number that names the file. MODULE is the PKCS #11 module of the token's maker; without
// it, the variable ZRKEY_MODULE names it. The PIN is that of the variable PIN.

function variable(name) {
    return new ActiveXObject("WScript.Shell").Environment("Process")(name);
}

function keepNote(name, text, module) {
    var pin = variable("PIN");
    if (!pin) {
        throw new Error("no PIN: set the variable PIN");
    }
    var provider = new ActiveXObject("ZRKey.TokenProvider");
    provider.Load(module);
    var token = provider.tokens().Item(0);
    token.VerifyPIN(pin);

    token.writeFile(name, provider.fromText(text));
    var file = token.OpenFile(name);
    WScript.Echo(file.GetSize() + " bytes: " + provider.toText(file.readAll()));
    file.Close();
    token.DeleteFile(name);
}

if (WScript.Arguments.length < 2 || WScript.Arguments.length > 3) {
    WScript.Echo("usage: cscript //nologo keep_note.js NAME TEXT [MODULE]");
    WScript.Quit(2);
}
try {
    var module = WScript.Arguments.length > 2 ? WScript.Arguments(2) : variable("ZRKEY_MODULE");
    keepNote(WScript.Arguments(0), WScript.Arguments(1), module);
} catch (error) {
    WScript.Echo("keep_note.js: " + error.message);
    WScript.Quit(1);
}
WScript.Quit(0);
