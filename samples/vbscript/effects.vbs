' SPDX-License-Identifier: MIT
' Loads a picture, applies effects and saves it.
'
'   cscript effects.vbs PICTURE RESULT.bmp
Option Explicit

Dim sheet, copy, again, arguments
Set arguments = WScript.Arguments
If arguments.Count <> 2 Then
    WScript.Echo "cscript effects.vbs PICTURE RESULT.bmp"
    WScript.Quit 2
End If

Set sheet = CreateObject("pixkit.cPixSheet")
WScript.Echo "pixkit " & sheet.Version
If Not sheet.LoadPicture_File(arguments(0)) Then Fail "cannot load " & arguments(0)
WScript.Echo sheet.Width & " x " & sheet.Height & ", format " & sheet.ImageType & ", alpha " & sheet.Alpha

' A copy keeps the original as it is; Nothing becomes a new object.
Set copy = Nothing
sheet.CopyImageTo copy
If copy Is Nothing Then Fail "no copy"
copy.Tag = "the copy"

Const gsclNTSCPAL = 0
If Not copy.MakeGrayScale(gsclNTSCPAL) Then Fail "MakeGrayScale"
If Not copy.MakeLighterDarker(15) Then Fail "MakeLighterDarker"
If Not copy.BlendToColor(RGB(255, 200, 120), 20) Then Fail "BlendToColor"
If Not copy.MirrorImage(True, False) Then Fail "MirrorImage"

' A transparent picture is flattened onto white; an existing file is replaced without a question.
If Not copy.SaveToFile_Bitmap(arguments(1), False, RGB(255, 255, 255), False) Then Fail "cannot save " & arguments(1)

' What was saved reads back.
Set again = CreateObject("pixkit.cPixSheet")
If Not again.LoadPicture_File(arguments(1)) Then Fail "cannot read " & arguments(1)
Dim sameSize
sameSize = (again.Width = copy.Width) And (again.Height = copy.Height)
If Not sameSize Then Fail "another size"
If copy.Alpha = 0 And again.GetPixel(5, 5) <> copy.GetPixel(5, 5) Then Fail "another picture"
WScript.Echo "saved " & arguments(1) & " from " & copy.Tag

Sub Fail(what)
    WScript.Echo "failed: " & what
    WScript.Quit 1
End Sub
