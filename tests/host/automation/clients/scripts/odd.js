// What scripts rarely do, and some do.
var provider = loadedProvider();
var token = provider.OpenKey(0);
expectEqual("typeof an object", "object", typeof token);
expectEqual("an object is itself", true, token === token);
expectEqual("objects of one token", false, token === provider.OpenKey(0));

// Numbers in all forms that JScript has.
var zeros = [0, -0, 0.0, "0", new Number(0)];
for (var i = 0; i < 4; ++i) {
    expectEqual("zero " + i, "ZRKey Test", provider.OpenKey(zeros[i]).Label);
}
expectEqual("a calculated number", "ZRKey Test", provider.OpenKey(3 - 3).Label);

// Texts that were put together.
var pin = ["12", "34"].join("");
expectEqual("a text of two parts", true, token.VerifyPIN(pin + ""));
expectEqual("a name by brackets", "ZRKey Test", token["Label"]);
expectEqual("a call by brackets", "ZRKey Test", token["GetLabel"]());
var name = "Serial" + "Number";
expectEqual("a name that was put together", 16, token[name].length);

// More arguments than parameters, by a call in a loop.
for (var count = 4; count < 20; ++count) {
    var text = [];
    for (var k = 0; k < count; ++k) {
        text.push("0");
    }
    expectError(count + " arguments", "8002000e", null, function () {
        eval("token.VerifyPIN(" + text.join() + ")");
    });
}

// Arrays as bytes: nested, with holes, changed while they are kept.
expectError("an array in an array", "80020005", null, function () { provider.toHex([[1]]); });
expectError("booleans in an array", "80020005", null, function () { provider.toHex([true]); });
var array = [1];
array[2] = 3;
expectError("an array with a hole", "80020005", null, function () { provider.toHex(array); });
array[1] = 2;
expectEqual("the hole filled", "010203", provider.toHex(array));
array.length = 1;
expectEqual("the array cut", "01", provider.toHex(array));

// Errors go through functions and are thrown again.
function deep(level) {
    if (level === 0) {
        provider.OpenKey(99);
    }
    deep(level - 1);
}
expectError("an error from a deep call", "80004005", "OpenKey failed: E_FAIL (0x80004005)",
            function () { deep(20); });
expectError("an error that is thrown again", "80004005", "OpenKey failed: E_FAIL (0x80004005)",
            function () {
    try {
        provider.OpenKey(99);
    } catch (error) {
        throw error;
    }
});
try {
    provider.OpenKey(99);
} catch (error) {
    expectEqual("an Error", true, error instanceof Error);
} finally {
    expectEqual("finally", "ZRKey Test", token.Label);
}

// Objects in objects and in closures.
var kept = {list: provider.tokens(), get: function () { return this.list.Item(0); }};
expectEqual("an object in an object", "ZRKey Test", kept.get().Label);
kept = null;
CollectGarbage();
expectError("a provider before Load", "80004005", null, function () {
    new ActiveXObject("ZRKey.TokenProvider").GetKeyCount();
});
finish();
