' Bytes: VBScript cannot index arrays of bytes, but passes them on, and makes arrays of its own.
Dim provider, bytes, text, mixed(2)
Set provider = CreateObject("ZRKey.TokenProvider")
bytes = provider.fromHex("00 ff 10")
ExpectEqual "fromHex returns an array of bytes", 8209, VarType(bytes)
ExpectEqual "toHex", "00ff10", provider.toHex(bytes)
ExpectEqual "a result as an argument", "00ff10", provider.toHex(provider.fromHex("00FF10"))
ExpectEqual "toBase64", "AP8Q", provider.toBase64(bytes)
ExpectEqual "fromBase64", "00ff10", provider.toHex(provider.fromBase64("AP8Q"))
ExpectEqual "no bytes", "", provider.toHex(provider.fromHex(""))
text = provider.toText(provider.fromHex("c3bce282ac"))
ExpectEqual "text beyond ASCII", 2, Len(text)
ExpectEqual "fromText", "c3bce282ac", provider.toHex(provider.fromText(text))
ExpectEqual "an array of numbers", "01ff00", provider.toHex(Array(1, 255, 0))
ExpectEqual "an empty array", "", provider.toHex(Array())
mixed(0) = 65
mixed(1) = CByte(66)
mixed(2) = CDbl(67)
ExpectEqual "an array of mixed numbers", "ABC", provider.toText(mixed)

On Error Resume Next
bytes = provider.toHex(Array(1, 256))
ExpectEqual "a number that is no byte", 13, Err.Number
Err.Clear
bytes = provider.toHex(Array(1, -1))
ExpectEqual "a negative number", 13, Err.Number
Err.Clear
bytes = provider.toHex(Array(1, "2"))
ExpectEqual "a text in an array", 13, Err.Number
Err.Clear
bytes = provider.toHex("0102")
ExpectEqual "a text in place of bytes", 13, Err.Number
Err.Clear
bytes = provider.fromHex("0x")
ExpectError "not hex", &H80070057, "ZRKey.TokenProvider", "fromHex: argument 1 is not hex"
bytes = provider.fromBase64("===")
ExpectEqual "not base64", Hex(&H80070057), Hex(Err.Number)
Err.Clear
Finish
