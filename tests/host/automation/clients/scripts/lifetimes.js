// Objects that JScript's garbage collection releases in any order.
var certificate = (function () {
    var token = loggedInToken();
    return token.certificates().Item(0);
}());
CollectGarbage();
expectEqual("a certificate without its token", "container1", certificate.GetCertID());
expectEqual("its subject", "CN=ZRKey Test", certificate.subject());
certificate = null;
CollectGarbage();

var provider = loadedProvider();
for (var i = 0; i < 50; ++i) {
    var tokens = provider.tokens();
    var token = tokens.Item(0);
    var enumerator = new Enumerator(tokens);
    if (i % 2) {
        token.Close();
    }
    tokens = null;
    if (i % 10 === 0) {
        CollectGarbage();
    }
    expectEqual("an enumerator without its list", false, enumerator.atEnd());
}
token = provider.OpenKey(0);
provider.Close();
provider = null;
CollectGarbage();
expectEqual("a token without its provider", "ZRKey Test", token.Label);
finish();
