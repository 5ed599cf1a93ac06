' SPDX-License-Identifier: MIT
' Copies a picture with its shadow to the clipboard, for any program to paste, and pastes it here too.
'
'   cscript clipboard.vbs picture
'
' What is on the clipboard stays when this program has ended. To load a picture of another program, leave the first part out.
Option Explicit

Dim picture, pasted, x, alphaBefore, alphaAfter
If WScript.Arguments.Count < 1 Then Fail "which picture?"
Set picture = CreateObject("pixkit.cPixSheet")
If Not picture.LoadPicture_File(WScript.Arguments(0)) Then Fail "LoadPicture_File"

Dim shadow
Set shadow = picture.CreateDropShadow(6)
picture.Render 0, 2, 2, , , , , , , , , , shadow
If Not shadow.CopyToClipBoard() Then Fail "CopyToClipBoard"

Set pasted = CreateObject("pixkit.cPixSheet")
If Not pasted.LoadPicture_ClipBoard() Then Fail "LoadPicture_ClipBoard"
If pasted.Width <> shadow.Width Or pasted.Height <> shadow.Height Then Fail "another size"
For x = 0 To pasted.Width - 1
    If pasted.GetPixel(x, 3, alphaAfter, True) <> shadow.GetPixel(x, 3, alphaBefore, True) Then Fail "colour " & x
    If alphaAfter <> alphaBefore Then Fail "alpha " & x
Next
WScript.Echo "pasted " & pasted.Width & " x " & pasted.Height & ", every pixel as it was copied"

Sub Fail(what)
    WScript.Echo "failed: " & what
    WScript.Quit 1
End Sub
