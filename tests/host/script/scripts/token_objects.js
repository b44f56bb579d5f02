// The object model on a real token: every kind of member, and what is odd about it. Prints lines that
// are the same on each token of scripts/softtoken.
//
//     zrkey run token_objects.js MODULE PIN SO_PIN
var provider = new TokenProvider();
provider.Load(arguments[0]);
var pin = arguments[1], soPin = arguments[2];
var ABC = provider.fromText("abc");

function show(name, work) {
    try {
        print(name + ": " + work());
    } catch (error) {
        print(name + ": " + error.message);
    }
}
function same(left, right) { return provider.toHex(left) === provider.toHex(right); }

show("name", function () { return provider.GetName(); });
show("no such slot", function () { return provider.OpenKey(99); });
show("negative slot", function () { return provider.OpenKey(-1); });
var tokens = provider.tokens();
var token = tokens[0];
print("tokens: " + tokens.length + " " + token.GetLabel() + " " + token.GetDigestMethod());

show("sign before the login", function () {
    return token.SignData(ABC, token.certificates()[0]);
});
show("login", function () { return token.VerifyPIN(pin); });

var names = token.EnumContainer();
print("containers: " + names + " " + token.GetContainerCount());
var container = token.OpenContainer(names[0]);
var certificate = container.GetKeyCert();
print("type: '" + container.GetType() + "', id: " + certificate.GetCertID() + ", " +
      certificate.subject());
print("same data: " + same(certificate.GetCertData(), token.GetCertData(certificate)) + " " +
      same(certificate.GetCertData(), token.certificates()[0].GetCertData()) + " " +
      same(certificate.GetCertData(), token.OpenContainer(0).GetKeyCert().GetCertData()));
print("pem: " + same(certificate.GetCertData(),
                     provider.fromBase64(certificate.pem().replace(/-----.*-----/g, ""))));
show("no such container", function () { return token.OpenContainer("nobody"); });
show("container behind the last", function () { return token.OpenContainer(names.length); });
show("public key", function () { return token.GetPubKeyData(certificate); });

print("MD5: " + provider.toHex(token.DigestData("MD5", ABC)));
show("other digest", function () { return token.DigestData("SHA-1", ABC); });
var signature = token.SignData(ABC, certificate);
print("SignData: " + signature.length + " bytes, " +
      token.VerifyData(ABC, certificate, signature) + " " +
      token.verify(ABC, certificate, signature, "rsa-sha1"));
show("other data", function () {
    return token.VerifyData(provider.fromText("abd"), certificate, signature);
});
["rsa-sha1", "rsa-sha256", "rsa-sha384", "rsa-sha512", "rsa-pss-sha256"].forEach(function (name) {
    var made = token.sign(ABC, certificate, name);
    print(name + ": " + token.verify(ABC, certificate, made, name) + " " +
          token.verify(provider.fromText("abd"), certificate, made, name) + " " +
          token.verify(new Uint8Array(0), certificate, made, name));
});
print("by default: " + token.verify(ABC, certificate, token.sign(ABC, certificate), "rsa-sha256"));
print("upper case: " + token.verify(ABC, certificate, token.sign(ABC, certificate, "RSA-SHA1"),
                                    "Rsa-Sha1"));
show("array for bytes", function () { return provider.toHex([1, 2]); });
print("no data: " + token.verify(new Uint8Array(0), certificate,
                                 token.sign(new Uint8Array(0), certificate)));
show("key of another kind", function () { return token.sign(ABC, certificate, "ecdsa-sha256"); });

// A file is created under one number and found under the next.
var file = token.CreateFile("60");
print("new file: " + file.GetSize() + " " + file.Close());
show("created number", function () { return token.FileExists("60"); });
print("found number: " + token.FileExists("61") + " " + token.certificates().length);
token.writeFile("61", provider.fromText("0123456789"));
file = token.OpenFile("61");
print("parts: " + provider.toText(file.Read(4)) + " " + provider.toText(file.Read(6)));
show("past the end", function () { return file.Read(1); });
file.Seek(2);
file.Seek(3, 1);
print("seek: " + provider.toText(file.Read(1)));
file.Seek(10);
file.Seek(11);
file.Seek(-1);
file.Seek(1, 2);
file.Seek(1, 7);
print("ignored: " + provider.toText(file.Read(1)));
file.Seek(-2, 2);
print("from the end: " + provider.toText(file.Read(2)));
file.Seek(0, 2);
print("zero from the end: " + provider.toText(file.Read(1)));
show("write", function () { return file.Write(ABC); });
// This token changes no values of files.
show("flush", function () { return file.Flush(); });
print("whole: " + provider.toText(file.readAll()) + " " + file.Read(0).length);
file.Close();
show("closed file", function () { return file.GetSize(); });
token.writeFile("61", new Uint8Array(100000));
print("large: " + token.OpenFile("61").readAll().length);
token.writeFile("61", new Uint8Array(0));
print("empty: " + token.OpenFile("61").readAll().length);
print("delete: " + token.DeleteFile("61"));
show("deleted", function () { return token.OpenFile("61"); });

show("short PIN", function () { return token.ModifyPIN(pin, "123"); });
print("new PIN: " + token.ModifyPIN(pin, "56789") + " " + token.VerifyPIN("56789"));
show("old PIN", function () { return token.VerifyPIN(pin); });
print("unblock: " + token.unblockPIN(soPin, pin) + " " + token.VerifyPIN(pin, 0));
show("unblock after a login", function () { return token.unblockPIN(soPin, pin); });
show("wrong type", function () { return token.VerifyPIN(pin, 2); });

// What came from an object goes on when it is closed.
token.Close();
tokens = null;
provider.Close();
show("closed token", function () { return token.GetLabel(); });
print("certificate: " + certificate.GetCertID() + " " + (certificate.pem().length > 100));
