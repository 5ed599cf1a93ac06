// SPDX-License-Identifier: MIT
// The forms in which JScript has dropped files: arguments, arrays, objects with Files.
//
//   cscript dropped.js PICTURE...
var sheet = new ActiveXObject("pixkit.cPixSheet");
var first = WScript.Arguments(0);

function Files() {
    this.Count = 2;
    this.Item = function (i) { return i == 0 ? first : i == 1 ? "no such file" : null; };
}

var drops = [WScript.Arguments, first, [first], ["no such file", first], { Files: [first] }, { Files: new Files() }];
for (var i = 0; i < drops.length; ++i) {
    if (!sheet.LoadPicture_DropedFiles(drops[i])) {
        WScript.Echo("failed: drop " + i + ": " + sheet.LastErrorText);
        WScript.Quit(1);
    }
}
WScript.Echo("loaded " + drops.length + " drops, all as expected");
