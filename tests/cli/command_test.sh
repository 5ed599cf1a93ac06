#!/bin/bash
# Runs the built command as a person would and looks at what comes out.
#
#   command_test.sh COMMAND [ARGUMENT...]   such as build/release/src/cli/pixkit, or scripts/wine.sh run .../pixkit.exe
#
# Runs from the project's folder, where the sample pictures are. The last line is "N passed, N failed".
set -uo pipefail
[ $# -gt 0 ] || { sed -n '2,6p' "$0"; exit 2; }
command=("$@")
cd "$(dirname "$0")/../.." || exit 2

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
out=$folder/out.txt err=$folder/err.txt
pictures=samples/pictures
passed=0 failed=0

pixkit() {
    "${command[@]}" "$@" >"$out.raw" 2>"$err.raw" </dev/null
    local status=$?
    tr -d '\r' <"$out.raw" >"$out"
    tr -d '\r' <"$err.raw" >"$err"
    return $status
}

# What a check is called, and the test(1)-like command that must succeed.
check() {
    local name=$1
    shift
    if "$@"; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        echo "FAILED: $name"
        sed 's/^/    out: /' "$out"
        sed 's/^/    err: /' "$err"
    fi
}

exits() {
    local expected=$1 status
    shift
    pixkit "$@"
    status=$?
    [ "$status" = "$expected" ] || { echo "exit code $status instead of $expected"; return 1; }
}

# Bytes of a file in hexadecimal: name, offset, count.
bytes() { od -An -v -tx1 -j "$2" -N "$3" "$1" | tr -d ' \n'; }
same() { [ "$1" = "$2" ] || { echo "'$1' instead of '$2'"; return 1; }; }
not() { ! "$@"; }

version=$(awk '/define PIXKIT_VERSION_/ { text = text (text == "" ? "" : ".") $3 } END { print text }' src/shared/version.h)
check "--version succeeds" exits 0 --version
check "--version is the component's" grep -qx "pixkit $version" "$out"
check "no command is a usage error" exits 2
check "no command shows the help" grep -q "convert" "$err"
for sub in info convert gallery; do
    check "$sub --help succeeds" exits 0 $sub --help
    check "$sub --help has examples" grep -q "Example" "$out"
done

check "info of all samples" exits 0 info $pictures/*.png
check "info has a line for each" same "$(grep -c "$pictures/" "$out")" "$(printf '%s\n' $pictures/*.png | wc -l)"
check "info knows partial alpha" grep -Eq '240 x 300 +partial \(2\) +PNG \(10\) .*lantern.png' "$out"
check "info knows opaque pictures" grep -Eq '384 x 256 +opaque \(0\) .*landscape.png' "$out"
check "info of a missing file" exits 1 info no-such-file.png $pictures/lantern.png
check "the missing file is named" grep -q 'no-such-file.png: no such file' "$err"
check "the other file is still shown" grep -q 'lantern.png' "$out"
check "info --json" exits 0 info --json $pictures/lantern.png $pictures/sprite-4-bit.png
if command -v python3 >/dev/null; then
    check "the JSON is valid" python3 -c '
import json, sys
first, second = json.load(open(sys.argv[1]))
assert (first["width"], first["height"], first["alpha"]["value"]) == (240, 300, 2) and second["type"]["name"] == "imgPNG"
' "$out"
fi

# The lowest left pixel of this picture is empty, and the first in the file.
rings=$pictures/rings-colour-key.png
check "fill" exits 0 convert $rings "$folder/a.bmp" --fill '#102030'
check "fill paints empty pixels" same "$(bytes "$folder/a.bmp" 54 3)" 302010
check "background" exits 0 convert $rings "$folder/b.bmp" --background '#405060'
check "background is flattened onto" same "$(bytes "$folder/b.bmp" 54 3)" 605040
check "a later option sees the earlier one's result" \
    exits 0 convert $rings "$folder/c.bmp" --fill '#102030' --invert --transparent '#efdfcf' --background '#ff0000'
check "all three were applied in order" same "$(bytes "$folder/c.bmp" 54 3)" 0000ff
check "the same options in another order" \
    exits 0 convert $rings "$folder/d.bmp" --transparent '#efdfcf' --invert --fill '#102030' --background '#ff0000'
check "another order makes another picture" same "$(bytes "$folder/d.bmp" 54 3)" 302010
check "keep-alpha" exits 0 convert $rings "$folder/e.bmp" --keep-alpha
check "keep-alpha saves 32 bits" same "$(bytes "$folder/e.bmp" 28 2)" 2000
check "keep-alpha saves alpha" same "$(bytes "$folder/e.bmp" 54 4)" 00000000
check "a saved file is read" exits 0 convert "$folder/e.bmp" "$folder/f.bmp" --keep-alpha
check "and is the same when saved again" cmp "$folder/e.bmp" "$folder/f.bmp"
check "info of a saved file" exits 0 info "$folder/e.bmp"
check "info knows premultiplied alpha" grep -q 'premult. BMP (7)' "$out"

check "an existing file stays when nobody can be asked" exits 1 convert $rings "$folder/a.bmp" --invert
check "it is said why" grep -q 'exists already' "$err"
check "its content is the old one" same "$(bytes "$folder/a.bmp" 54 3)" 302010
check "--overwrite replaces it" exits 0 convert $rings "$folder/a.bmp" --overwrite --fill '#ffffff'
check "its content is the new one" same "$(bytes "$folder/a.bmp" 54 3)" ffffff
if [ ${#command[@]} = 1 ] && command -v script >/dev/null; then
    at_terminal() { echo "$1" | script -qec "'${command[0]}' convert $rings '$folder/a.bmp' --fill '#000000'" "$out" >/dev/null; }
    check "No at a terminal is a failure" not at_terminal n
    check "No keeps the file" same "$(bytes "$folder/a.bmp" 54 3)" ffffff
    check "Yes at a terminal succeeds" at_terminal y
    check "Yes replaces the file" same "$(bytes "$folder/a.bmp" 54 3)" 000000
fi

check "a TGA file" exits 0 convert $rings "$folder/rings.tga" --tga-rle
check "it is run-length coded, with alpha" same "$(bytes "$folder/rings.tga" 2 1) $(bytes "$folder/rings.tga" 16 2)" "0a 2008"
check "a TGA file is read" exits 0 convert "$folder/rings.tga" "$folder/rings.bmp" --keep-alpha
check "it is the same picture" cmp "$folder/rings.bmp" "$folder/e.bmp"

check "an icon file" exits 0 convert $rings "$folder/rings.ico" --icon 16,32:8
check "it has two images" same "$(bytes "$folder/rings.ico" 2 4)" 01000200
check "an unknown extension" exits 2 convert $rings "$folder/result.abc"
check "it is named" grep -q "'.abc' is not known" "$err"
check "nothing was written" not ls "$folder"/result.* 2>/dev/null
{ printf '\377\330\377\340'; head -c 100 /dev/zero; } >"$folder/photo.png"
check "a JPEG under a wrong name" exits 1 convert "$folder/photo.png" $rings "$folder/results"
check "its format is named" grep -q 'photo.png: is a JPEG file that is damaged' "$err"
check "the other picture is done" test -s "$folder/results/rings-colour-key.png"
check "a wrong option" exits 2 convert $rings "$folder/result.bmp" --lighten much

# Only natively: Windows has no such pipes, and timeout needs a program of its own.
if [ ${#command[@]} = 1 ] && mkfifo "$folder/pipe.png" 2>/dev/null; then
    natively=("${command[@]}")
    command=(timeout 10 "${natively[@]}")
    check "info of a pipe does not wait for a writer" exits 1 info "$folder/pipe.png"
    check "the pipe is named" grep -q 'pipe.png: is not a regular file' "$err"
    check "convert of a pipe does not wait either" exits 1 convert "$folder/pipe.png" "$folder/pipe.bmp"
    command=("${natively[@]}")
fi

name="größe & 東京 100%"
cp $rings "$folder/$name.png"
check "a name beyond ASCII" exits 0 convert "$folder/$name.png" "$folder/$name.bmp"
check "its result has that name" test -s "$folder/$name.bmp"
check "its name is shown" grep -q "$name.bmp" "$out"

check "gallery" exits 0 gallery $rings "$folder/$name.png" $pictures/landscape.png -o "$folder/gallery"
check "it says where to look" grep -q 'gallery/index.html' "$out"
check "it shows how far it is" grep -q '\[2/3\]' "$err"
check "its page is there" grep -q 'rings-colour-key/00-original.png' "$folder/gallery/index.html"
check "a gallery with a failure" exits 1 gallery $rings "$folder/photo.png" -o "$folder/gallery"
check "the failure is named" grep -q 'photo.png: is a JPEG file' "$err"

echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
