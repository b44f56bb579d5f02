// Every kind of error: what the error of JScript says.
var provider = new ActiveXObject("ZRKey.TokenProvider");
expectError("Load of a missing module", "80004005", null, function () {
    provider.Load("missing.dll");
});
provider.Load(variable("ZRKEY_MODULE"));
expectError("a slot that cannot be opened", "80004005", "OpenKey failed: E_FAIL (0x80004005)",
            function () { provider.OpenKey(1); });
var token = provider.OpenKey(0);
expectError("a wrong PIN", "80004005", "VerifyPIN failed: E_FAIL (0x80004005)", function () {
    token.VerifyPIN("97531");
});
expectError("a NUL", "80070057", "VerifyPIN: argument 1 contains a NUL", function () {
    token.VerifyPIN("12\u000034");
});
expectError("E_NOTIMPL", "80004001", "SetLabel failed: E_NOTIMPL (0x80004001)", function () {
    token.SetLabel("x");
});

// The engine of Wine shows results of Automation as they are; another may have numbers of its own.
var COUNT = "8002000e", MISMATCH = "80020005", OVERFLOW = "8002000a";
expectError("too few arguments", COUNT, null, function () { token.VerifyPIN(); });
expectError("too many arguments", COUNT, null, function () { token.VerifyPIN("1", 0, 0); });
expectError("a number as a PIN", MISMATCH, null, function () { token.VerifyPIN(1234); });
expectError("null", MISMATCH, null, function () { token.VerifyPIN(null); });
expectError("undefined before an argument", MISMATCH, null, function () {
    token.VerifyPIN(undefined, 0);
});
expectError("undefined alone", MISMATCH, null, function () { token.VerifyPIN(undefined); });
expectError("a fraction", MISMATCH, null, function () { provider.OpenKey(0.5); });
expectError("NaN", MISMATCH, null, function () { provider.OpenKey(NaN); });
expectError("a number of more than 32 bits", OVERFLOW, null, function () {
    provider.OpenKey(3000000000);
});
expectError("an object of JScript", MISMATCH, null, function () { token.GetCertData({}); });
expectError("a function", MISMATCH, null, function () { token.VerifyPIN(function () {}); });
expectError("an object of another class", MISMATCH, null, function () {
    token.GetCertData(provider);
});
expectError("an unknown member", "800a01b6", null, function () { token.GetLable(); });
expectError("an index that is not there", "80070057", null, function () {
    provider.tokens().Item(5);
});
token.Close();
expectError("a closed token", "8000ffff", null, function () { token.GetLabel(); });
expectEqual("the provider goes on", "ZRKey Test", provider.OpenKey(0).Label);
finish();
