// Files on the token: create, write, read, delete.
var token = loggedInToken();
var provider = new ActiveXObject("ZRKey.TokenProvider");
var big = [];
for (var i = 0; i < 3000; ++i) {
    big.push(i % 251);
}
expectEqual("writeFile with an array", true, token.writeFile("21", big));
var file = token.OpenFile("21");
expectEqual("GetSize", 3000, file.GetSize());
expectEqual("readAll", provider.toHex(big), provider.toHex(file.readAll()));
expectEqual("Seek", true, file.Seek(250));
expectEqual("Read", "fa0001", provider.toHex(file.Read(3)));
expectError("Read beyond the end", "80004005", "Read failed: E_FAIL (0x80004005)", function () {
    file.Read(5000);
});
expectError("Flush, which SoftHSM2 refuses", "80004005", "Flush failed: E_FAIL (0x80004005)",
            function () { file.Flush(); });
expectEqual("Close", true, file.Close());
expectEqual("writeFile again", true, token.writeFile("21", [7]));
expectEqual("the new content", "07", provider.toHex(token.OpenFile("21").readAll()));
expectEqual("DeleteFile", true, token.DeleteFile("21"));
expectError("DeleteFile again", "80004005", "DeleteFile failed: E_FAIL (0x80004005)", function () {
    token.DeleteFile("21");
});
finish();
