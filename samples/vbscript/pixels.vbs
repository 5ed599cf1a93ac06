' SPDX-License-Identifier: MIT
' Works on pixels: one by one, and all at once in a byte array.
'
'   cscript pixels.vbs
Option Explicit

Dim sheet, alpha, color, bits, file, x
Set sheet = CreateObject("pixkit.cPixSheet")
If Not sheet.InitializeDIB(4, 2) Then Fail "InitializeDIB"

For x = 0 To 3
    sheet.SetPixel x, 0, RGB(x * 80, 0, 0)
Next
sheet.SetPixel 0, 1, RGB(0, 255, 0), 128

' GetPixel gives the colour, and the alpha in a variable.
color = sheet.GetPixel(0, 1, alpha)
If alpha <> 128 Or color <> RGB(0, 255, 0) Then Fail "GetPixel: " & color & ", " & alpha

' The first index is the byte within a row (B, G, R, A a pixel), the second the row, bottom row first.
If Not sheet.GetDIBbits(bits) Then Fail "GetDIBbits"
If UBound(bits, 1) <> 15 Or UBound(bits, 2) <> 1 Then Fail "bounds"
If bits(14, 1) <> 240 Or bits(3, 0) <> 128 Then Fail "bytes: " & bits(14, 1) & ", " & bits(3, 0)

' And back, after a change.
bits(12, 1) = 255
If Not sheet.SetDIBbits(bits) Then Fail "SetDIBbits"
If sheet.GetPixel(3, 0) <> RGB(240, 0, 255) Then Fail "changed pixel: " & Hex(sheet.GetPixel(3, 0))

' A file in memory: two rows of 4 pixels at 24 bits behind 54 bytes of headers.
If Not sheet.SaveToStream_Bitmap(file) Then Fail "SaveToStream_Bitmap"
If UBound(file) + 1 <> 54 + 2 * 12 Then Fail "file of " & UBound(file) + 1
If Chr(file(0)) & Chr(file(1)) <> "BM" Then Fail "signature"
WScript.Echo "all pixels as expected"

Sub Fail(what)
    WScript.Echo "failed: " & what
    WScript.Quit 1
End Sub
