VERSION 5.00
Begin VB.Form PictureForm
   Caption         =   "pixkit"
   ClientHeight    =   4800
   ClientWidth     =   6400
   OLEDropMode     =   1
   ScaleMode       =   3
End
Attribute VB_Name = "PictureForm"
' Shows the picture that a custom resource of the program holds, and one dropped onto the form.
' Needs a reference to "pixkit imaging component 3.0".
Option Explicit

Private Declare Function BitBlt Lib "gdi32" (ByVal hdcDest As Long, ByVal x As Long, ByVal y As Long, _
    ByVal cx As Long, ByVal cy As Long, ByVal hdcSrc As Long, ByVal xSrc As Long, ByVal ySrc As Long, _
    ByVal rop As Long) As Long

Private sheet As pixkit.cPixSheet

Private Sub Form_Load()
    Set sheet = New pixkit.cPixSheet
    sheet.ManageOwnDC = True
    sheet.LoadPicture_Resource 101, "PICTURES", VB.Global
End Sub

Private Sub Form_Paint()
    BitBlt Me.hDC, 0, 0, sheet.Width, sheet.Height, sheet.LoadDIBinDC(True), 0, 0, vbSrcCopy
    sheet.LoadDIBinDC False
End Sub

Private Sub Form_OLEDragDrop(Data As DataObject, Effect As Long, Button As Integer, Shift As Integer, X As Single, Y As Single)
    Dim loaded As pixkit.cPixSheet
    Set loaded = New pixkit.cPixSheet
    If loaded.LoadPicture_File(Data.Files(1)) Then
        loaded.BlendToColor BlendColor:=vbYellow, BlendOpacity:=10
        sheet.SwapDIBs loaded
        Me.Refresh
    End If
End Sub
