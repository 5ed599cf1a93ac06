Attribute VB_Name = "PixkitSample"
' For VBA of both word sizes, with a reference to "pixkit imaging component 3.0" (Tools, References).
Option Explicit

' Turns a picture gray and saves it as a BMP file.
Public Sub GrayCopy(ByVal Picture As String, ByVal Result As String)
    Dim sheet As pixkit.cPixSheet
    Set sheet = New pixkit.cPixSheet
    If Not sheet.LoadPicture_File(Picture, SaveFormat:=True) Then Exit Sub
    Debug.Print sheet.Version, sheet.Width, sheet.Height, sheet.Alpha = AlphaNone

    Dim original() As Byte
    If sheet.GetOrginalFormat(original) Then Debug.Print UBound(original) + 1; "bytes in the file"

    sheet.MakeGrayScale gsclNTSCPAL
    sheet.SaveToFile_Bitmap Result, TransparentFillColor:=vbWhite, PromptOverWrite:=False
End Sub

' Sums the blue bytes of a picture without asking for each pixel.
Public Function SumOfBlue(ByVal sheet As pixkit.cPixSheet) As Double
    Dim bits() As Byte, x As Long, y As Long
    If Not sheet.GetDIBbits(bits, as2dArray:=True, as32bpp:=True) Then Exit Function
    For y = 0 To UBound(bits, 2)
        For x = 0 To UBound(bits, 1) Step 4
            SumOfBlue = SumOfBlue + bits(x, y)
        Next
    Next
End Function

' Draws a picture, at most 200 pixels large, onto a device context, its shadow beneath it. Handles are as wide as the
' host: LongPtr fits both.
#If VBA7 Then
Public Sub DrawWithShadow(ByVal sheet As pixkit.cPixSheet, ByVal hdc As LongPtr)
#Else
Public Sub DrawWithShadow(ByVal sheet As pixkit.cPixSheet, ByVal hdc As Long)
#End If
    Dim newWidth As Long, newHeight As Long
    sheet.ScaleImage 200, 200, newWidth, newHeight, scaleDownAsNeeded
    If Not sheet.Resize(newWidth, newHeight) Then Exit Sub
    sheet.RenderDropShadow_JIT hdc, 12, 12, blurDepth:=6, Color:=vbBlack, Opacity:=40
    sheet.Render hdc, 10, 10
End Sub
