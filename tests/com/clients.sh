#!/bin/bash
# SPDX-License-Identifier: MIT
# Registers the built component, runs the samples as its clients, and looks at what registration leaves behind.
#
#   clients.sh BUILD-FOLDER RUNNER...    RUNNER: what runs a Windows program, such as scripts/wine.sh run
#
# The last line is "N passed, N failed".
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 2
build=$(realpath "$1") runner=("$(realpath "$2")" "${@:3}")
dll=$build/src/com/pixkit.dll pictures=samples/pictures
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
. tests/com/check.sh

windows() { "${runner[@]}" "$@"; }

# A client must say that it succeeded: cscript ends with 0 after some errors.
client() {
    local expected=$1 output
    shift
    output=$(windows "$@" 2>&1) || { echo "$output"; return 1; }
    grep "$expected" <<<"$output" || { echo "$output"; return 1; }
}
script() { client "$1" cscript //nologo "${@:2}"; }
is_bitmap() { [ "$(head -c 2 "$1")" = BM ] && [ "$(stat -c %s "$1")" -gt 1000 ]; }
is_card() { [ "$(identify -format '%m %wx%h' "$1")" = "JPEG 240x240" ]; }

# Only pixels of the lower right corner have changed, and some have.
watermarked() {
    local changed
    changed=$(convert "$1" "$2" -compose difference -composite -alpha off -threshold 0 -format '%@' info:) || return 1
    echo "changed: $changed"
    [[ $changed =~ ^([0-9]+)x([0-9]+)\+([0-9]+)\+([0-9]+)$ ]] && ((BASH_REMATCH[1] > 90 && BASH_REMATCH[1] < 200 &&
        BASH_REMATCH[3] > 192 && BASH_REMATCH[4] > 192))
}

# The examples of the reference, in a folder with what they load.
reference_examples() {
    cp $pictures/lantern.png "$folder/picture.png" && cp tests/data/pictures/ico/alpha-complex-straight.ico "$folder/icon.ico" &&
        python3 scripts/reference.py --vbscript "$folder/examples.vbs" &&
        python3 scripts/reference.py --jscript "$folder/examples.js" || return 1
    (cd "$folder" && script '^all .* examples ran' examples.vbs && script '^all .* examples ran' examples.js)
}
# Those of how the component is called: a pixel of the picture is the same from everywhere.
language_example() { (cd "$folder" && client '^red 242, alpha 252' "$build/tests/com/example-$1.exe"); }

# Whatever registration may have left: every value names the component or its path.
nothing_left() {
    local root
    for root in HKLM HKCU; do
        ! windows reg query "$root\\Software\\Classes" /s | grep -ai pixkit || return 1
    done
}

check "regsvr32" windows regsvr32 /s "$dll"
check "C++ client" client 'early bound ok, late bound ok' \
    "$build/samples/cpp-client/cpp-client.exe" $pictures/landscape.png "$folder/client.bmp"
check "C client" client '^saved, registered' "$build/samples/c-client/c-client.exe" $pictures/lantern.png "$folder/c.png"
check "C++ wrapper" client '^saved' "$build/samples/cpp-wrapper/card.exe" $pictures/lantern.png "$folder/card.jpg"
check "what it saved" is_card "$folder/card.jpg"
check "effects.vbs" script '^saved .* from the copy' samples/vbscript/effects.vbs $pictures/landscape.png "$folder/vbs.bmp"
check "what effects.vbs saved" is_bitmap "$folder/vbs.bmp"
check "drawing.vbs" script '^saved ' samples/vbscript/drawing.vbs $pictures/lantern.png "$folder/drawing.bmp"
check "what drawing.vbs saved" is_bitmap "$folder/drawing.bmp"
check "saving.vbs" script '^saved .* in five formats' samples/vbscript/saving.vbs $pictures/lantern.png "$folder/saving"
check "pixels.vbs" script 'all pixels as expected' samples/vbscript/pixels.vbs
check "clipboard.vbs" script 'every pixel as it was copied' samples/vbscript/clipboard.vbs $pictures/lantern.png
for picture in landscape lantern; do
    check "pictures.vbs, $picture" script 'loaded back .* as expected' samples/vbscript/pictures.vbs $pictures/$picture.png
done
check "watermark.vbs" script '^wrote .* of text at ' samples/vbscript/watermark.vbs $pictures/landscape.png \
    "$folder/watermark.png" 'Harbour, 2026'
check "what watermark.vbs wrote" watermarked $pictures/landscape.png "$folder/watermark.png"
cp $pictures/landscape.png $pictures/lantern.png "$folder"
check "dropped.vbs" script '^2 dropped, all as expected' samples/vbscript/dropped.vbs "$folder"/l*.png
check "what dropped.vbs saved" [ -s "$folder/lantern.png.dropped.png" ]
check "dropped.js" script 'all as expected' samples/jscript/dropped.js "$folder/lantern.png"
check "effects.js" script '^saved ' samples/jscript/effects.js $pictures/landscape.png "$folder/js.bmp"
check "bytes.js" script '^all bytes as expected' samples/jscript/bytes.js $pictures/lantern.png
check "examples of the reference" reference_examples
for language in c-interface cpp-interface cpp-wrapper; do
    check "example of the reference, $language" language_example $language
done
check "regsvr32 /u" windows regsvr32 /s /u "$dll"
check "nothing left in the registry" nothing_left
check "C client, unregistered" client '^saved, without registration' "$build/samples/c-client/c-client.exe" \
    $pictures/lantern.png "$folder/c-unregistered.png" "$(dirname "$dll")/pixkit.manifest"
check "what it saved" cmp "$folder/c.png" "$folder/c-unregistered.png"
echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
