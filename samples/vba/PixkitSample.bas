Attribute VB_Name = "PixkitSample"
' For VBA of both word sizes, with a reference to "pixkit imaging component 3.0" (Tools, References).
Option Explicit

#If VBA7 Then
Private Declare PtrSafe Function BitBlt Lib "gdi32" (ByVal hdcDest As LongPtr, ByVal x As Long, ByVal y As Long, _
    ByVal cx As Long, ByVal cy As Long, ByVal hdcSrc As LongPtr, ByVal xSrc As Long, ByVal ySrc As Long, _
    ByVal rop As Long) As Long
#Else
Private Declare Function BitBlt Lib "gdi32" (ByVal hdcDest As Long, ByVal x As Long, ByVal y As Long, _
    ByVal cx As Long, ByVal cy As Long, ByVal hdcSrc As Long, ByVal xSrc As Long, ByVal ySrc As Long, _
    ByVal rop As Long) As Long
#End If

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

' Copies a picture to a device context. Handles are as wide as the host: LongPtr fits both.
#If VBA7 Then
Public Sub CopyToDC(ByVal sheet As pixkit.cPixSheet, ByVal hdc As LongPtr)
    Dim memoryDC As LongPtr
#Else
Public Sub CopyToDC(ByVal sheet As pixkit.cPixSheet, ByVal hdc As Long)
    Dim memoryDC As Long
#End If
    memoryDC = sheet.LoadDIBinDC(True)
    BitBlt hdc, 0, 0, sheet.Width, sheet.Height, memoryDC, 0, 0, &HCC0020
    sheet.LoadDIBinDC False
End Sub
