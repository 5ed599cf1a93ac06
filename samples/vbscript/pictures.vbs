' SPDX-License-Identifier: MIT
' Hands a picture out as an object that controls and ribbons take, and loads it back from there.
'
'   cscript pictures.vbs PICTURE
'
' In a form it is one line: Set Image1.Picture = sheet.CreateStdPicture()
Option Explicit

Const pictFlat = 2, typeBitmap = 1, typeIcon = 3
Dim sheet, loaded, picture, alphaBefore, alphaAfter
If WScript.Arguments.Count < 1 Then Fail "which picture?"
Set sheet = CreateObject("pixkit.cPixSheet")
If Not sheet.LoadPicture_File(WScript.Arguments(0)) Then Fail "LoadPicture_File"

' Without arguments: an icon where the picture has alpha, so that what lies beneath shows through, else a bitmap.
Set picture = sheet.CreateStdPicture()
If picture Is Nothing Then Fail sheet.LastErrorText
If sheet.Alpha = 0 And picture.Type <> typeBitmap Then Fail "an opaque picture is no bitmap"
If sheet.Alpha <> 0 And picture.Type <> typeIcon Then Fail "a translucent picture is no icon"
If picture.Handle = 0 Then Fail "no handle"
WScript.Echo "a picture of " & picture.Width & " x " & picture.Height & " hundredths of a millimetre"

' What controls show that know no alpha: the picture on the colour of their background.
Set picture = sheet.CreateStdPicture(pictFlat, RGB(240, 240, 240))
Set loaded = CreateObject("pixkit.cPixSheet")
If Not loaded.LoadPicture_StdPicture(picture) Then Fail loaded.LastErrorText
If loaded.Width <> sheet.Width Or loaded.Height <> sheet.Height Then Fail "another size"
If loaded.Alpha <> 0 Then Fail "not flat"
sheet.GetPixel 0, 0, alphaBefore
If alphaBefore = 0 And loaded.GetPixel(0, 0, alphaAfter) <> RGB(240, 240, 240) Then Fail "another background"
WScript.Echo "loaded back " & loaded.Width & " x " & loaded.Height & ", as expected"

Sub Fail(what)
    WScript.Echo "failed: " & what
    WScript.Quit 1
End Sub
