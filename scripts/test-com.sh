#!/bin/bash
# Builds the COM component for 32-bit and 64-bit Windows, registers each in a fresh Wine of its word size, and runs its
# tests and the samples as its clients.
#
#   test-com.sh [32] [64]    without arguments: both
#
# Needs what scripts/setup.sh installs; 64-bit programs run with Debian's wine64. Logs go to build/test-logs-com. The last line is "N passed, N failed".
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1

logs=build/test-logs-com
rm -rf "$logs" && mkdir -p "$logs" || exit 1
passed=0 failed=0 failures=()
scratch=$(mktemp -d)

# The tests' own zlib1.dll counts only when it is not replaced by Wine's.
export WINEDLLOVERRIDES="mscoree,mshtml=;zlib1=n,b" WINEDEBUG=-all
WINE64=/usr/lib/wine/wine64

fail() {
    failed=$((failed + 1))
    failures+=("$1")
}

# A fresh prefix for each word size: no window driver, so no X server, and no dialog to hang on after a crash.
wine() {
    local size=$1
    shift
    if [ "$size" = 32 ]; then
        PIXKIT_WINE_PREFIX=$scratch/prefix32 scripts/wine.sh run "$@"
    else
        WINEPREFIX=$scratch/prefix64 WINEARCH=win64 WINESERVER=/usr/lib/wine/wineserver64 "$WINE64" "$@"
    fi
}

prepare() {
    [ "$1" = 32 ] && { wine 32 wineboot -u; return; } # wine.sh makes the prefix
    [ -x "$WINE64" ] || { echo "wine64 is not installed: scripts/setup.sh windows"; return 1; }
    wine 64 wineboot -i &&
        wine 64 reg add 'HKCU\Software\Wine\Drivers' /v Graphics /t REG_SZ /d null /f &&
        wine 64 reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f
}

cleanup() {
    PIXKIT_WINE_PREFIX=$scratch/prefix32 scripts/wine.sh stop
    WINEPREFIX=$scratch/prefix64 /usr/lib/wine/wineserver64 -k -w 2>>"$logs/cleanup.log"
    rm -rf "$scratch"
}

# Runs a command; on failure shows the end of its log.
step() {
    local name=$1 log
    shift
    log=$logs/${name//[^A-Za-z0-9]/-}.log
    printf '%-58s' "$name"
    if timeout 900 bash -c '"$@"' step "$@" >"$log" 2>&1 </dev/null; then
        echo ok
    else
        echo FAILED
        tail -n 30 "$log"
        return 1
    fi
}

check() { if step "$@"; then passed=$((passed + 1)); else fail "$1"; fi; }

# A client must say so itself too: cscript ends with 0 after some errors.
client() {
    local size=$1 expected=$2 output
    shift 2
    output=$(wine "$size" "$@" 2>&1) || { echo "$output"; return 1; }
    echo "$output"
    grep -q "$expected" <<<"$output"
}

# Whatever registration may have left: every value names the component or its path.
leftovers() {
    local root found
    for root in HKLM HKCU; do
        found=$(wine "$1" reg query "$root\\Software\\Classes" /s | grep -ai pixkit)
        [ -z "$found" ] || { echo "$found"; return 1; }
    done
}

build() {
    cmake --preset "win$1" &&
        cmake --build --preset "win$1" --target pixkit-com pixkit-com-tests-beside cpp-client pixkit-tests
}

system_imports_only() {
    local size=$1 tool=i686-w64-mingw32-objdump
    [ "$size" = 64 ] && tool=x86_64-w64-mingw32-objdump
    "$tool" -p "build/win$size/src/com/pixkit.dll" | sed -n 's/.*DLL Name: //p' |
        grep -viE '^(advapi32|gdi32|kernel32|msimg32|msvcrt|ole32|oleaut32|shell32|shlwapi|user32)\.dll$'
    [ "${PIPESTATUS[2]}" = 1 ]
}

# Runs a GoogleTest program of a word size.
gtest() {
    local size=$1 name="$2 ($1 bits)" program=build/win$1/tests/$3 log=$logs/$3-$1.log ran
    log=${log/com\//}
    printf '%-58s' "$name"
    timeout 900 bash -c 'wine "$@"' gtest "$size" "$program" >"$log" 2>&1 </dev/null
    local status=$? bad
    ran=$(grep -c '^\[       OK \]' "$log")
    # A test that could not run here is not a passed one.
    bad=$(grep -cE '^\[  (FAILED|SKIPPED) \] [A-Za-z]+\.[A-Za-z0-9]+ \(' "$log")
    passed=$((passed + ran)) failed=$((failed + bad))
    if [ "$status" = 0 ] && [ "$bad" = 0 ] && [ "$ran" -gt 0 ]; then
        echo "ok  $ran"
    else
        echo FAILED
        grep -B 12 -E '^\[  (FAILED|SKIPPED) \]' "$log" | head -n 60
        [ "$bad" != 0 ] || fail "$name"
        failures+=("$name")
    fi
}

run_size() {
    local size=$1 dll="build/win$1/src/com/pixkit.dll" pictures=samples/pictures
    step "build ($size bits)" build "$size" || { fail "build ($size bits)"; return; }
    step "Wine ($size bits)" prepare "$size" || { fail "Wine ($size bits)"; return; }
    check "imports of system libraries only ($size bits)" system_imports_only "$size"
    gtest "$size" "tests of the component" com/pixkit-com-tests.exe
    # The 32-bit ones are scripts/test.sh's affair.
    [ "$size" = 32 ] || gtest "$size" "tests of the library" pixkit-tests.exe

    check "regsvr32 ($size bits)" wine "$size" regsvr32 /s "$dll"
    check "C++ client ($size bits)" client "$size" 'early bound ok, late bound ok' \
        "build/win$size/samples/cpp-client/cpp-client.exe" $pictures/landscape.png "$scratch/client$size.bmp"
    check "effects.vbs ($size bits)" client "$size" '^saved .* from the copy' \
        cscript //nologo samples/vbscript/effects.vbs $pictures/landscape.png "$scratch/vbs$size.bmp"
    check "what effects.vbs saved ($size bits)" saved_bitmap "$scratch/vbs$size.bmp"
    check "drawing.vbs ($size bits)" client "$size" '^saved ' \
        cscript //nologo samples/vbscript/drawing.vbs $pictures/lantern.png "$scratch/drawing$size.bmp"
    check "what drawing.vbs saved ($size bits)" saved_bitmap "$scratch/drawing$size.bmp"
    check "saving.vbs ($size bits)" client "$size" '^saved .* in five formats' \
        cscript //nologo samples/vbscript/saving.vbs $pictures/lantern.png "$scratch/saved$size"
    check "pixels.vbs ($size bits)" client "$size" 'all pixels as expected' \
        cscript //nologo samples/vbscript/pixels.vbs
    check "effects.js ($size bits)" client "$size" '^saved ' \
        cscript //nologo samples/jscript/effects.js $pictures/landscape.png "$scratch/js$size.bmp"
    check "regsvr32 /u ($size bits)" wine "$size" regsvr32 /s /u "$dll"
    check "nothing left in the registry ($size bits)" leftovers "$size"
    check "regsvr32 /n /i:user ($size bits)" wine "$size" regsvr32 /s /n /i:user "$dll"
    check "known to the user ($size bits)" wine "$size" reg query 'HKCU\Software\Classes\pixkit.cPixSheet\CLSID'
    check "regsvr32 /u /n /i:user ($size bits)" wine "$size" regsvr32 /s /u /n /i:user "$dll"
    check "nothing left of the user's either ($size bits)" leftovers "$size"
}

saved_bitmap() { [ "$(head -c 2 "$1")" = BM ] && [ "$(stat -c %s "$1")" -gt 1000 ]; }

export -f wine client leftovers build prepare system_imports_only saved_bitmap
export scratch WINE64

[ $# -gt 0 ] || set -- 32 64
for size; do
    run_size "$size"
done
cleanup
if [ ${#failures[@]} -gt 0 ]; then
    echo
    printf 'failed: %s\n' "${failures[@]}"
fi
echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
