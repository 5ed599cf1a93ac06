VERSION 5.00
Begin VB.Form PictureForm
   Caption         =   "pixkit"
   ClientHeight    =   4800
   ClientWidth     =   6400
   OLEDropMode     =   1
   ScaleMode       =   3
   Begin VB.Image Preview
      Height          =   64
      Left            =   352
      Stretch         =   -1  'True
      Top             =   8
      Width           =   64
   End
End
Attribute VB_Name = "PictureForm"
' Shows the picture that a custom resource of the program holds, and one dropped onto the form, small in an Image control too.
' Needs a reference to "pixkit imaging component 3.0".
Option Explicit

Private Declare Function SetWindowRgn Lib "user32" (ByVal hWnd As Long, ByVal hRgn As Long, ByVal bRedraw As Long) As Long

Private sheet As pixkit.cPixSheet

Private Sub Form_Load()
    Set sheet = New pixkit.cPixSheet
    sheet.ManageOwnDC = True
    sheet.LoadPicture_Resource 101, "PICTURES", VB.Global
End Sub

Private Sub Form_Paint()
    Dim newWidth As Long, newHeight As Long
    sheet.ScaleImage Me.ScaleWidth - 20, Me.ScaleHeight - 20, newWidth, newHeight
    sheet.Render Me.hDC, 10, 10, newWidth, newHeight
End Sub

' A double click gives the window the picture's shape. The window owns the region from then on.
Private Sub Form_DblClick()
    SetWindowRgn Me.hWnd, sheet.CreateRegion(regionEnclosed, OpaquenessTolerance:=128), True
End Sub

Private Sub Form_OLEDragDrop(Data As DataObject, Effect As Long, Button As Integer, Shift As Integer, X As Single, Y As Single)
    Dim loaded As pixkit.cPixSheet
    Set loaded = New pixkit.cPixSheet
    If loaded.LoadPicture_File(Data.Files(1)) Then
        loaded.BlendToColor BlendColor:=vbYellow, BlendOpacity:=10
        sheet.SwapDIBs loaded
        Set Preview.Picture = sheet.CreateStdPicture()
        Me.Refresh
    End If
End Sub
