// Reads tests/host/objects/expected_answers.txt. In ECMAScript 3, so that other engines can run it too.
var KINDS = ["integer", "text", "bytes", "certificate", "textOrIndex", "anyText"];
var GOOD = {integer: "zero", text: "digits", bytes: "bytes", certificate: "certificate",
            textOrIndex: "zero"};

function readParameter(word) {
    var isOptional = word.charAt(word.length - 1) === "?";
    var parts = (isOptional ? word.substring(0, word.length - 1) : word).split("=");
    return {kind: parts[0], good: parts[1] || GOOD[parts[0]], isOptional: isOptional};
}

function Expected(text, column) {
    this.members = [];
    this.byName = {};
    this.answers = {};
    var lines = text.split("\n");
    for (var i = 0; i < lines.length; ++i) {
        var words = lines[i].replace(/\r$/, "").replace(/^#.*/, "").split(/ +/);
        if (words[0]) {
            this["read_" + words[0]](words, column);
        }
    }
}

Expected.prototype = {
    read_member: function (words) {
        var member = {className: words[1], name: words[2], good: words[3], parameters: [],
                      unused: [], refused: {}, fewest: 0};
        for (var i = 4; i < words.length; ++i) {
            var parameter = readParameter(words[i]);
            member.parameters.push(parameter);
            member.fewest += parameter.isOptional ? 0 : 1;
        }
        this.members.push(member);
        this.byName[words[1] + "." + words[2]] = member;
    },
    read_unused: function (words) {
        for (var i = 3; i < words.length; ++i) {
            this.byName[words[1] + "." + words[2]].unused.push(Number(words[i]));
        }
    },
    read_closed: function (words) {
        for (var i = 2; i < words.length; ++i) {
            this.byName[words[1] + "." + words[i]].isForClosed = true;
        }
    },
    read_list: function (words) {
        this.byName[words[1] + "." + words[2]].isList = true;
    },
    read_answer: function (words, column) {
        var answer = {};
        for (var i = 0; i < KINDS.length; ++i) {
            var both = words[2 + i].split("/");
            answer[KINDS[i]] = both.length > 1 ? both[column] : both[0];
        }
        this.answers[words[1]] = answer;
    },
    read_value: function (words) {
        for (var i = 4; i < words.length; ++i) {
            this.byName[words[1] + "." + words[2]].refused[words[3] + " " + words[i]] = true;
        }
    },

    // The names of good values for a call with the used parameters, or with all of them.
    goodNames: function (member, isWhole) {
        var names = [], next = 0;
        var count = member.parameters.length + (isWhole ? member.unused.length : 0);
        for (var i = 1; i <= count; ++i) {
            names.push(isWhole && this.isUnused(member, i) ? "null"
                                                           : member.parameters[next++].good);
        }
        return names;
    },
    isUnused: function (member, position) {
        for (var i = 0; i < member.unused.length; ++i) {
            if (member.unused[i] === position) {
                return true;
            }
        }
        return false;
    },
    // What a call answers: {kind: "count"}, {kind: "type" | "range" | "value", argument: 1},
    // {kind: "ok"}.
    // names: of the values that are given.
    answerTo: function (member, names) {
        var given = names.length;
        while (given > 0 && names[given - 1] === "nothing") {
            --given;
        }
        var used = member.parameters.length, all = used + member.unused.length;
        if ((given < member.fewest || given > used) && given !== all) {
            return {kind: "count"};
        }
        return this.answerOfValues(member, names, given, given > used);
    },
    answerOfValues: function (member, names, given, isWhole) {
        var refused = 0, next = 0;
        for (var i = 1; i <= given; ++i) {
            if (isWhole && this.isUnused(member, i)) {
                continue;
            }
            var kind = member.parameters[next++].kind;
            var known = this.answers[names[i - 1]];
            var answer = known ? known[kind] : "ok";
            if (answer !== "ok") {
                return {kind: answer, argument: i};
            }
            if (!refused && member.refused[next + " " + names[i - 1]]) {
                refused = i;
            }
        }
        return refused ? {kind: "value", argument: refused} : {kind: "ok"};
    }
};

if (typeof exports === "object") {
    exports.Expected = Expected;
}
