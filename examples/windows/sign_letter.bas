Attribute VB_Name = "SignLetterModule"
' Not run by the tests: there is no Office where they run. They check the names of the members.
'
' Signs a file with the first certificate of a token, checks the signature, and writes signature and
' certificate beside the file. It needs a 64-bit Office, and a reference to "ZRKey" (Tools, References).
' Import this module and call
'
'     SignLetter "C:\letters\letter.txt", "C:\Program Files\Maker\pkcs11.dll"
'
' There must be one token. The PIN is asked for, shown on the screen, and tried once.
Option Explicit

Private Const ALGORITHM As String = "rsa-sha256"

Public Sub SignLetter(ByVal path As String, ByVal modulePath As String)
    Dim provider As New ZRKey.TokenProvider
    Dim tokens As ZRKey.Collection
    Dim token As ZRKey.Token
    Dim certificates As ZRKey.Collection
    Dim certificate As ZRKey.Certificate
    Dim letter() As Byte
    Dim signature() As Byte
    Dim pin As String

    On Error GoTo Failed
    letter = ReadBytes(path) ' first: a mistake in the name must not cost a login
    provider.Load modulePath
    Set tokens = provider.tokens
    If tokens.Count <> 1 Then Err.Raise vbObjectError + 1, , tokens.Count & " tokens, not one"
    Set token = tokens.Item(0)
    pin = InputBox("PIN of " & token.Label)
    If pin = "" Then Err.Raise vbObjectError + 1, , "no PIN" ' the token would count it as a wrong PIN
    token.VerifyPIN pin, ZRPinUser

    Set certificates = token.certificates
    If certificates.Count = 0 Then Err.Raise vbObjectError + 1, , "the token has no certificate"
    Set certificate = certificates.Item(0)
    signature = token.sign(letter, certificate, ALGORITHM)
    If Not token.verify(letter, certificate, signature, ALGORITHM) Then
        Err.Raise vbObjectError + 1, , "the signature is not valid"
    End If
    WriteBytes path & ".sig", signature
    WriteBytes path & ".pem", provider.fromText(certificate.pem)
    MsgBox "signed " & path & " as " & certificate.subject
    Exit Sub

Failed:
    MsgBox Err.Source & ": " & Err.Description & " (" & Hex(Err.Number) & ")"
End Sub

Private Function ReadBytes(ByVal path As String) As Byte()
    Dim number As Integer
    Dim bytes() As Byte
    number = FreeFile
    Open path For Binary Access Read As #number
    If LOF(number) > 0 Then
        ReDim bytes(0 To LOF(number) - 1)
        Get #number, , bytes
    Else
        bytes = "" ' an array without elements
    End If
    Close #number
    ReadBytes = bytes
End Function

Private Sub WriteBytes(ByVal path As String, ByVal content As Variant)
    Dim number As Integer
    Dim bytes() As Byte
    bytes = content
    If Len(Dir(path)) > 0 Then Kill path
    number = FreeFile
    Open path For Binary Access Write As #number
    Put #number, , bytes
    Close #number
End Sub
