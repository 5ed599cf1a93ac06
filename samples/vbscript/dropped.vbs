' SPDX-License-Identifier: MIT
' Drop pictures onto this script: each becomes a PNG file beside it. Arguments, too, are a drop.
'
'   cscript dropped.vbs PICTURE...
Option Explicit

Dim sheet, names, count, i
Set sheet = CreateObject("pixkit.cPixSheet")
count = sheet.GetDroppedFileNames(WScript.Arguments, names)
If count <> WScript.Arguments.Count Then Fail "names: " & count
For i = 1 To count
    If Not sheet.LoadPicture_DropedFiles(WScript.Arguments, i) Then Fail names(i - 1) & ": " & sheet.LastErrorText
    If Not sheet.SaveToFile_PNG(names(i - 1) & ".dropped.png", False) Then Fail sheet.LastErrorText
Next

' What else a drop may be: an array of names, and an object with Files, as forms of Basic hand it over.
If Not sheet.LoadPicture_DropedFiles(Array("no such file", names(0))) Then Fail "array"
If Not sheet.LoadPicture_DropedFiles(New Dropped) Then Fail "Files"
If sheet.GetDroppedFileNames(New Dropped, names) <> 2 Then Fail "names of Files"
If sheet.LoadPicture_DropedFiles(New Dropped, 2) Then Fail "the second of Files"
WScript.Echo count & " dropped, all as expected"

Class Dropped
    Public Property Get Files()
        Set Files = New DroppedFiles
    End Property
End Class

Class DroppedFiles
    Public Property Get Count()
        Count = 2
    End Property
    Public Default Property Get Item(i)
        Item = "no such file"
        If i = 1 Then Item = WScript.Arguments(0)
    End Property
End Class

Sub Fail(what)
    WScript.Echo "failed: " & what
    WScript.Quit 1
End Sub
