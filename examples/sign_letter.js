// Signs a file with the first certificate of a token, checks the signature, and writes signature
// and certificate beside the file.
//
//     zrkey run --module MODULE sign_letter.js FILE [SERIAL]
//     zrkey run --module MODULE --pin env:PIN sign_letter.js FILE [SERIAL]
//
// SERIAL is the serial number of the token; without it there must be one token. The PIN is asked for
// on the terminal, unless --pin says where it is. It is tried once.
//
// openssl dgst -sha256 -verify KEY -signature FILE.sig FILE checks the signature too.

var USER = 0; // the kind of PIN; 1 is the security officer's
var ALGORITHM = "rsa-sha256";

var file = arguments[0];
var serial = arguments[1];
if (!file || arguments.length > 2) {
    printError("usage: zrkey run sign_letter.js FILE [SERIAL]");
    exit(2);
}

function fail(message) {
    printError("sign_letter.js: " + message);
    exit(1);
}

function chooseToken() {
    var tokens = provider.tokens().filter(function (token) {
        return !serial || token.GetSerialNumber() === serial;
    });
    if (tokens.length !== 1) {
        fail(tokens.length + " tokens match; name one by its serial number");
    }
    return tokens[0];
}

function login(token) {
    try {
        token.VerifyPIN(readPin("PIN of " + token.GetLabel() + ": "), USER);
    } catch (error) {
        if (error.result !== "E_FAIL") {
            throw error;
        }
        fail("the token refused the PIN");
    }
}

// Reads the file first: a mistake in its name must not cost a login.
var letter = readFile(file);
var token = chooseToken();
login(token);

var certificate = token.certificates()[0];
if (!certificate) {
    fail("the token has no certificate");
}
var signature = token.sign(letter, certificate, ALGORITHM);
if (!token.verify(letter, certificate, signature, ALGORITHM)) {
    fail("the signature is not valid");
}
writeFile(file + ".sig", signature);
writeFile(file + ".pem", certificate.pem());
print("signed " + file + " as " + certificate.subject());
