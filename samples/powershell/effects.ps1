# SPDX-License-Identifier: MIT
# Loads a picture, applies effects and saves it.
#
#   powershell -File effects.ps1 PICTURE RESULT.bmp
#
# Windows PowerShell of the word size for which the component is registered.
param([Parameter(Mandatory)] [string] $Picture, [Parameter(Mandatory)] [string] $Result)

$sheet = New-Object -ComObject pixkit.cPixSheet
if (-not $sheet.LoadPicture_File($Picture)) { throw "cannot load $Picture" }
"pixkit $($sheet.Version): $($sheet.Width) x $($sheet.Height)"

$gsclSimpleAvg = 2
if (-not $sheet.MakeGrayScale($gsclSimpleAvg)) { throw 'MakeGrayScale' }
if (-not $sheet.MirrorImage($true, $false)) { throw 'MirrorImage' }

# Parameters that give something back are passed by reference.
$alpha = 0
$color = $sheet.GetPixel(0, 0, [ref] $alpha)
'pixel 0, 0: colour {0:x6}, alpha {1}' -f $color, $alpha

[byte[]] $file = @()
if ($sheet.SaveToStream_Bitmap([ref] $file, $false, 0xFFFFFF)) { "$($file.Length) bytes as a BMP file" }

if (-not $sheet.SaveToFile_Bitmap($Result, $false, 0xFFFFFF, $false)) { throw "cannot save $Result" }
[void] [Runtime.InteropServices.Marshal]::ReleaseComObject($sheet)
