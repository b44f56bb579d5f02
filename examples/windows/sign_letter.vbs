' Signs a file with the first certificate of a token, checks the signature, and writes signature and
' certificate beside the file.
'
'     cscript //nologo sign_letter.vbs FILE [MODULE [SERIAL]]
'
' MODULE is the PKCS #11 module of the token's maker; without it, the variable ZRKEY_MODULE names it.
' SERIAL is the serial number of the token; without it there must be one token. The PIN is that of the
' variable PIN; without it, the script asks for it, and shows it on the screen. It is tried once.
'
' openssl dgst -sha256 -verify KEY -signature FILE.sig FILE checks the signature too.
Option Explicit

Const USER = 0 ' the kind of PIN; 1 is the security officer's
Const ALGORITHM = "rsa-sha256"
Const E_FAIL = &H80004005

If WScript.Arguments.Count < 1 Or WScript.Arguments.Count > 3 Then
    WScript.Echo "usage: cscript //nologo sign_letter.vbs FILE [MODULE [SERIAL]]"
    WScript.Quit 2
End If

' An error in SignLetter ends SignLetter, and this part shows it.
On Error Resume Next
SignLetter WScript.Arguments(0), Argument(1, Variable("ZRKEY_MODULE")), Argument(2, "")
If Err.Number <> 0 Then
    WScript.Echo "sign_letter.vbs: " & Err.Description
    WScript.Quit 1
End If
WScript.Quit 0

Sub SignLetter(file, modulePath, serial)
    Dim letter, provider, token, certificates, certificate, signature
    If modulePath = "" Then Fail "no module: name one, or set ZRKEY_MODULE"
    letter = ReadBytes(file) ' first: a mistake in the name must not cost a login
    Set provider = CreateObject("ZRKey.TokenProvider")
    provider.Load modulePath
    Set token = ChooseToken(provider, serial)
    Login token

    Set certificates = token.certificates
    If certificates.Count = 0 Then Fail "the token has no certificate"
    Set certificate = certificates.Item(0)
    signature = token.sign(letter, certificate, ALGORITHM)
    If Not token.verify(letter, certificate, signature, ALGORITHM) Then Fail "signature not valid"
    WriteBytes file & ".sig", signature
    WriteText file & ".pem", certificate.pem
    WScript.Echo "signed " & file & " as " & certificate.subject
End Sub

Function ChooseToken(provider, serial)
    Dim token, found
    found = 0
    For Each token In provider.tokens
        If serial = "" Or token.SerialNumber = serial Then
            Set ChooseToken = token
            found = found + 1
        End If
    Next
    If found <> 1 Then Fail found & " tokens match; name one by its serial number"
End Function

Sub Login(token)
    Dim pin, refusal
    pin = Variable("PIN")
    If pin = "" Then
        WScript.Echo "PIN of " & token.Label & ":"
        pin = WScript.StdIn.ReadLine
    End If
    If pin = "" Then Fail "no PIN" ' the token would count it as a wrong PIN
    On Error Resume Next
    token.VerifyPIN pin, USER
    refusal = Err.Number
    On Error GoTo 0
    If refusal = E_FAIL Then Fail "the token refused the PIN"
    If refusal <> 0 Then Fail "the login failed: " & Hex(refusal)
End Sub

Sub Fail(message)
    Err.Raise vbObjectError + 1, "sign_letter.vbs", message
End Sub

' The argument at an index; another value when it was not given.
Function Argument(index, otherwise)
    Argument = otherwise
    If index < WScript.Arguments.Count Then Argument = WScript.Arguments(index)
End Function

' A variable of the environment; empty when it is not set.
Function Variable(name)
    Variable = CreateObject("WScript.Shell").Environment("Process")(name)
End Function

Function ReadBytes(path)
    Dim stream
    Set stream = CreateObject("ADODB.Stream")
    stream.Type = 1 ' binary
    stream.Open
    stream.LoadFromFile path
    ReadBytes = stream.Read
    stream.Close
End Function

Sub WriteBytes(path, bytes)
    Dim stream
    Set stream = CreateObject("ADODB.Stream")
    stream.Type = 1 ' binary
    stream.Open
    stream.Write bytes
    stream.SaveToFile path, 2 ' replaces an existing file
    stream.Close
End Sub

Sub WriteText(path, text)
    Dim file
    Set file = CreateObject("Scripting.FileSystemObject").CreateTextFile(path, True)
    file.Write text
    file.Close
End Sub
