// Whatever recurses without end is an error that a script can catch.
function kindOf(action) {
    try {
        action();
        return "no error";
    } catch (error) {
        return error.name;
    }
}

function again() {
    return again() + 1;
}

function againThroughMap() {
    return [1].map(againThroughMap);
}

print("function: " + kindOf(again));
print("native: " + kindOf(againThroughMap));
print("parser: " + kindOf(function () { eval(new Array(5000).join("[")); }));

var doomed = {};
Duktape.fin(doomed, function () { throw new Error("not heard"); });
doomed = null;
Duktape.gc();
print("finalizer: survived");
