// Bytes: JScript cannot index arrays of bytes, but passes them on, and its own arrays are taken too.
var provider = new ActiveXObject("ZRKey.TokenProvider");
var bytes = provider.fromHex("00 ff 10");
expectEqual("toHex", "00ff10", provider.toHex(bytes));
expectEqual("toBase64", "AP8Q", provider.toBase64(bytes));
expectEqual("fromBase64", "00ff10", provider.toHex(provider.fromBase64("AP8Q")));
expectEqual("no bytes", "", provider.toHex(provider.fromHex("")));
expectEqual("text beyond ASCII", "c3bce282ac", provider.toHex(provider.fromText("\u00fc\u20ac")));
expectEqual("toText", "\u00fc\u20ac", provider.toText(provider.fromHex("c3bce282ac")));
expectEqual("a pair of surrogates", "f09f9491", provider.toHex(provider.fromText("\ud83d\udd11")));
expectEqual("an array", "01ff00", provider.toHex([1, 255, 0]));
expectEqual("an empty array", "", provider.toHex([]));
var long = [];
for (var i = 0; i < 1000; ++i) {
    long.push(i % 256);
}
expectEqual("a long array", "e6e7", provider.toHex(long).substr(1996));

var MISMATCH = "80020005"; // DISP_E_TYPEMISMATCH
expectError("a number that is no byte", MISMATCH, null, function () { provider.toHex([1, 256]); });
expectError("a fraction", MISMATCH, null, function () { provider.toHex([1, 0.5]); });
expectError("a text in an array", MISMATCH, null, function () { provider.toHex([1, "2"]); });
expectError("a gap in an array", MISMATCH, null, function () { provider.toHex([1, , 2]); });
expectError("an object", MISMATCH, null, function () { provider.toHex({}); });
expectError("a text", MISMATCH, null, function () { provider.toHex("0102"); });
expectError("a length that lies", MISMATCH, null, function () { provider.toHex({length: 3}); });
expectError("a function", MISMATCH, null, function () { provider.toHex(function () {}); });
expectError("an empty String", MISMATCH, null, function () { provider.toHex(new String("")); });
expectError("a huge length", "8002000a", null, function () { provider.toHex({length: 1e9}); });
expectError("not hex", "80070057", "fromHex: argument 1 is not hex", function () {
    provider.fromHex("0x");
});
finish();
