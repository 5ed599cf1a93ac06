' SPDX-License-Identifier: MIT
' Saves a picture as PNG with a title, as JPEG, GIF and TGA, and as an icon of three sizes, and loads each again.
'
'   cscript saving.vbs PICTURE RESULT      gives RESULT.png, RESULT.jpg, RESULT.gif, RESULT.tga and RESULT.ico
Option Explicit

Const pngTitle = 1, pngCompressionLevel = 16
Const imgPNG = 10, imgGIF = 9, imgTGA = 128, imgBitmap = 1, imgIconARGB = 8

Dim sheet, arguments, target, total
Set arguments = WScript.Arguments
If arguments.Count <> 2 Then
    WScript.Echo "cscript saving.vbs PICTURE RESULT"
    WScript.Quit 2
End If
target = arguments(1)

Set sheet = CreateObject("pixkit.cPixSheet")
If Not sheet.LoadPicture_File(arguments(0)) Then Fail "cannot load " & arguments(0)

If Not sheet.PngPropertySet(pngTitle, "A lantern") Then Fail "PngPropertySet"
If Not sheet.PngPropertySet(pngCompressionLevel, 9) Then Fail "PngPropertySet"
If Not sheet.SaveToFile_PNG(target & ".png", False) Then Fail "SaveToFile_PNG"
Check ".png", imgPNG
If Not sheet.SaveToFile_JPG(target & ".jpg", 85, RGB(255, 255, 255), False) Then Fail "SaveToFile_JPG"
Check ".jpg", imgBitmap
If Not sheet.SaveToFile_GIF(target & ".gif", True, 128, False) Then Fail "SaveToFile_GIF"
Check ".gif", imgGIF
If Not sheet.SaveToFile_TGA(target & ".tga", True, False, False, False) Then Fail "SaveToFile_TGA"
Check ".tga", imgTGA

' Width, height and bits of each image in the icon.
total = sheet.SaveToFile_ICO(target & ".ico", sheet, False, 16, 16, 32, 32, 32, 32, 48, 48, 8)
If total <> 3 Then Fail "SaveToFile_ICO"
Dim icon
Set icon = CreateObject("pixkit.cPixSheet")
If Not icon.LoadPicture_File(target & ".ico", 32, 32) Then Fail "cannot load the icon"
If icon.Width <> 32 Or icon.ImageType <> imgIconARGB Then Fail "the icon is another one"

WScript.Echo "saved " & target & " in five formats"

Sub Check(extension, imageType)
    Dim again
    Set again = CreateObject("pixkit.cPixSheet")
    If Not again.LoadPicture_File(target & extension) Then Fail "cannot load " & target & extension
    If again.ImageType <> imageType Then Fail target & extension & " is another picture"
End Sub

Sub Fail(what)
    WScript.Echo "failed: " & what
    WScript.Quit 1
End Sub
