// A day's work: every object of the model, in the forms that JScript has for calls and properties.
var provider = new ActiveXObject("ZRKey.TokenProvider");
expectEqual("Load", true, provider.Load(variable("ZRKEY_MODULE")));
expectEqual("GetName", "PKCS#11", provider.GetName());
expectEqual("Name", "PKCS#11", provider.Name);
expectEqual("KeyCount", 2, provider.KeyCount);
expectEqual("GetKeyCount", 2, provider.GetKeyCount());

var tokens = provider.tokens();
expectEqual("Count", 1, tokens.Count);
expectEqual("Item", "ZRKey Test", tokens.Item(0).GetLabel());
expectEqual("an index of a list that a member returns", "ZRKey Test", provider.tokens(0).Label);
var labels = [];
for (var all = new Enumerator(tokens); !all.atEnd(); all.moveNext()) {
    labels.push(all.item().Label);
}
expectEqual("Enumerator", "ZRKey Test", labels.join());
var twice = new Enumerator(tokens);
twice.moveNext();
expectEqual("an Enumerator at its end", true, twice.atEnd());
twice.moveFirst();
expectEqual("an Enumerator again", "ZRKey Test", twice.item().Label);

var token = provider.OpenKey(0);
expectEqual("VerifyPIN with its type", true, token.VerifyPIN("1234", 0));
expectEqual("VerifyPIN without its type", true, token.VerifyPIN("1234"));
expectEqual("VerifyPIN with undefined", true, token.VerifyPIN("1234", undefined));
var names = new VBArray(token.EnumContainer()).toArray();
expectEqual("EnumContainer", "container1", names.join());
expectEqual("GetContainerCount", 1, token.GetContainerCount());
var certificate = token.OpenContainer("container1").GetKeyCert();
expectEqual("an index", "container1", token.OpenContainer(0).GetKeyCert().GetCertID());
expectEqual("subject", "CN=ZRKey Test", certificate.subject());
expectEqual("pem", 0, certificate.pem().indexOf("-----BEGIN CERTIFICATE-----\n"));
expectEqual("certificates", "container1", token.certificates().Item(0).GetCertID());

var data = provider.fromText("a letter");
var signature = token.sign(data, certificate);
expectEqual("verify", true, token.verify(data, certificate, signature));
expectEqual("verify of other data", false,
            token.verify(provider.fromText("a lettre"), certificate, signature));
signature = token.sign(data, certificate, "rsa-pss-sha256");
expectEqual("verify with an algorithm", true,
            token.verify(data, certificate, signature, "rsa-pss-sha256"));
expectEqual("VerifyData", true,
            token.VerifyData(data, certificate, token.SignData(data, certificate)));
expectEqual("VerifyData with all parameters", true,
            token.VerifyData(data, certificate, "ignored", token.SignData("", data, certificate)));
expectEqual("DigestData", "900150983cd24fb0d6963f7d28e17f72",
            provider.toHex(token.DigestData("MD5", provider.fromText("abc"))));
expectEqual("GetSignAlgo", "SHA1WithRSA", token.GetSignAlgo());
expectEqual("Unload", true, provider.Unload());
finish();
