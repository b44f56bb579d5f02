// Needs tests/host/script/scripts/expected_answers.js
// Every member with bad input, as JScript passes it; the expected answers are in the file that the
// variable ZRKEY_EXPECTED_ANSWERS names. Which argument a type mismatch names is not seen here.
var PIN = "1234", SO_PIN = "87654321";
// What these change must not disturb the next calls.
var CHANGES = /^(Load|Unload|Close|VerifyPIN|ModifyPIN|unblockPIN)$/;
var KIND_OF_NUMBER = {"8002000e": "count", "80020005": "type", "8002000a": "range"};
var AUTOMATION = 1; // the column of the file
var calls = 0, made = {};

var makers = {
    TokenProvider: loadedProvider,
    Token: function () {
        var token = get("TokenProvider").OpenKey(0);
        token.VerifyPIN(PIN);
        return token;
    },
    File: function () {
        get("Token").writeFile("9", [1, 2, 3]);
        return get("Token").OpenFile("9");
    },
    Container: function () { return get("Token").OpenContainer(0); },
    Certificate: function () { return get("Token").certificates().Item(0); },
    Collection: function () { return get("Token").certificates(); }
};

function get(className) {
    return made[className] || (made[className] = makers[className]());
}

function closed(className) {
    var object = makers[className]();
    object.Close();
    return object;
}

function closeAll() {
    for (var className in made) {
        made[className].Close();
    }
    made = {};
}

var converter = new ActiveXObject("ZRKey.TokenProvider");
var longText = new Array(65537).join("x");
var values = {
    nothing: undefined, "null": null, "true": true, zero: 0, minusOne: -1, largest: 2147483647,
    smallest: -2147483648, tooLarge: 2147483648, tooSmall: -2147483649, huge: 1e300,
    infinity: Infinity, fraction: 1.5, nan: NaN, digits: "1234", emptyText: "",
    nulText: "1\u00002", halfPair: "\ud800", letters: "no such thing", longText: longText,
    bytes: converter.fromHex("010203"), emptyBytes: converter.fromHex(""),
    hugeBytes: converter.fromText(new Array(17).join(longText) + "x"), texts: ["1234"],
    numbers: [1, 2, 3], foreign: {}, "function": function () { },
    module: variable("ZRKEY_MODULE"), pin: PIN, soPin: SO_PIN
};
var valueMakers = {
    token: function () { return get("Token"); },
    certificate: function () { return get("Certificate"); },
    closedCertificate: function () { return closed("Certificate"); },
    provider: function () { return get("TokenProvider"); }
};

function valueNamed(name) {
    if (valueMakers[name]) {
        return valueMakers[name]();
    }
    return name.indexOf("text:") === 0 ? name.substring(5) : values[name];
}

function answerOfError(error, member) {
    var number = hex(error.number);
    if (KIND_OF_NUMBER[number]) {
        return KIND_OF_NUMBER[number];
    }
    if (number === "8000ffff") {
        return "closed";
    }
    var wrong = new RegExp("^" + member.name + ": argument (\\d+) ").exec(error.message);
    if (wrong) {
        return number === "80070057" ? "value " + wrong[1] : "odd number " + number;
    }
    var refused = new RegExp("^" + member.name + " failed: ([A-Za-z_]*)").exec(error.message);
    return refused ? "failed " + refused[1] : number + " " + error.message;
}

function answerOf(object, member, names) {
    var given = [], words = [];
    for (var i = 0; i < names.length; ++i) {
        given.push(valueNamed(names[i]));
        words.push("given[" + i + "]");
    }
    ++calls;
    try {
        return eval("object." + member.name + "(" + words.join() + ")") === true ? "true" : "ok";
    } catch (error) {
        return answerOfError(error, member);
    }
}

function isWanted(member, wanted, got, isGood) {
    if (wanted.kind !== "ok") {
        return got === (wanted.kind === "value" ? "value " + wanted.argument : wanted.kind);
    }
    if (member.good.indexOf("E_") === 0) {
        return got === "failed " + member.good;
    }
    return isGood && member.good === "true" ? got === "true"
                                            : got === "ok" || got === "true" || /^failed /.test(got);
}

// A variable that was never set is a wrong value where an argument is needed.
function wantedAnswer(member, names) {
    if (member.isList && names.join() === "zero") {
        return {kind: "ok"};
    }
    var last = names.length - 1;
    if (last === 0 && (member.name === "tokens" || member.name === "certificates")) {
        return {kind: "ok"}; // an argument of the list's Item
    }
    if (last >= 0 && names[last] === "nothing") {
        if (last < member.fewest && last === member.parameters.length - 1) {
            return {kind: "type", argument: names.length};
        }
        var unused = member.unused.length;
        if (unused > 0 && names.length === member.parameters.length + unused) {
            return expected.answerOfValues(member, names, names.length, true);
        }
    }
    return expected.answerTo(member, names);
}

function check(member, names, isGood) {
    var wanted = wantedAnswer(member, names);
    var got = answerOf(get(member.className), member, names);
    if (!isWanted(member, wanted, got, isGood)) {
        fail(member.className + "." + member.name + "(" + names.join(", ") + "): " + got +
             ", not " + wanted.kind + " " + (wanted.argument || "") + " " + member.good);
    }
    if (wanted.kind === "ok" && CHANGES.test(member.name)) {
        restore(member.name);
    }
}

function restore(name) {
    closeAll();
    if (name === "unblockPIN") {
        try {
            get("TokenProvider").OpenKey(0).unblockPIN(SO_PIN, PIN);
        } catch (error) {
            fail("the PIN cannot be restored: " + error.message);
        }
        closeAll();
    }
}

function checkCounts(member) {
    var all = expected.goodNames(member, true);
    while (all.length < member.parameters.length + member.unused.length + 3) {
        all.push("zero");
    }
    for (var count = 0; count <= all.length; ++count) {
        var isUsedForm = count <= member.parameters.length;
        check(member, (isUsedForm ? expected.goodNames(member, false) : all).slice(0, count),
              count >= member.fewest);
    }
}

function checkValues(member, good) {
    for (var position = 0; position < good.length; ++position) {
        for (var name in expected.answers) {
            var names = good.slice();
            names[position] = name;
            check(member, names, false);
        }
    }
}

function checkClosed(member) {
    var names = expected.goodNames(member, false);
    closeAll();
    var object = get(member.className);
    if (member.className === "Token") {
        get("Certificate"); // an argument that lives on
    }
    object.Close();
    expectEqual(member.className + "." + member.name + " of a closed object",
                member.name === "Close" ? "true" : member.isForClosed ? "ok" : "closed",
                answerOf(object, member, names));
    made[member.className] = null;
    delete made[member.className];
    closeAll();
}

var files = new ActiveXObject("Scripting.FileSystemObject");
var text = files.OpenTextFile(variable("ZRKEY_EXPECTED_ANSWERS")).ReadAll();
var expected = new Expected(text, AUTOMATION);
for (var i = 0; i < expected.members.length; ++i) {
    var member = expected.members[i];
    checkCounts(member);
    checkValues(member, expected.goodNames(member, false));
    // Each success of CreateFile takes long on a real token.
    if (member.unused.length && member.name !== "CreateFile") {
        checkValues(member, expected.goodNames(member, true));
    }
    checkClosed(member);
}
expectEqual("thousands of calls", true, calls > 2000);
finish();
