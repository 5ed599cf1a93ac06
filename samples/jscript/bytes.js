// SPDX-License-Identifier: MIT
// Pixels and files as bytes. What members store in an argument does not reach JScript; those used here give it back.
//
//   cscript bytes.js PICTURE
var streamPNG = 10, streamJPG = 129, imgPNG = 10;
var sheet = new ActiveXObject("pixkit.cPixSheet");
var other = new ActiveXObject("pixkit.cPixSheet");

function check(success, what) {
    if (!success) {
        WScript.Echo("failed: " + what + ": " + sheet.LastErrorText);
        WScript.Quit(1);
    }
}

check(sheet.LoadPicture_File(WScript.Arguments(0)), "LoadPicture_File");

// A file in memory. Scripts cannot look into an array of bytes, but hand it on: to another object, to ADODB.Stream.
var file = sheet.StreamOf(streamPNG);
check(other.LoadPicture_Stream(file) && other.ImageType === imgPNG, "LoadPicture_Stream");
check(other.Width === sheet.Width && other.Height === sheet.Height, "the size");
check(other.LoadPicture_Stream(sheet.StreamOf(streamJPG, 85)), "StreamOf with a quality");

// asVariants, the last argument, is for scripts: arrays that VBArray can look into. One dimension, top row first.
var bits = new VBArray(sheet.DIBbits(false, true, true, false, false, 0, 0, 0, 0, false, true)).toArray();
check(bits.length === 4 * sheet.Width * sheet.Height, "as many bytes");
var mask = new VBArray(sheet.AlphaMask(false, false, false, 0, 0, 0, 0, true)).toArray();
var x = sheet.Width >> 1, y = sheet.Height >> 1, place = y * sheet.Width + x;
check(mask[place] === sheet.PixelAlpha(x, y) && mask[place] === bits[4 * place + 3], "alpha by three roads");
var color = bits[4 * place + 2] | bits[4 * place + 1] << 8 | bits[4 * place] << 16;
check(color === sheet.GetPixel(x, y), "a colour by two roads");

// And pixels from a script: Items of a dictionary are an array that members take. Blue, green, red, alpha.
var bytes = new ActiveXObject("Scripting.Dictionary");
for (var i = 0; i < 16; ++i) bytes.Add(i, [255, 0, 128, 255][i % 4]);
check(other.InitializeDIB(2, 2) && other.SetDIBbits(bytes.Items()), "SetDIBbits");
check(other.GetPixel(1, 1) === 0xff0080, "the colour that was set");

// Outside there is nothing.
check(sheet.PixelAlpha(-1, 0) === -1 && typeof sheet.DIBbits(true, true, true, true, true, sheet.Width) === "undefined", "outside");
WScript.Echo("all bytes as expected");
