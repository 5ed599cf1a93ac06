// SPDX-License-Identifier: MIT
// Loads a picture, applies effects and saves it.
//
//   cscript effects.js PICTURE RESULT.bmp
//
// JScript passes its variables by value: what a member gives back in a parameter does not reach a script in it.
var sheet = new ActiveXObject("pixkit.cPixSheet");

function check(success, what) {
    if (!success) {
        WScript.Echo("failed: " + what);
        WScript.Quit(1);
    }
}

check(sheet.LoadPicture_File(WScript.Arguments(0)), "cannot load " + WScript.Arguments(0));
WScript.Echo("pixkit " + sheet.Version + ": " + sheet.Width + " x " + sheet.Height);
check(sheet.MakeImageInverse(), "MakeImageInverse");
check(sheet.MakeLighterDarker(-12.5), "MakeLighterDarker");
check(sheet.SetPixel(0, 0, 0x0000ff) !== 0, "SetPixel");
check(sheet.GetPixel(0, 0) === 0x0000ff, "GetPixel");
check(sheet.SaveToFile_Bitmap(WScript.Arguments(1), false, 0xffffff, false), "cannot save " + WScript.Arguments(1));
WScript.Echo("saved " + WScript.Arguments(1));
