' A day's work: every object of the model, in the forms that VBScript has for calls and properties.
Dim provider, token, container, certificate, signature, data, names, count, list

Set provider = CreateObject("ZRKey.TokenProvider")
ExpectEqual "Load", True, provider.Load(Variable("ZRKEY_MODULE"))
ExpectEqual "Name", "PKCS#11", provider.Name
ExpectEqual "GetName without parentheses", "PKCS#11", provider.GetName
ExpectEqual "GetName with parentheses", "PKCS#11", provider.GetName()
ExpectEqual "names are not case-sensitive", "PKCS#11", provider.gETnAME
ExpectEqual "KeyCount", 2, provider.KeyCount

ExpectEqual "Count of the tokens", 1, provider.tokens.Count
count = 0
For Each token In provider.tokens
    count = count + 1
    ExpectEqual "Label in For Each", "ZRKey Test", token.Label
Next
ExpectEqual "For Each over the tokens", 1, count
ExpectEqual "Item", "ZRKey Test", provider.tokens.Item(0).Label
ExpectEqual "an index of a list that a member returns", "ZRKey Test", provider.tokens(0).Label
Set list = provider.tokens
ExpectEqual "the default member", "ZRKey Test", list(0).Label

Set token = provider.OpenKey(0)
ExpectEqual "a variable as an argument", "ZRKey Test", provider.OpenKey(CLng(0)).Label
ExpectEqual "SerialNumber", 16, Len(token.SerialNumber)
ExpectEqual "VerifyPIN with its type", True, token.VerifyPIN("1234", 0)
ExpectEqual "VerifyPIN without its type", True, token.VerifyPIN("1234")
token.VerifyPIN "1234"

names = token.EnumContainer
ExpectEqual "EnumContainer is an array", 8204, VarType(names)
ExpectEqual "EnumContainer", "container1", names(0)
ExpectEqual "all names", 0, UBound(names)
ExpectEqual "ContainerCount", 1, token.ContainerCount
Set container = token.OpenContainer("container1")
Set container = token.OpenContainer(0)
Set certificate = container.GetKeyCert
ExpectEqual "CertID", "container1", certificate.CertID
ExpectEqual "subject", "CN=ZRKey Test", certificate.subject
ExpectEqual "pem", "-----BEGIN CERTIFICATE-----", Left(certificate.pem, 27)
ExpectEqual "certificates", "container1", token.certificates.Item(0).CertID

data = provider.fromText("a letter")
signature = token.sign(data, certificate)
ExpectEqual "sign returns bytes", 8209, VarType(signature)
ExpectTrue "verify", token.verify(data, certificate, signature)
ExpectEqual "verify of other data", False, token.verify(provider.fromText("a lettre"), certificate, signature)
signature = token.sign(data, certificate, "rsa-pss-sha256")
ExpectTrue "verify with an algorithm", token.verify(data, certificate, signature, "rsa-pss-sha256")
signature = token.SignData(data, certificate)
ExpectTrue "VerifyData", token.VerifyData(data, certificate, signature)
signature = token.SignData("ignored", data, certificate)
ExpectTrue "VerifyData with all parameters", token.VerifyData(data, certificate, "ignored", signature)
ExpectEqual "DigestData", "900150983cd24fb0d6963f7d28e17f72", _
            provider.toHex(token.DigestData("MD5", provider.fromText("abc")))
ExpectEqual "SignAlgo comes from config.xml", "SHA1WithRSA", token.SignAlgo
ExpectTrue "Unload", provider.Unload
Finish
