#!/bin/bash
# SPDX-License-Identifier: MIT
# Installs what the project's commands need on Debian 12; does nothing, quickly, when all of it is there. On systems
# without dpkg it looks for the programs and libraries themselves, and names those that are missing.
#
#   setup.sh [demo|native|native32|arm64|text|windows|clients|packages|release|checks|browser|bench|fuzz...]   without arguments: everything that scripts/test.sh needs
#
#   demo      compiler, CMake, Ninja and the command's argument parser
#   native    demo and text, and what the native tests need
#   native32  for native programs of 32 bits: their C++ library, and zlib, which tests borrow
#   arm64     for programs of 64-bit ARM Linux: their compiler, and QEMU, which runs them. Debian has this compiler in
#             place of native32's, and the other way round: each takes the place of the other
#   text      the libraries that draw text natively
#   windows   the compilers for 32- and 64-bit Windows, a 64-bit Wine (the 32-bit one is scripts/wine.sh's affair), and
#             an X server without a screen for the test of the viewer
#   clients   for scripts/clients_test.sh: Free Pascal with its sources, npm
#   packages  what scripts/package.sh needs beside windows and text
#   release   windows, text and packages, and what scripts/release_test.sh needs
#   checks    clang-format, clang-tidy, cppcheck, doxygen and reuse
#   browser   what the test of pages looks at them with
#   bench     demo, and the libraries that scripts/bench.sh compares with
#   fuzz      demo, clang and what the fuzz targets are compared with
set -euo pipefail

say() { echo "setup: $*" >&2; }

packages_of() {
    local text="pkg-config libfreetype-dev libfontconfig-dev libfribidi-dev libharfbuzz-dev libunibreak-dev"
    local build="g++ cmake ninja-build ccache libcli11-dev zlib1g libturbojpeg0"
    case $1 in
    demo) echo "$build" ;;
    text) echo "$text" ;;
    native) echo "$build $text fonts-wine googletest parallel rsync zsh fish libpng-dev libjpeg62-turbo-dev libgif-dev giflib-tools libjpeg-turbo-progs libstb-dev zlib1g-dev imagemagick icoutils netpbm pngcheck python3" ;;
    native32) echo "$build g++-multilib lib32z1 googletest" ;;
    arm64) echo "$build g++-aarch64-linux-gnu qemu-user googletest python3" ;;
    windows) echo "$build g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix mingw-w64-tools wine64 fonts-wine xvfb imagemagick python3" ;;
    clients) echo "fp-compiler fp-units-rtl fpc-source npm" ;;
    packages) echo "git nsis file xz-utils dpkg-dev python3" ;;
    release) echo "$text $(packages_of windows) $(packages_of packages) unzip lintian faketime debootstrap" ;;
    checks) echo "clang-format clang-tidy cppcheck doxygen reuse" ;;
    browser) echo "chromium chromium-driver python3" ;;
    bench) echo "$build libbenchmark-dev libpng-dev libjpeg62-turbo-dev libgif-dev libimagequant-dev libspng-dev libstb-dev zlib1g-dev libdeflate-dev libisal-dev libpixman-1-dev libcairo2-dev libyuv-dev libopencv-imgproc-dev libvips-dev libvips-tools pkg-config imagemagick valgrind python3" ;;
    fuzz) echo "$build clang zlib1g-dev libpng-dev libjpeg62-turbo-dev libgif-dev" ;;
    *)
        sed -n '3,22p' "$0" >&2
        exit 2
        ;;
    esac
}

[ $# -gt 0 ] || set -- native native32 windows packages checks
wanted=()
for subset in "$@"; do
    packages=$(packages_of "$subset")
    read -ra list <<<"$packages"
    wanted+=("${list[@]}")
done

# What of a package's is looked for where nothing knows packages: a command, a module of pkg-config, a header, a library
# that is loaded at run time, a file.
part_of() {
    case $1 in
    ninja-build) echo command ninja ;;
    giflib-tools) echo command giftext ;;
    libjpeg-turbo-progs) echo command djpeg ;;
    imagemagick) echo command convert ;;
    icoutils) echo command icotool ;;
    netpbm) echo command pngtopam ;;
    nsis) echo command makensis ;;
    xz-utils) echo command xz ;;
    wine64) echo file /usr/lib/wine/wine64 ;;
    xvfb) echo command Xvfb ;;
    fp-compiler | fp-units-rtl) echo command fpc ;; # which elsewhere come together
    libopencv-imgproc-dev) echo file /usr/include/opencv4/opencv2/imgproc.hpp ;;
    fpc-source) echo file /usr/share/fpcsrc ;;
    chromium-driver) echo command chromedriver ;;
    dpkg-dev) echo command dpkg-shlibdeps ;;
    g++-mingw-w64-*-posix) echo command "$(cut -d- -f4 <<<"${1/x86-64/x86_64}")-w64-mingw32-g++" ;;
    mingw-w64-tools) echo command x86_64-w64-mingw32-widl ;;
    g++-aarch64-linux-gnu) echo command aarch64-linux-gnu-g++ ;;
    qemu-user) echo command qemu-aarch64 ;;
    g++-multilib) echo file /usr/include/gnu/stubs-32.h ;;
    lib32z1) echo file /usr/lib32/libz.so.1 ;;
    googletest) echo module gtest ;;
    fonts-wine) echo file /usr/share/wine/fonts/tahoma.ttf ;;
    libcli11-dev) echo header CLI/CLI.hpp ;;
    libstb-dev) echo header stb/stb_image.h ;;
    libgif-dev) echo header gif_lib.h ;;
    libyuv-dev) echo header libyuv.h ;;
    zlib1g) echo library libz.so.1 ;;
    libturbojpeg0) echo library libturbojpeg.so.0 ;;
    libfreetype-dev) echo module freetype2 ;;
    libjpeg62-turbo-dev) echo module libjpeg ;;
    zlib1g-dev) echo module zlib ;;
    libpixman-1-dev) echo module pixman-1 ;;
    libvips-tools) echo command vips ;;
    libunibreak-dev | libdeflate-dev | libisal-dev | libpng-dev) echo module "${1%-dev}" ;;
    lib*-dev) basename "${1#lib}" -dev | sed 's/^/module /; s/2$//' ;;
    *) echo command "$1" ;;
    esac
}
is_there() {
    case $1 in
    command) command -v "$2" || command -v "$2-posix" ;;
    module) pkg-config --exists "$2" ;;
    header) "${CXX:-c++}" -E -x c++ - <<<"#include <$2>" ;;
    library) find /lib /lib64 /usr/lib /usr/lib64 /usr/local/lib -name "$2*" | grep . ;;
    file) [ -e "$2" ] ;;
    esac >/dev/null 2>&1
}

missing=()
for package in $(printf '%s\n' "${wanted[@]}" | sort -u); do # the list may hold names twice
    if command -v dpkg-query >/dev/null; then
        status=$(dpkg-query -W -f '${db:Status-Abbrev}' "$package" 2>/dev/null || true)
        [ "${status%% *}" = ii ] || missing+=("$package")
    else
        [ "$package" != ccache ] || continue # builds are slower without it, and else as they are
        read -r kind name <<<"$(part_of "$package")"
        is_there "$kind" "$name" || missing+=("$kind $name,")
    fi
done
[ ${#missing[@]} -gt 0 ] || exit 0
if ! command -v dpkg-query >/dev/null; then
    names="${missing[*]}"
    say "not found: ${names%,}. What has them is called differently on each system"
    exit 1
fi

as_root=()
if [ "$(id -u)" != 0 ]; then
    command -v sudo >/dev/null || { say "not root, no sudo; please install: ${missing[*]}"; exit 1; }
    as_root=(sudo)
fi
command -v apt-get >/dev/null || { say "no apt-get here; please install the equivalents of: ${missing[*]}"; exit 1; }

say "installing ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -y -o Acquire::Retries=3 -o DPkg::Lock::Timeout=300)
# An index that could not be fetched need not be one that is needed: only a failing installation is a failure.
"${apt[@]}" update >"$log" 2>&1 </dev/null || say "warning: apt-get update did not succeed completely"
removed=$("${apt[@]}" -s install --no-install-recommends "${missing[@]}" 2>/dev/null </dev/null | awk '/^Remv/ { print $2 }' | xargs)
[ -z "$removed" ] || say "in place of $removed"
if ! "${apt[@]}" install --no-install-recommends "${missing[@]}" >>"$log" 2>&1 </dev/null; then
    tail -n 30 "$log" >&2
    say "the installation failed"
    exit 1
fi
