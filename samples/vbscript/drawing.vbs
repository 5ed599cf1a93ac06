' SPDX-License-Identifier: MIT
' Draws a picture, turned and with a shadow under it, over a checkerboard and saves the result.
'
'   cscript drawing.vbs PICTURE RESULT.bmp
Option Explicit

Dim sheet, copy, loaded, arguments
Set arguments = WScript.Arguments
If arguments.Count <> 2 Then
    WScript.Echo "cscript drawing.vbs PICTURE RESULT.bmp"
    WScript.Quit 2
End If

Set sheet = CreateObject("pixkit.cPixSheet")
If Not sheet.LoadPicture_File(arguments(0)) Then Fail "cannot load " & arguments(0)
sheet.HighQualityInterpolation = True

' At most 160 pixels wide and high, in proportion; ScaleImage gives the size in its variables.
Const scaleDownAsNeeded = 1
Dim width, height
sheet.ScaleImage 160, 160, width, height, scaleDownAsNeeded
If Not sheet.Resize(width, height) Then Fail "Resize"

' The backdrop, and tiles of the picture half visible over its lower part.
Set copy = CreateObject("pixkit.cPixSheet")
If Not copy.InitializeDIB(320, 320) Then Fail "InitializeDIB"
If Not copy.CreateCheckerBoard(16) Then Fail "CreateCheckerBoard"
If Not sheet.TileImage(0, 0, 240, 320, 80, 50, 0, 0, 8, copy) Then Fail "TileImage"

' The picture turned by 20 degrees on an image of its own, so that its shadow is turned with it.
Set loaded = CreateObject("pixkit.cPixSheet")
If Not loaded.InitializeDIB(240, 240) Then Fail "InitializeDIB"
If Not sheet.Render(0, 120, 120, 0, 0, 0, 0, 0, 0, 100, True, True, loaded, -1, 0, 20, True) Then Fail "Render"
loaded.Alpha = 2
If Not loaded.TrimImage() Then Fail "TrimImage"
If Not loaded.RenderDropShadow_JIT(0, 46, 26, 8, RGB(0, 0, 60), 60, 0, copy) Then Fail "RenderDropShadow_JIT"
If Not loaded.Render(0, 40, 20, 0, 0, 0, 0, 0, 0, 100, True, True, copy) Then Fail "Render"

' A shadow may also be had as an object of its own.
Dim shadow
Set shadow = loaded.CreateDropShadow(4)
If shadow.Width <> loaded.Width + 8 Then Fail "CreateDropShadow"

If Not copy.SaveToFile_Bitmap(arguments(1), False, 0, False) Then Fail "cannot save " & arguments(1)
WScript.Echo "saved " & arguments(1)

Sub Fail(what)
    WScript.Echo "failed: " & what
    WScript.Quit 1
End Sub
