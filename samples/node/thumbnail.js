// SPDX-License-Identifier: MIT
// Makes a thumbnail with a shadow of a picture, through bytes in and bytes out, as a server would.
//
//   npm install koffi
//   node thumbnail.js PICTURE RESULT.png
'use strict';
const fs = require('fs');
const { createObject } = require('./com');

const streamPNG = 10, resampleLanczos3 = 4;
const sheet = createObject('pixkit.cPixSheet'), card = createObject('pixkit.cPixSheet');

function check(success, what) {
    if (!success) throw new Error(`${what}: ${sheet.get('LastErrorText')}`);
}

const [picture, result] = process.argv.slice(2);
for (const one of [sheet, card]) {
    one.set('Unattended', true); // nobody is there to answer questions
    one.set('isGDIplusEnabled', false); // the same bytes on every system; Wine's GDI+ does not work on koffi's stack
}
sheet.set('MaxPixels', 50e6); // strangers' pictures
check(sheet.LoadPicture_Stream(fs.readFileSync(picture)), picture);

// What ScaleImage would store in arguments is worked out here: results come back by value alone.
const scale = Math.min(1, 96 / sheet.get('Width'), 96 / sheet.get('Height'));
check(sheet.Resample(Math.round(sheet.get('Width') * scale), Math.round(sheet.get('Height') * scale), resampleLanczos3), 'Resample');

check(card.InitializeDIB(sheet.get('Width') + 16, sheet.get('Height') + 16), 'InitializeDIB');
const shadow = sheet.CreateDropShadow(4, 0);
check(shadow !== null && shadow.Render(0, 6, 6, 0, 0, 0, 0, 0, 0, 60, true, false, card), 'the shadow');
check(sheet.Render(0, 8, 8, 0, 0, 0, 0, 0, 0, 100, true, false, card), 'Render');

const file = card.StreamOf(streamPNG);
check(file !== undefined, 'StreamOf');
fs.writeFileSync(result, file);
const bits = card.DIBbits(false, true, true, false, false);
const isSame = bits[4 * (20 * card.get('Width') + 20) + 3] === card.PixelAlpha(20, 20);
console.log(isSame ? `saved ${card.get('Width')} x ${card.get('Height')}, ${file.length} bytes` : 'failed: alpha by two roads');
process.exitCode = isSame ? 0 : 1;
