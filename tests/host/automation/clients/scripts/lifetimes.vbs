' Objects that are released in any order; each keeps what it came from.
Dim provider, tokens, token, container, certificate, data, i, enumerated, list
Set provider = LoadedProvider
Set tokens = provider.tokens
Set token = tokens.Item(0)
Set provider = Nothing
Set tokens = Nothing
ExpectEqual "a token without its provider", "ZRKey Test", token.Label
token.VerifyPIN "1234"
Set container = token.OpenContainer(0)
Set certificate = container.GetKeyCert
Set token = Nothing
Set container = Nothing
ExpectEqual "a certificate without its token", "container1", certificate.CertID
ExpectEqual "its subject", "CN=ZRKey Test", certificate.subject
Set certificate = Nothing

' Closing an outer object first.
Set provider = LoadedProvider
Set token = provider.OpenKey(0)
token.VerifyPIN "1234"
Set certificate = token.certificates.Item(0)
ExpectTrue "Close of the provider", provider.Close
ExpectTrue "Close again", provider.Close
ExpectEqual "a token of a closed provider", "ZRKey Test", token.Label
ExpectTrue "Close of the token", token.Close
ExpectEqual "a certificate of a closed token", "container1", certificate.CertID
certificate.Close

' A loop that is left early, and a list that is used after it.
Set provider = LoadedProvider
Set list = provider.tokens
For Each token In list
    Exit For
Next
ExpectEqual "a list after a loop was left", 1, CInt(list.Count)
Set list = Nothing
ExpectEqual "the object of the loop", "ZRKey Test", token.Label

For i = 1 To 50
    Set provider = CreateObject("ZRKey.TokenProvider")
    ExpectEqual "a new provider", "PKCS#11", provider.Name
Next
Set provider = Nothing
Finish
