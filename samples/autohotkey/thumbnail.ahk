; SPDX-License-Identifier: MIT
; Makes a thumbnail of a picture, in AutoHotkey 2.
;
;   AutoHotkey64.exe thumbnail.ahk PICTURE RESULT.png
#Requires AutoHotkey v2.0

resampleLanczos3 := 4, gsclSimpleAvg := 2, streamPNG := 10

if A_Args.Length != 2 {
    MsgBox "thumbnail.ahk PICTURE RESULT.png"
    ExitApp 2
}
sheet := ComObject("pixkit.cPixSheet")
Check(sheet.LoadPicture_File(A_Args[1]), "LoadPicture_File")

; What ScaleImage would store in its arguments is worked out here.
scale := Min(1, 160 / sheet.Width, 160 / sheet.Height)
Check(sheet.Resample(Round(sheet.Width * scale), Round(sheet.Height * scale), resampleLanczos3), "Resample")
Check(sheet.MakeGrayScale(gsclSimpleAvg), "MakeGrayScale")

; An array of bytes is a ComObjArray: its elements are counted from 0.
bits := sheet.DIBbits(false, true, true, false, false)
Check(bits[3] = sheet.PixelAlpha(0, 0), "alpha by two roads")

; A file in memory goes to another object as it came.
copy := ComObject("pixkit.cPixSheet")
Check(copy.LoadPicture_Stream(sheet.StreamOf(streamPNG)), "LoadPicture_Stream")
Check(copy.SaveToFile_PNG(A_Args[2], false), "SaveToFile_PNG")

Check(success, what) {
    if success
        return
    MsgBox "failed: " what ": " sheet.LastErrorText
    ExitApp 1
}
