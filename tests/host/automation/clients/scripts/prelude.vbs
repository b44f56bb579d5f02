' Before every script in VBScript of this folder.
Option Explicit
Dim failures
failures = 0

' Numbers are equal whatever their types.
Sub ExpectEqual(what, expected, actual)
    If IsSame(expected, actual) Then Exit Sub
    failures = failures + 1
    WScript.Echo "FAILED " & what & ": " & actual & " of type " & VarType(actual) & ", not " & expected
End Sub

Function IsSame(expected, actual)
    IsSame = False
    If VarType(expected) <> VarType(actual) And (Not IsNumber(expected) Or Not IsNumber(actual)) Then
        Exit Function
    End If
    IsSame = (expected = actual)
End Function

Function IsNumber(value)
    IsNumber = (VarType(value) >= 2 And VarType(value) <= 5)
End Function

Sub ExpectTrue(what, condition)
    ExpectEqual what, True, condition
End Sub

' The error that the statement before it must have raised; clears it.
Sub ExpectError(what, number, source, description)
    ExpectEqual what & ", number", Hex(number), Hex(Err.Number)
    ExpectEqual what & ", source", source, Err.Source
    ExpectEqual what & ", description", description, Err.Description
    Err.Clear
End Sub

Function Variable(name)
    Variable = CreateObject("WScript.Shell").Environment("Process")(name)
End Function

Function LoadedProvider()
    Dim provider
    Set provider = CreateObject("ZRKey.TokenProvider")
    provider.Load Variable("ZRKEY_MODULE")
    Set LoadedProvider = provider
End Function

Function LoggedInToken()
    Dim token
    Set token = LoadedProvider().OpenKey(0)
    token.VerifyPIN "1234"
    Set LoggedInToken = token
End Function

' The last statement of every script.
Sub Finish()
    WScript.Echo "== end"
    WScript.Quit failures
End Sub
