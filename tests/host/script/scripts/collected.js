// Objects that nothing holds any more go, whether in a cycle or not.
var made = 0;
for (var i = 0; i < 1000; ++i) {
    var alone = new TokenProvider();
    var inCycle = { provider: new TokenProvider() };
    inCycle.self = inCycle;
    made += 2;
    if (i % 100 === 0) {
        Duktape.gc();
    }
}
print(made + " providers");
