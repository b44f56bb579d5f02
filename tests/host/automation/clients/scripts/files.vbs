' Files on the token: create, write, read, delete.
Dim provider, token, file, bytes
Set token = LoggedInToken
Set provider = CreateObject("ZRKey.TokenProvider")
ExpectTrue "writeFile", token.writeFile("20", provider.fromText("content"))
ExpectEqual "FileExists", 1, token.FileExists("20")
Set token = Nothing
Set token = LoggedInToken ' FileExists leaves its search open

Set file = token.OpenFile("20")
ExpectEqual "Size", 7, file.Size
ExpectEqual "Read", "con", provider.toText(file.Read(3))
ExpectTrue "Seek", file.Seek(1)
ExpectEqual "Read after Seek", "on", provider.toText(file.Read(2))
ExpectTrue "Seek with origin", file.Seek(1, 1)
ExpectEqual "Read after Seek from the position", "ent", provider.toText(file.Read(3))
ExpectEqual "readAll", "content", provider.toText(file.readAll)
ExpectTrue "Close", file.Close
ExpectTrue "DeleteFile", token.DeleteFile("20")

Set file = token.CreateFile("30")
ExpectEqual "Size of a new file", 0, file.Size
file.Close
ExpectTrue "DeleteFile of a file under the name that finds it", token.DeleteFile("31")

On Error Resume Next
token.OpenFile "20"
ExpectError "OpenFile of a missing file", &H80004005, "ZRKey.Token", _
            "OpenFile failed: E_FAIL (0x80004005)"
file.GetSize
ExpectEqual "a closed file", Hex(&H8000FFFF), Hex(Err.Number)
ExpectEqual "a closed file, source", "ZRKey.File", Err.Source
Err.Clear
Set file = token.CreateFile("40")
file.Write provider.fromText("x")
ExpectEqual "Write is refused", Hex(&H80070057), Hex(Err.Number)
Err.Clear
file.Read -1
ExpectError "Read of a negative length", &H80070057, "ZRKey.File", "Read: argument 1 is negative"
file.Close
token.DeleteFile "41"
ExpectEqual "no error at the end", 0, Err.Number
Finish
