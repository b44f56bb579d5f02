// A provider that has loaded nothing: its members, and how they fail.
var provider = new TokenProvider();

function failure(name, call) {
    try {
        call();
        print(name + ": no error");
    } catch (error) {
        print(name + ":" + error.message.replace(name + " failed:", ""), error.hresult);
    }
}

print(typeof provider.Load, typeof provider.Unload, typeof provider.OpenKey,
      typeof provider.GetKeyCount);
print(provider.load, provider.Nonsense);
failure("GetKeyCount", function () { provider.GetKeyCount(); });
failure("GetKeyCount", function () { provider.GetKeyCount(1); });
failure("OpenKey", function () { provider.OpenKey(-1); });
failure("OpenKey", function () { provider.OpenKey(0); });
failure("Load", function () { provider.Load(5); });
failure("Load", function () { provider.Load(); });
print("Unload: " + provider.Unload());
