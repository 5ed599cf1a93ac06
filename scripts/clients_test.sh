#!/bin/bash
# SPDX-License-Identifier: MIT
# The samples whose compilers and interpreters have to be fetched or built first: Free Pascal for Windows, made of Debian's
# packages in a minute, and Node.js for Windows, which the npm registry has. Both stay in build/. Everything else is run by
# tests/com/clients.sh.
#
#   clients_test.sh [BUILD-FOLDER]    of the preset win32, with pixkit.dll (build/win32)
#
# Needs npm and the packages fp-compiler, fp-units-rtl and fpc-source. The last line is "N passed, N failed".
set -uo pipefail
cd "$(dirname "$0")/.." || exit 2
dll=$(realpath "${1:-build/win32}/src/com/pixkit.dll") || exit 2
picture=$PWD/samples/pictures/lantern.png
node=$PWD/build/node
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
. tests/com/check.sh
windows() { scripts/wine.sh run "$@"; }

# The unit is made of the type library in the DLL, as a Delphi programmer would make it.
pascal_unit() {
    scripts/free_pascal.sh samples/pascal/importtl.pas "$folder" &&
        (cd "$folder" && "$OLDPWD/scripts/wine.sh" run importtl.exe "$dll") | grep pixkit_3_0_TLB.pas
}
pascal() {
    scripts/free_pascal.sh samples/pascal/client.pas "$folder" "$folder" &&
        windows "$folder/client.exe" "$picture" "$folder/pascal.png" >"$folder/pascal.txt"
    cat "$folder/pascal.txt"
    grep -q 'early bound ok, late bound ok' "$folder/pascal.txt" && [ -s "$folder/pascal.png" ]
}

# Of the versions that the samples name; npm checks what it fetches.
fetch_node() {
    [ -e "$node/bin/node.exe" ] && return 0
    rm -rf "$node" && mkdir -p "$node" && cd "$node" || return 1
    npm pack --silent node-win-x86@22 koffi@3.3.4 @koromix/koffi-win32-ia32@3.3.4 || return 1
    mkdir -p bin node_modules/koffi node_modules/@koromix/koffi-win32-ia32 &&
        tar -xzf koffi-3*.tgz --strip-components 1 -C node_modules/koffi &&
        tar -xzf koromix-*.tgz --strip-components 1 -C node_modules/@koromix/koffi-win32-ia32 &&
        tar -xzf node-win-x86-*.tgz --strip-components 2 -C bin package/bin/node.exe
}
# It wants a newer Windows than Wine says it is, and a file for its output.
node() {
    windows reg add 'HKCU\Software\Wine\AppDefaults\node.exe' /v Version /t REG_SZ /d win10 /f &&
        cp samples/node/*.js "$node/" &&
        windows "$node/bin/node.exe" "$node/thumbnail.js" "$picture" "$folder/node.png" >"$folder/node.txt" 2>&1
    cat "$folder/node.txt"
    grep -q '^saved ' "$folder/node.txt" && [ -s "$folder/node.png" ]
}

check "regsvr32" windows regsvr32 /s "$dll"
check "Free Pascal: the unit" pascal_unit
check "Free Pascal: the client" pascal
check "Node.js: fetched" fetch_node
check "Node.js: the sample" node
check "regsvr32 /u" windows regsvr32 /s /u "$dll"
echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
