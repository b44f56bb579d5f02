// Signs a file with the first certificate of a token, checks the signature, and writes signature and
// certificate beside the file. This is for the script host of Windows; the script of the same name
// one folder up is for "zrkey run".
//
//     cscript //nologo sign_letter.js FILE [MODULE [SERIAL]]
//
// MODULE is the PKCS #11 module of the token's maker; without it, the variable ZRKEY_MODULE names it.
// SERIAL is the serial number of the token; without it there must be one token. The PIN is that of the
// variable PIN; without it, the script asks for it, and shows it on the screen. It is tried once.
//
// openssl dgst -sha256 -verify KEY -signature FILE.sig FILE checks the signature too.

var USER = 0; // the kind of PIN; 1 is the security officer's
var ALGORITHM = "rsa-sha256";
var E_FAIL = 0x80004005 | 0; // numbers of errors are negative

// The argument at an index; another value when it was not given.
function argument(index, otherwise) {
    return index < WScript.Arguments.length ? WScript.Arguments(index) : otherwise;
}

// A variable of the environment; empty when it is not set.
function variable(name) {
    return new ActiveXObject("WScript.Shell").Environment("Process")(name);
}

function binaryStream() {
    var stream = new ActiveXObject("ADODB.Stream");
    stream.Type = 1; // binary
    stream.Open();
    return stream;
}

function readBytes(path) {
    var stream = binaryStream();
    stream.LoadFromFile(path);
    var bytes = stream.Read();
    stream.Close();
    return bytes;
}

function writeBytes(path, bytes) {
    var stream = binaryStream();
    stream.Write(bytes);
    stream.SaveToFile(path, 2); // replaces an existing file
    stream.Close();
}

function writeText(path, text) {
    var file = new ActiveXObject("Scripting.FileSystemObject").CreateTextFile(path, true);
    file.Write(text);
    file.Close();
}

function chooseToken(provider, serial) {
    var found = [];
    for (var all = new Enumerator(provider.tokens()); !all.atEnd(); all.moveNext()) {
        var token = all.item();
        if (!serial || token.GetSerialNumber() === serial) {
            found.push(token);
        }
    }
    need(found.length === 1, found.length + " tokens match; name one by its serial number");
    return found[0];
}

function need(value, message) {
    if (!value) {
        throw new Error(message);
    }
}

function login(token) {
    var pin = variable("PIN");
    if (!pin) {
        WScript.Echo("PIN of " + token.GetLabel() + ":");
        pin = WScript.StdIn.ReadLine();
    }
    need(pin, "no PIN"); // the token would count it as a wrong PIN
    try {
        token.VerifyPIN(pin, USER);
    } catch (error) {
        if (error.number !== E_FAIL) {
            throw error;
        }
        throw new Error("the token refused the PIN");
    }
}

function signLetter(file, module, serial) {
    need(module, "no module: name one, or set ZRKEY_MODULE");
    var letter = readBytes(file); // first: a mistake in the name must not cost a login
    var provider = new ActiveXObject("ZRKey.TokenProvider");
    provider.Load(module);
    var token = chooseToken(provider, serial);
    login(token);

    var certificates = token.certificates();
    need(certificates.Count, "the token has no certificate");
    var certificate = certificates.Item(0);
    var signature = token.sign(letter, certificate, ALGORITHM);
    need(token.verify(letter, certificate, signature, ALGORITHM), "the signature is not valid");
    writeBytes(file + ".sig", signature);
    writeText(file + ".pem", certificate.pem());
    WScript.Echo("signed " + file + " as " + certificate.subject());
}

if (WScript.Arguments.length < 1 || WScript.Arguments.length > 3) {
    WScript.Echo("usage: cscript //nologo sign_letter.js FILE [MODULE [SERIAL]]");
    WScript.Quit(2);
}
try {
    signLetter(argument(0), argument(1, variable("ZRKEY_MODULE")), argument(2, ""));
} catch (error) {
    WScript.Echo("sign_letter.js: " + error.message);
    WScript.Quit(1);
}
WScript.Quit(0);
