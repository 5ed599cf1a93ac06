' SPDX-License-Identifier: MIT
' Writes a text over a picture's lower right corner, half clear and with a shadow, in letters that suit the picture's size.
'
'   cscript watermark.vbs PICTURE RESULT.png TEXT
Option Explicit

Dim sheet, font, arguments, text, width, height, x, y, margin
Set arguments = WScript.Arguments
If arguments.Count <> 3 Then
    WScript.Echo "cscript watermark.vbs PICTURE RESULT.png TEXT"
    WScript.Quit 2
End If
text = arguments(2)

Set sheet = CreateObject("pixkit.cPixSheet")
If Not sheet.LoadPicture_File(arguments(0)) Then Fail "cannot load " & arguments(0)
Set font = CreateObject("StdFont")
font.Name = "Tahoma"

' As large as a third of the picture's width allows: a text grows with its font, so one measurement says by how much.
font.Size = 40
width = 0
height = 0
If Not sheet.MeasureText_stdFont(font, text, width, height) Then Fail "MeasureText_stdFont"
If width = 0 Then Fail "nothing to see in the text"
font.Size = 40 * (sheet.Width / 3) / width
If Not sheet.MeasureText_stdFont(font, text, width, height) Then Fail "MeasureText_stdFont"

' The text's own size, placed from the right and from below. Drawn twice: the shadow, a little lower, then the letters.
margin = height \ 4
x = sheet.Width - width - margin
y = sheet.Height - height - margin
If Not sheet.DrawText_stdFont(0, font, text, x + 1, y + 1, width, height, RGB(0, 0, 0), 50) Then Fail "DrawText_stdFont"
If Not sheet.DrawText_stdFont(0, font, text, x, y, width, height, RGB(255, 255, 255), 70) Then Fail "DrawText_stdFont"

If Not sheet.SaveToFile_PNG(arguments(1), False) Then Fail "cannot save " & arguments(1)
WScript.Echo "wrote " & width & " x " & height & " pixels of text at " & x & ", " & y & " into " & arguments(1)

Sub Fail(what)
    WScript.Echo "failed: " & what & ": " & sheet.LastErrorText
    WScript.Quit 1
End Sub
