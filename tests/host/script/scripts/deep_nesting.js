// Recursion through the engine's own functions, each well below its limit, is an error as well.
function kindOf(action) {
    try {
        action();
        return "no error";
    } catch (error) {
        return error.name;
    }
}

function bury(leaf) {
    for (var depth = 0; depth < 900; ++depth) {
        leaf = { inner: leaf };
    }
    return leaf;
}

function write(levels) {
    return JSON.stringify(bury({
        toJSON: function () {
            return levels > 0 ? write(levels - 1) : "bottom";
        }
    }));
}

var buried = new Array(901).join("[") + new Array(901).join("]");

function read(levels) {
    return JSON.parse(buried, function (key, value) {
        if (value.length === 0 && levels > 0) {
            read(levels - 1);
        }
        return value;
    });
}

print("one: " + kindOf(function () { write(0); read(0); }));
print("written: " + kindOf(function () { write(300); }));
print("read: " + kindOf(function () { read(300); }));
print("library: " + kindOf(function again() {
    var error = kindOf(again);
    new TokenProvider().Unload();
    if (error !== "no error") {
        throw { name: error };
    }
}));
