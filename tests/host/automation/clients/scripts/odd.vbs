' What scripts rarely do, and some do.
Dim provider, token, tokens, other, item, number, text, bytes, copy(1), certificate, count, nested

Set provider = LoadedProvider
Set token = provider.OpenKey(0)
Set tokens = provider.tokens
ExpectTrue "IsObject", IsObject(token)
ExpectTrue "a name of a type", Len(TypeName(provider)) > 0 And Len(TypeName(tokens)) > 0
ExpectTrue "Is", token Is token
ExpectEqual "Is of another object", False, token Is provider.OpenKey(0)

' Variables, elements of arrays and results in parentheses as arguments.
number = 0
ExpectEqual "a variable", "ZRKey Test", provider.OpenKey(number).Label
ExpectEqual "a variable as it was", 0, number
copy(0) = 0
ExpectEqual "an element of an array", "ZRKey Test", provider.OpenKey(copy(0)).Label
ExpectEqual "a value in parentheses", "ZRKey Test", provider.OpenKey((number)).Label
number = CByte(0)
ExpectEqual "a Byte", "ZRKey Test", provider.OpenKey(number).Label
number = CDbl(0)
ExpectEqual "a Double", "ZRKey Test", provider.OpenKey(number).Label
number = CCur(0)
ExpectEqual "a Currency", "ZRKey Test", provider.OpenKey(number).Label

' Loops in loops over one list.
count = 0
For Each item In tokens
    For Each nested In tokens
        count = count + 1
        ExpectEqual "a loop in a loop", item.Label, nested.Label
    Next
Next
ExpectEqual "loops in loops", 1, count
count = 0
For Each item In token.EnumContainer
    count = count + 1
    ExpectEqual "a loop over texts", "container1", item
Next
ExpectEqual "loops over texts", 1, count

' A result that replaces the object it came from.
Set item = tokens
Set item = item.Item(0)
Set item = item.certificates
Set item = item.Item(0)
ExpectEqual "a chain of results", "container1", item.CertID

' Two names for one object.
Set other = token
other.VerifyPIN "1234"
Set other = Nothing
Set certificate = token.certificates.Item(0)
bytes = token.GetCertData(certificate)
ExpectEqual "the token is logged in by another name", 8209, VarType(bytes)
ExpectEqual "the certificate in both ways", provider.toHex(bytes), provider.toHex(certificate.GetCertData)

' Long texts pass in both directions.
text = String(100000, "a")
ExpectEqual "a long text", text, provider.toText(provider.fromText(text))
ExpectEqual "a long text as hex", 200000, Len(provider.toHex(provider.fromText(text)))

' Called without parentheses around its arguments, and with Call.
token.VerifyPIN "1234", 0
Call token.VerifyPIN("1234", 0)
Call token.Close
ExpectEqual "Call and a result", True, provider.Unload()

' A provider before Load.
Set other = CreateObject("ZRKey.TokenProvider")
ExpectEqual "a name before Load", "PKCS#11", other.Name
On Error Resume Next
number = other.KeyCount
ExpectEqual "KeyCount before Load", Hex(&H80004005), Hex(Err.Number)
Err.Clear
Finish
