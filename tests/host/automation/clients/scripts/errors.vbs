' Every kind of error: what Err says.
Dim provider, token, other
Set provider = CreateObject("ZRKey.TokenProvider")
On Error Resume Next

provider.Load "missing.dll"
ExpectEqual "Load of a missing module", Hex(&H80004005), Hex(Err.Number)
ExpectEqual "Load of a missing module, source", "ZRKey.TokenProvider", Err.Source
ExpectTrue "Load of a missing module, description", InStr(Err.Description, "Load failed: ") = 1
Err.Clear
provider.Load Variable("ZRKEY_MODULE")
ExpectEqual "Load after a failed one", 0, Err.Number

provider.OpenKey 1
ExpectError "a slot that cannot be opened", &H80004005, "ZRKey.TokenProvider", _
            "OpenKey failed: E_FAIL (0x80004005)"
Set token = provider.OpenKey(0)
token.VerifyPIN "97531"
ExpectError "a wrong PIN", &H80004005, "ZRKey.Token", "VerifyPIN failed: E_FAIL (0x80004005)"
token.SetLabel "x"
ExpectError "E_NOTIMPL", &H80004001, "ZRKey.Token", "SetLabel failed: E_NOTIMPL (0x80004001)"

token.VerifyPIN
ExpectEqual "too few arguments", 450, Err.Number
Err.Clear
token.VerifyPIN "1234", 0, 0
ExpectEqual "too many arguments", 450, Err.Number
Err.Clear
token.GetLabel 1
ExpectEqual "an argument for none", 450, Err.Number
Err.Clear
token.VerifyPIN 1234
ExpectEqual "a number as a PIN", 13, Err.Number
Err.Clear
token.VerifyPIN Null
ExpectEqual "Null", 13, Err.Number
Err.Clear
token.VerifyPIN Empty, 0
ExpectEqual "Empty", 13, Err.Number
Err.Clear
token.VerifyPIN Nothing
ExpectEqual "Nothing", 13, Err.Number
Err.Clear
provider.OpenKey 0.5
ExpectEqual "a fraction", 13, Err.Number
Err.Clear
provider.OpenKey 3000000000
ExpectEqual "a number of more than 32 bits", 6, Err.Number
Err.Clear
provider.OpenKey True
ExpectEqual "a boolean as a number", 13, Err.Number
Err.Clear
ExpectEqual "a text that is a number", "ZRKey Test", provider.OpenKey("0").Label
provider.OpenKey "zero"
ExpectEqual "a text that is no number", 13, Err.Number
Err.Clear
token.GetCertData token
ExpectEqual "an object of another class", 13, Err.Number
Err.Clear
token.GetCertData CreateObject("Scripting.Dictionary")
ExpectEqual "an object of somebody else", 13, Err.Number
Err.Clear
token.VerifyPIN "12" & Chr(0) & "34"
ExpectError "a NUL", &H80070057, "ZRKey.Token", "VerifyPIN: argument 1 contains a NUL"
token.VerifyPIN "1234", 7
ExpectEqual "a wrong type of PIN", Hex(&H80070057), Hex(Err.Number)
Err.Clear
token.VerifyPIN String(100000, "1")
ExpectEqual "a huge PIN", Hex(&H80004005), Hex(Err.Number)
Err.Clear

token.GetLable
ExpectEqual "an unknown member", 438, Err.Number
Err.Clear
token.Label = "x"
ExpectTrue "a property that cannot be written", Err.Number <> 0
Err.Clear
provider.tokens.Item 5
ExpectEqual "an index that is not there", Hex(&H80070057), Hex(Err.Number)
Err.Clear
token.Close
token.GetLabel
ExpectEqual "a closed token", Hex(&H8000FFFF), Hex(Err.Number)
ExpectEqual "a closed token, source", "ZRKey.Token", Err.Source
Err.Clear
Set other = provider.OpenKey(0)
ExpectEqual "no error after a success", 0, Err.Number
ExpectEqual "the provider goes on", "ZRKey Test", other.Label
Finish
