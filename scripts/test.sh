#!/bin/bash
# Builds the project and runs all its tests: natively at each level of the kernels and under sanitizers, and the same
# sources as a Windows program under a 32-bit Wine. Installs what it needs (scripts/setup.sh, scripts/wine.sh).
#
#   test.sh            everything
#   test.sh --native   only the native tests, with the compiler and libraries that are there
#
# Logs and results go to build/test-logs. The last line is "N passed, N failed" (and ", N skipped"); a build that fails,
# a check that finds something and a program that ends without its results count as one failure each.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1

native_only=
case ${1:-} in
'') ;;
--native) native_only=yes ;;
*)
    sed -n '2,6p' "$0"
    exit 2
    ;;
esac

logs=build/test-logs
rm -rf "$logs" && mkdir -p "$logs" || exit 1
. scripts/compiler_cache.sh

passed=0 failed=0 skipped=0 failures=()
total() {
    local status=$? line
    if [ "$failed" = 0 ] && [ -z "${complete:-}" ]; then
        failures+=("the script ended early")
        failed=1
    fi
    if [ ${#failures[@]} -gt 0 ]; then
        echo
        printf 'failed: %s\n' "${failures[@]}"
    fi
    line="$passed passed, $failed failed"
    [ "$skipped" = 0 ] || line+=", $skipped skipped"
    echo "$line"
    [ "$failed" = 0 ] || status=1
    exit "$status"
}
trap total EXIT

fail() {
    failed=$((failed + 1))
    failures+=("$1")
}

# Runs a command whose success is expected; on failure shows the end of its log.
step() {
    local name=$1 log start=$SECONDS
    shift
    log=$logs/${name//[^A-Za-z0-9]/-}.log
    printf '%-58s' "$name"
    if "$@" >"$log" 2>&1 </dev/null; then
        echo "ok  $((SECONDS - start)) s"
    else
        echo "FAILED  $((SECONDS - start)) s"
        tail -n 40 "$log"
        return 1
    fi
}

build() { step "$1" build_preset "$2" || { fail "$1"; return 1; }; }
build_preset() { cmake --preset "$1" && cmake --build --preset "$1"; }
check() { if step "$@"; then passed=$((passed + 1)); else fail "$1"; fi; }

count() {
    local lines
    lines=$(grep -c "$1" "$2" 2>/dev/null)
    echo "${lines:-0}"
}

# Runs a GoogleTest program (with the command in front of it that starts it) and adds its results to the total.
tests() {
    local name=$1 json=$logs/${1//[^A-Za-z0-9]/-}.json succeeded=yes ran bad skips
    shift
    step "$name" timeout 600 "$@" "--gtest_output=json:$json" --gtest_brief=1 || succeeded=
    ran=$(count '"result": "COMPLETED"' "$json")
    bad=$(count '"failures": \[' "$json")
    skips=$(count '"result": "SKIPPED"' "$json")
    # Without results, or with a failure that no test admits to, the program itself is what failed.
    if [ -z "$succeeded" ] && [ "$bad" = 0 ]; then bad=1 ran=$((ran + 1)); fi
    if [ -n "$succeeded" ] && [ "$ran" = 0 ]; then bad=1 ran=1; fi
    passed=$((passed + ran - bad)) failed=$((failed + bad)) skipped=$((skipped + skips))
    [ "$bad" = 0 ] || failures+=("$name: $bad")
}

# Runs a test script whose last line is its own "N passed, N failed".
script_tests() {
    local name=$1 log=$logs/${1//[^A-Za-z0-9]/-}.log ran=0 bad=0 words
    shift
    step "$name" timeout 1200 "$@" || bad=1
    read -ra words < <(tail -n 1 "$log")
    if [ "${words[*]:1:1} ${words[*]:3:1}" = "passed, failed" ]; then
        ran=${words[0]} bad=${words[2]}
    fi
    passed=$((passed + ran)) failed=$((failed + bad))
    [ "$bad" = 0 ] || failures+=("$name: $bad")
}

# Another project finds the installed library, and the example of the README is what it compiles.
package() {
    local folder=$PWD/build/test-package
    rm -rf "$folder"
    cmake --install build/release --prefix "$folder/prefix" &&
        cmake -G Ninja -S tests/package -B "$folder/build" -DCMAKE_PREFIX_PATH="$folder/prefix" &&
        cmake --build "$folder/build" &&
        (cd "$folder" && ./build/example)
}

readme_example() { diff <(awk '/^```cpp/ { inside = 1; next } /^```/ { inside = 0 } inside' README.md) samples/example.cpp; }

# The command as a Windows program makes the same bytes as the native one.
same_pixels() {
    local folder=$PWD/build/test-same-pixels picture
    local -a convert=(convert --grayscale ntscpal --blend '#0000ff:33' --mirror x)
    rm -rf "$folder"
    mkdir -p "$folder"/{native,windows}
    for picture in samples/pictures/*.png; do
        set -- "$(basename "$picture" .png).bmp"
        build/release/src/cli/pixkit "${convert[@]}" "$picture" "$folder/native/$1" &&
            scripts/wine.sh run build/win32/src/cli/pixkit.exe "${convert[@]}" "$picture" "$folder/windows/$1" || return 1
    done
    diff -r "$folder/native" "$folder/windows"
}

# The program is built where the libraries are that it compares with.
comparisons() {
    local name="$1: comparisons with other libraries" program=build/$2/tests/pixkit-oracle-tests
    if [ -x "$program" ]; then
        tests "$name" "$program"
    elif [ -n "$native_only" ]; then
        echo "$name: skipped, scripts/setup.sh native installs what they need"
        skipped=$((skipped + 1))
    else
        fail "$name: not built"
    fi
}

native() {
    local level
    build "native: build" release || return
    for level in scalar sse2 avx2; do
        tests "native: tests with $level kernels" env PIXKIT_CPU=$level build/release/tests/pixkit-tests
    done
    comparisons native release
    script_tests "native: the command" tests/cli/command_test.sh build/release/src/cli/pixkit
    check "native: install, and use as a package" package
    check "native: the README's example is the compiled one" readme_example
}

sanitized() {
    build "sanitizers: build" asan || return
    # Refusing what cannot be had is the library's own affair, so the sanitizer must let allocations fail.
    export ASAN_OPTIONS=allocator_may_return_null=1 UBSAN_OPTIONS=print_stacktrace=1
    tests "sanitizers: tests" build/asan/tests/pixkit-tests
    comparisons sanitizers asan
}

windows() {
    build "windows 64: build" win64
    build "windows 32: build" win32 || return
    step "windows 32: Wine" scripts/wine.sh setup || { fail "windows 32: Wine"; return; }
    tests "windows 32: tests" scripts/wine.sh run build/win32/tests/pixkit-tests.exe
    script_tests "windows 32: the command" tests/cli/command_test.sh scripts/wine.sh run build/win32/src/cli/pixkit.exe
    check "windows 32: the command makes the native one's bytes" same_pixels
    script_tests "windows 32 and 64: the component and its clients" scripts/test-com.sh
    scripts/wine.sh stop
}

if [ -n "$native_only" ]; then
    native
else
    step "set-up: packages" scripts/setup.sh || fail "set-up: packages"
    native
    step "checks: layout and clang-tidy" scripts/lint.sh build/release || fail "checks: layout and clang-tidy"
    sanitized
    windows
fi
complete=yes
