#!/bin/bash
# SPDX-License-Identifier: MIT
# Takes what scripts/package.sh made for Windows as its users do, under Wine: without registration, registered for the user
# by the archive's scripts, installed and removed by the installer. What counts is whether a client gets an object.
#
#   windows_test.sh PACKAGES 32|64
#
# The last line is "N passed, N failed".
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 2
packages=$(realpath "$1") bits=$2 wine=$PWD/scripts/wine.sh
case $bits in
32) run=run arch=i686 folder=x86 processor=x86 ;;
64) run=run64 arch=x86_64 folder=x64 processor=amd64 ;;
*) exit 2 ;;
esac
work=$(mktemp -d)
export PIXKIT_WINE_PREFIX=$work/wine
# Wine would put shortcuts into the menus of this machine, too.
export WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe='
trap 'scripts/wine.sh stop${bits#32} 2>/dev/null; rm -rf "$work"' EXIT
passed=0 failed=0

check() {
    local name=$1
    shift
    # Into a file: a pipe would stay open for as long as what a first program starts in the background.
    if "$@" >"$work/output" 2>&1; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        printf 'FAILED: %s, %s bits\n%s\n' "$name" "$bits" "$(cat "$work/output")"
    fi
}
windows() { scripts/wine.sh $run "$@" </dev/null; }
within_time() {
    for _ in {1..120}; do
        ! "$@" || return 0
        sleep 0.5
    done
    return 1
}
gives() {
    local wanted=$1 code=0
    shift
    "$@" || code=$?
    [ $code = "$wanted" ] || { echo "exit code $code"; return 1; }
}
# Names that a batch file may trip over.
home="$work/Pröbe ☃ (1) & mehr"
mkdir "$home" && unzip -q "$packages"/pixkit-*-windows.zip -d "$home" || exit 1
tree=$(echo "$home"/pixkit-*)
client=$work/client.exe
"$arch-w64-mingw32-g++-posix" -std=c++20 -Wall -Wextra -municode -static -isystem "$tree/include" tests/package/client.cpp -o "$client" \
    -lole32 -loleaut32 -luuid -ladvapi32 || exit 1

saves() { rm -f "$work/made.png"; windows "${2:-$client}" create "$1/made.png" && [ "$(head -c 4 "$work/made.png" | tail -c 3)" = PNG ]; }
creates() { saves "$work" "$@"; }
fails() { ! creates "$@"; }
# No value of the registry names the component or its files.
nothing_registered() {
    local root
    for root in HKCU HKLM; do
        ! windows reg query "$root\\Software" /s | grep -ai 'pixkit' || return 1
    done
}
files_of_drive() { find "$PIXKIT_WINE_PREFIX/drive_c" -not -path '*/Temp/*' | sort; }

is_small() { [ "$(identify -format '%m %wx%h' "$1")" = "$2 64x80" ]; }
command_works() {
    rm -f "$work/small.jpg"
    windows "$1/pixkit.exe" convert samples/pictures/lantern.png "$work/small.jpg" --resize 64x80 && is_small "$work/small.jpg" JPEG
}
# The README's first script; it says something only where it fails.
readme_script() {
    mkdir "$work/script" && cp samples/pictures/lantern.png "$work/script/photo.png" || return 1
    awk '/^```vb/ { inside = 1; next } /^```/ && inside { exit } inside' README.md | sed 's/320/80/g' >"$work/script/small.vbs"
    ! (cd "$work/script" && "$wine" $run cscript //nologo small.vbs </dev/null) | grep . && is_small "$work/script/small.png" PNG
}

# What keeps Wine running from here on, so that nothing else starts it.
windows "$client" hold kernel32.dll "$work/alive" >/dev/null 2>&1 &
within_time [ -e "$work/alive" ] || exit 1
check "nobody has registered it yet" fails

# Beside a program whose manifest names it. The component's own manifest says which version that is.
mkdir "$work/free" && cp "$client" "$tree/$folder"/pixkit.{dll,manifest} "$work/free"
sed -n '/^<?xml/,/^<\/assembly>/p' docs/windows.md | sed "s/\"x86\"/\"$processor\"/" >"$work/free/client.exe.manifest"
check "the command" command_works "$tree/$folder"
check "without registration" creates "$work/free/client.exe"
check "which leaves no trace" nothing_registered

# The samples of the archive, where the compiler of resources gets along with the folder's name.
builds_samples() {
    mkdir "$work/plain" && cp -r "$tree"/{include,samples,$folder} "$work/plain" &&
        cmake -G Ninja -S "$work/plain/samples" -B "$work/samples" -DPIXKIT_WINDOWS_ARCH=$arch -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/mingw-w64.cmake" &&
        cmake --build "$work/samples" &&
        windows "$work/samples/c-client/c-client.exe" "$tree/samples/pictures/lantern.png" "$work/c.png" "$work/samples/viewer/pixkit.manifest" &&
        [ -s "$work/c.png" ]
}
check "its samples are built" builds_samples
# The library is in no package for Windows, but others link what `cmake --install` gives.
links_library() {
    local flags
    cmake --install build/package-win$bits --component development --prefix "$work/library" &&
        flags=$(PKG_CONFIG_LIBDIR=$work/library/lib/pkgconfig pkg-config --cflags --libs pixkit) &&
        read -ra flags <<<"$flags" &&
        "$arch-w64-mingw32-g++-posix" -std=c++20 -static samples/example.cpp -o "$work/example.exe" "${flags[@]}" &&
        (cd "$work" && "$wine" $run example.exe </dev/null) && [ -s "$work/example.bmp" ]
}
check "a program is linked with the library" links_library

script() { (cd "$tree" && "$wine" $run cmd /c "$1" /s </dev/null); }
windows "$client" join || exit 1
check "install-user.cmd" gives 0 script install-user.cmd
check "which registers for the user" creates
check "the README's script" readme_script
check "install-user.cmd again" gives 0 script install-user.cmd
check "uninstall-user.cmd" gives 0 script uninstall-user.cmd
check "which takes it away" fails
check "uninstall-user.cmd where there is nothing" gives 0 script uninstall-user.cmd
mv "$tree/x64" "$tree/elsewhere"
check "install-user.cmd with half of the files" gives 2 script install-user.cmd
windows "$client" part
check "nothing is left in the registry" nothing_registered

# The installer that is released is a 32-bit program and installs both word sizes on 64-bit Windows. Wine here runs either
# word size alone, so that for 64 bits its script is made into a 64-bit program.
installer=$(echo "$packages"/pixkit-*-setup.exe)
[ "$bits" = 32 ] || installer=build/packages/setup-for-tests.exe
[ -e "$installer" ] || exit 1
before=$(files_of_drive)
appears() { within_time [ -e "$1" ]; }
# The uninstaller goes on in a copy of itself, so that it can delete itself.
removed() { within_time [ ! -e "$1" ] || { find "$1"; return 1; }; }
for whom in user everybody; do
    options=(/S) root=HKCU target="users/$(id -un)/AppData/Local/Programs/pixkit"
    if [ $whom = everybody ]; then options+=(/ALLUSERS) root=HKLM target="Program Files/pixkit"; else windows "$client" join; fi
    target=$PIXKIT_WINE_PREFIX/drive_c/$target
    check "installer, for $whom" gives 0 windows "$installer" "${options[@]}"
    check "which puts files there" cmp "$tree/README.html" "$target/README.html"
    check "and registers" creates
    check "and the command works" command_works "$target/$folder"
    mapfile -t shortcuts < <(find "$PIXKIT_WINE_PREFIX/drive_c" -name 'pixkit reference.lnk')
    check "and the reference is in the Start menu" grep -aq 'pixkit.reference.index.html' <(tr -d '\0' <"${shortcuts[0]}")
    check "and is among the installed programs" windows reg query "$root\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\pixkit" /v DisplayVersion
    check "installer again, for $whom" gives 0 windows "$installer" "${options[@]}"
    windows "$client" hold "$target/$folder/pixkit.dll" "$work/held" &
    check "a DLL that is in use" appears "$work/held"
    check "is not replaced" gives 5 windows "$installer" "${options[@]}"
    # Its last option is a folder without quotes, blanks or not; with it, it does not go on in a copy of itself.
    read -ra place <<<"_?=$(scripts/wine.sh $run winepath -w "$target" | tr -d '\r')"
    check "is not removed either" gives 5 windows "$target/uninstall.exe" /S "${place[@]}"
    rm -f "$work/held"
    wait $!
    check "and stays registered" creates
    echo mine >"$target/mine.txt"
    check "uninstaller, for $whom" gives 0 windows "$target/uninstall.exe" /S
    check "which removes its own files" removed "$target/uninstall.exe"
    check "and no others" grep -q mine "$target/mine.txt"
    check "and the class" fails
    rm "$target/mine.txt"
    rmdir "$target"
    rmdir "$(dirname "$target")" 2>/dev/null
    [ $whom = everybody ] || windows "$client" part
    check "nothing is left in the registry" nothing_registered
    check "nor on the drive" diff <(echo "$before") <(files_of_drive)
done
mkdir -p "$PIXKIT_WINE_PREFIX/drive_c/taken/x86/pixkit.tlb"
check "where a file cannot be written" gives 2 windows "$installer" /S '/D=C:\taken'
check "a folder with blanks" gives 0 windows "$installer" /S '/D=C:\My' 'folder\p' x
check "gets the files" [ -s "$PIXKIT_WINE_PREFIX/drive_c/My folder/p x/x64/pixkit.dll" ]
first="$PIXKIT_WINE_PREFIX/drive_c/My folder/p x"
touch "$first/reference/old.html" # of an earlier version
check "another folder" gives 0 windows "$installer" /S '/D=C:\Other'
check "takes the place of the first" removed "$first/uninstall.exe"
check "and a third the first's" gives 0 windows "$installer" /S '/D=C:\My' 'folder\p' x
check "of which nothing stays" removed "$PIXKIT_WINE_PREFIX/drive_c/Other"
rm -r "$first/reference/old.html"
check "and loses them" gives 0 windows "$PIXKIT_WINE_PREFIX/drive_c/My folder/p x/uninstall.exe" /S
check "all of them, with the folder" removed "$PIXKIT_WINE_PREFIX/drive_c/My folder/p x"
rm "$work/alive"
wait
echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
