// Uses the component from Delphi and Free Pascal: early bound, through the unit that importtl (Free Pascal) or "Import
// type library" (Delphi) makes of pixkit.dll, then late bound, by names.
//
//   client PICTURE RESULT.png
{$ifdef fpc}{$mode delphi}{$H+}{$endif}
{$apptype console}
program client;

uses
  {$ifdef fpc}Windows, ActiveX, ComObj, Variants, SysUtils,{$else}Winapi.Windows, Winapi.ActiveX, System.Win.ComObj,
  System.Variants, System.SysUtils,{$endif} pixkit_3_0_TLB;

procedure Check(isDone: Boolean; const what: WideString);
begin
  if not isDone then raise Exception.Create('failed: ' + what);
end;

procedure EarlyBound(const picture, result: WideString);
var
  sheet, copy: _cPixSheet;
  bits: PSafeArray;
  alpha, upper: Integer;
  isPreMultiplied: WordBool;
begin
  OleCheck(CoCreateInstance(CLASS_cPixSheet, nil, CLSCTX_INPROC_SERVER, IID__cPixSheet, sheet));
  Check(sheet.LoadPicture_File(picture, 32, 32, False, 32), sheet.LastErrorText);
  writeln(sheet.Version, ': ', sheet.Width, ' x ', sheet.Height);

  // What comes back by reference needs variables of exactly the declared type.
  alpha := 0;
  isPreMultiplied := False;
  writeln('colour ', IntToHex(sheet.GetPixel(0, 0, alpha, isPreMultiplied), 6), ', alpha ', alpha);
  Check(alpha = sheet.PixelAlpha(0, 0), 'PixelAlpha');

  bits := nil;
  Check(sheet.GetDIBbits(bits, False, True, True, True, True, 0, 0, 0, 0, True), 'GetDIBbits');
  SafeArrayGetUBound(bits, 1, upper);
  SafeArrayDestroy(bits);
  Check(upper + 1 = 4 * sheet.Width * sheet.Height, 'as many bytes');

  copy := nil; // is created
  sheet.CopyImageTo(copy, sheet.Width div 2, sheet.Height div 2, False);
  Check((copy <> nil) and copy.MakeGrayScale(gsclCCIR709) and copy.SaveToFile_PNG(result, False), 'the gray copy');
end;

procedure LateBound(const picture: WideString);
var
  sheet, other, bytes, bits: OleVariant;
begin
  sheet := CreateOleObject('pixkit.cPixSheet');
  other := CreateOleObject('pixkit.cPixSheet');
  Check(sheet.LoadPicture_File(picture, SaveFormat := True), 'LoadPicture_File');
  Check(sheet.Resample(newWidth := 64, newHeight := 48), 'Resample');

  // A file as an array of bytes, by value, and a picture of it again.
  bytes := sheet.StreamOf(streamTGA, True);
  Check(VarArrayDimCount(bytes) = 1, 'StreamOf');
  Check(other.LoadPicture_Stream(bytes), 'LoadPicture_Stream');
  Check((other.Width = 64) and (other.Height = 48), 'the size');

  bits := sheet.DIBbits;
  Check((VarArrayDimCount(bits) = 2) and (VarArrayHighBound(bits, 1) = 255) and (VarArrayHighBound(bits, 2) = 47), 'DIBbits');
  Check(other.InitializeDIB(64, 48), 'InitializeDIB');
  Check(other.SetDIBbits(bits), 'SetDIBbits');
  Check(other.GetPixel(30, 20) = sheet.GetPixel(30, 20), 'the pixels');
  Check(VarIsEmpty(sheet.AlphaMask(x := 64)), 'nothing outside');
end;

begin
  try
    CoInitialize(nil);
    EarlyBound(ParamStr(1), ParamStr(2));
    LateBound(ParamStr(1));
    writeln('early bound ok, late bound ok');
  except
    on problem: Exception do begin
      writeln(problem.ClassName, ' ', problem.Message);
      Halt(1);
    end;
  end;
end.
// SPDX-License-Identifier: MIT
