' Lists the tokens and the certificates on them. It needs no PIN.
'
'     cscript //nologo list_tokens.vbs [MODULE]
'
' MODULE is the PKCS #11 module of the token's maker; without it, the variable ZRKEY_MODULE names it.
Option Explicit

Dim modulePath
modulePath = CreateObject("WScript.Shell").Environment("Process")("ZRKEY_MODULE")
If WScript.Arguments.Count > 0 Then modulePath = WScript.Arguments(0)

On Error Resume Next
ListTokens modulePath
If Err.Number <> 0 Then
    WScript.Echo Err.Source & ": " & Err.Description
    WScript.Quit 1
End If
WScript.Quit 0

Sub ListTokens(modulePath)
    Dim provider, token, certificate
    Set provider = CreateObject("ZRKey.TokenProvider")
    provider.Load modulePath
    For Each token In provider.tokens
        WScript.Echo token.Label & ", " & token.ModelID & ", serial number " & token.SerialNumber
        For Each certificate In token.certificates
            WScript.Echo "    " & certificate.CertID & ": " & certificate.subject
        Next
    Next
End Sub
