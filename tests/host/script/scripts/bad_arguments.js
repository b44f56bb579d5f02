// Calls every member with bad input and compares the answers with the expected ones. Prints what
// differs, then the number of calls.
//
//     zrkey run bad_arguments.js EXPECTED_ANSWERS MODULE PIN SO_PIN [VALUES]
//
// With VALUES each value in each place too, and not only each number of good ones.
// MODULE is relative to the current directory. A token has one certificate at least.
var Expected = require("./expected_answers").Expected;
var expected = new Expected(readFile(arguments[0], "utf8"), 0);
var modulePath = arguments[1], pin = arguments[2], soPin = arguments[3];
var hasValues = arguments[4] === "values";
var E_INVALIDARG = 2147942487, E_UNEXPECTED = 2147549183;
// What these change must not disturb the next calls.
var CHANGES = /^(Load|Unload|Close|VerifyPIN|ModifyPIN|unblockPIN)$/;

var calls = 0, differences = 0, made = {};

var makers = {
    TokenProvider: function () {
        var provider = new TokenProvider();
        provider.Load(modulePath);
        return provider;
    },
    Token: function () {
        var token = get("TokenProvider").OpenKey(0);
        token.VerifyPIN(pin, 0);
        return token;
    },
    File: function () {
        get("Token").writeFile("9", new Uint8Array([1, 2, 3]));
        return get("Token").OpenFile("9");
    },
    Container: function () { return get("Token").OpenContainer(0); },
    Certificate: function () { return get("Token").certificates()[0]; }
};

function get(className) {
    return made[className] || (made[className] = makers[className]());
}

function closed(className) {
    var object = makers[className]();
    object.Close();
    return object;
}

// The next calls make new objects.
function closeAll() {
    for (var className in made) {
        made[className].Close();
    }
    made = {};
}

var longText = new Array(65537).join("x"), hugeBytes = new Uint8Array(1048577);
var values = {
    nothing: undefined, "null": null, "true": true, zero: 0, minusOne: -1, largest: 2147483647,
    smallest: -2147483648, tooLarge: 2147483648, tooSmall: -2147483649, huge: 1e300,
    infinity: Infinity, fraction: 1.5, nan: NaN, digits: "1234", emptyText: "",
    nulText: "1\u00002", halfPair: "\ud800", letters: "no such thing", longText: longText,
    bytes: new Uint8Array([1, 2, 3]), emptyBytes: new Uint8Array(0), hugeBytes: hugeBytes,
    texts: ["1234"], numbers: [1, 2, 3], foreign: {}, "function": function () { },
    module: modulePath, pin: pin, soPin: soPin
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
    if (name.indexOf("text:") === 0) {
        return name.substring(5);
    }
    if (!(name in values)) {
        throw new Error("no value " + name);
    }
    return values[name];
}

function answerOfError(error, member) {
    if (!error.member) {
        return String(error);
    }
    var text = error.member === member.name && error.message.indexOf(member.name) === 0 ? ""
                                                                                      : "misnamed ";
    if (error.hresult === E_UNEXPECTED) {
        return text + "closed";
    }
    if (!(error instanceof TypeError)) {
        return text + error.result;
    }
    text += error.hresult === E_INVALIDARG ? "" : "odd result ";
    return text + (error.argument ? "argument " + error.argument : "count");
}

function answerOf(object, member, names) {
    var given = names.map(valueNamed);
    ++calls;
    try {
        var result = object[member.name].apply(object, given);
        return result === true ? "true" : "ok";
    } catch (error) {
        return answerOfError(error, member);
    }
}

function report(member, names, wanted, got) {
    ++differences;
    print(member.className + "." + member.name + "(" + names.join(", ") + "): wanted " + wanted +
          ", got " + got);
}

function isWanted(member, wanted, got, isGood) {
    if (wanted.kind === "count") {
        return got === "count";
    }
    if (wanted.kind !== "ok") {
        return got === "argument " + wanted.argument;
    }
    if (member.good.indexOf("E_") === 0 || (isGood && member.good !== "-")) {
        return got === member.good;
    }
    return got === "ok" || got === "true" || /^(E_|RPC_E_|0x8)/.test(got);
}

function check(member, names, isGood) {
    var wanted = expected.answerTo(member, names);
    var got = answerOf(get(member.className), member, names);
    if (!isWanted(member, wanted, got, isGood)) {
        report(member, names, wanted.kind + (wanted.argument || "") + " " + member.good, got);
    }
    if (wanted.kind === "ok" && CHANGES.test(member.name)) {
        restore(member.name);
    }
}

function restore(name) {
    closeAll();
    if (name === "unblockPIN" || name === "ModifyPIN") {
        try {
            get("TokenProvider").OpenKey(0).unblockPIN(soPin, pin);
        } catch (error) {
            // A module that cannot do it has not changed the PIN either; the next login shows it.
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
    check(member, all.concat(new Array(101).join("zero ").split(" ").slice(0, 100)), false);
}

function checkValues(member, isWhole) {
    if (isWhole && member.unused.length === 0) {
        return;
    }
    var good = expected.goodNames(member, isWhole);
    good.forEach(function (_, position) {
        for (var name in expected.answers) {
            var names = good.slice();
            names[position] = name;
            check(member, names, false);
        }
    });
}

function checkThis(member) {
    var call = get(member.className)[member.name];
    var others = [undefined, null, 1, "a", {}, [], call];
    for (var className in makers) {
        if (className !== member.className) {
            others.push(get(className));
        }
    }
    others.push(Object.create(get(member.className)));
    others.forEach(function (other, index) {
        ++calls;
        try {
            call.apply(other, []);
            report(member, ["this " + index], "TypeError", "success");
        } catch (error) {
            if (!(error instanceof TypeError) || error.message.indexOf("was not called on a") < 0) {
                report(member, ["this " + index], "TypeError", error);
            }
        }
    });
}

function checkClosed(member) {
    var names = expected.goodNames(member, false);
    var wanted = member.name === "Close" ? "true" : member.isForClosed ? "ok" : "closed";
    closeAll();
    var got = answerOf(closed(member.className), member, names);
    closeAll();
    if (got !== wanted) {
        report(member, names, wanted, got + " of a closed object");
    }
}

expected.members.forEach(function (member) {
    // A collection is an array in scripts.
    if (member.className !== "Collection") {
        checkCounts(member);
        if (hasValues) {
            checkValues(member, false);
            checkValues(member, true);
        }
        checkThis(member);
        checkClosed(member);
    }
});
// What was called, in hundreds.
print(differences + " differences in " + Math.floor(calls / 100) + "00 calls");
exit(differences === 0 ? 0 : 1);
