// Makes a Pascal unit of the type library in pixkit.dll; Delphi's "Import type library" does the same. Its name is
// printed.
//
//   importtl pixkit.dll
{$mode objfpc}{$H+}
{$apptype console}
program importtl;

uses
  Classes, SysUtils, TypeLib;

var
  dependencies, text: TStringList;
  name, package, registration: string;
begin
  dependencies := TStringList.Create;
  text := TStringList.Create;
  try
    text.Text := ImportTypelib(WideString(ParamStr(1)), name, dependencies, False, False, False, package, registration);
    text.SaveToFile(name + '.pas');
    writeln(name + '.pas');
  finally
    text.Free;
    dependencies.Free;
  end;
end.
// SPDX-License-Identifier: MIT
