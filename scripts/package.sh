#!/bin/bash
# SPDX-License-Identifier: MIT
# Makes all files of a release: the same sources give the same bytes, whenever and wherever that is done.
#
#   package.sh [--built] [--output FOLDER] [PART...]    into out/packages; parts: windows, deb, source; without one: all
#
#   windows   the archive, the installer, and packages for NuGet, Chocolatey and winget
#   deb       the command, the library and its development files for Debian
#   source    the source archive, of the commit that is checked out
#
# --built takes what scripts/test.sh has built, as it is, so that packages can be looked at in seconds; for users it is not.
#
# Beside them lie SHA256SUMS and a list of what is inside (SPDX). Needs scripts/setup.sh release. The times of all files are
# that of the commit, or SOURCE_DATE_EPOCH. PIXKIT_RELEASE_URL: the folder on the web that the manifests name;
# PIXKIT_MAINTAINER: "Name <address>" for Debian's packages. Without them both are examples that nobody can reach.
# docs/releasing.md says what to do with the result.
set -euo pipefail
caller=$PWD
cd "$(dirname "$0")/.."
cd "$(pwd -P)" # as git names it

output=$PWD/out/packages parts=() built= xz_level=-9e
while [ $# -gt 0 ]; do
    case $1 in
    --output) output=$2; case $2 in /*) ;; *) output=$caller/$2 ;; esac; shift ;;
    --built) built=yes xz_level=-1 ;; # what is only looked at is packed quickly
    windows | deb | source) parts+=("$1") ;;
    *) sed -n '3,15p' "$0" >&2; exit 2 ;;
    esac
    shift
done
[ ${#parts[@]} -gt 0 ] || parts=(windows deb source)

say() { echo "package: $*" >&2; }
is_clone() { [ "$(git rev-parse --show-toplevel 2>/dev/null)" = "$PWD" ]; }

version=$(sed -nE 's/.*PIXKIT_VERSION_(MAJOR|MINOR|REVISION) ([0-9]+).*/\2/p' src/shared/version.h | paste -sd.)
if [ -z "${SOURCE_DATE_EPOCH:-}" ]; then
    # A source archive's files have the time of the commit.
    if is_clone; then SOURCE_DATE_EPOCH=$(git log -1 --format=%ct); else SOURCE_DATE_EPOCH=$(stat -c %Y CMakeLists.txt); fi
fi
export SOURCE_DATE_EPOCH LC_ALL=C.UTF-8 TZ=UTC
umask 022
if [ -e .git ] && ! is_clone; then say "git does not take $PWD for a clone: whose is it?"; exit 1; fi
. scripts/compiler_cache.sh
if is_clone && [ -n "$(git status --porcelain)" ]; then say "warning: there are changes that are in no commit"; fi

# What is deleted has been made here.
if [ -e "$output" ] && [ -n "$(ls -A "$output")" ] && [ ! -e "$output/SHA256SUMS" ]; then
    say "$output holds something else than an earlier release; name an empty folder"
    exit 2
fi
rm -rf "$output" build/packages
mkdir -p "$output" build/packages
logs=build/packages/logs
mkdir -p "$logs"

# Runs a step that says much; shows its end when it fails.
quiet() {
    local name=$1
    shift
    say "$name"
    "$@" >"$logs/${name//[^A-Za-z0-9]/-}.log" 2>&1 </dev/null || { tail -n 30 "$logs/${name//[^A-Za-z0-9]/-}.log" >&2; say "$name failed"; exit 1; }
}
build() { cmake --preset "$@" && cmake --build --preset "$1"; }
# The folder of a build: the packages' own, or that of the tests.
folder_of() {
    [ -n "$built" ] || { echo "build/$1"; return; }
    case $1 in package) echo build/release-shared ;; *) echo "build/${1#package-}" ;; esac
}

# Only what git knows, where it is there: no editor's copies.
files_of() {
    if is_clone; then git ls-files -- "$1"; else find "$1" -type f; fi
}

# What is linked into the files for Windows wants its notices to go with it.
third_parties() {
    local package
    echo "Into the files for Windows are linked: of the compiler, libgcc, libstdc++ and libssp, whose licence has an exception for"
    echo "that (GPL 3 with the GCC Runtime Library Exception 3.1); mingw-w64's run-time library and winpthreads; into the command,"
    echo "CLI11; into the installer, NSIS. Their notices, as Debian has them:"
    for package in libcli11-dev mingw-w64-common nsis; do
        printf '\n\n--- %s\n\n' $package
        cat /usr/share/doc/$package/copyright
    done
}

# The tree that archive, installer and packages for Windows are made of.
windows_tree() {
    local tree=build/packages/windows bits folder file
    for bits in 32 64; do
        [ -n "$built" ] || quiet "build for $bits-bit Windows" build package-win$bits
        folder=$tree/$([ $bits = 32 ] && echo x86 || echo x64)
        for component in component command; do
            quiet "install for $bits-bit Windows, $component" cmake --install "$(folder_of package-win$bits)" --component $component \
                --prefix "$PWD/build/packages/win$bits"
        done
        mkdir -p "$folder"
        cp build/packages/win$bits/bin/pixkit.{dll,exe,manifest,tlb} "$folder"
    done
    mkdir -p $tree/include
    cp build/packages/win32/include/pixkit/com/*.h $tree/include
    # A native program has nothing to do with Windows.
    while read -r file; do
        mkdir -p "$tree/$(dirname "$file")"
        cp "$file" "$tree/$file"
    done < <(files_of samples | grep -v '^samples/example\.cpp$')
    quiet "reference" python3 scripts/reference.py $tree/reference
    cp LICENSE $tree/LICENSE.txt
    third_parties >$tree/THIRD-PARTY.txt
    python3 scripts/packaging/page.py docs/windows.md $tree/README.html
    python3 scripts/packaging/page.py docs/command.md $tree/command.html
    python3 scripts/packaging/page.py docs/cpp.md $tree/cpp.html
    cp packaging/windows/*.cmd $tree
    # Their editors take nothing else.
    sed -i 's/$/\r/' $tree/*.cmd $tree/*.txt $tree/samples/vba/*.bas $tree/samples/vb-style/*.frm
}

make_windows() {
    windows_tree
    quiet "Windows archive" python3 scripts/packaging/archive.py "$output/pixkit-$version-windows.zip" build/packages/windows \
        "pixkit-$version"
    make_installer x86-unicode "$output/pixkit-$version-setup.exe"
    # The same as a 64-bit program, which tests/package/windows_test.sh tries where no 32-bit programs run.
    [ -n "$built" ] || make_installer amd64-unicode "$PWD/build/packages/setup-for-tests.exe"
}

# An installer says nothing of the archive's scripts: it does itself what they are for.
make_installer() {
    local tree=build/packages/installed
    rm -rf $tree && cp -r build/packages/windows $tree && rm $tree/*.cmd
    python3 scripts/packaging/nsis_files.py $tree $tree.nsh
    quiet "installer, $1" makensis -V3 -DTARGET="$1" -DVERSION="$version" -DFOUR_PARTS="${version%.*}.0.${version##*.}" -DTREE="$PWD/$tree" \
        -DFILES="$PWD/$tree.nsh" -DOUTPUT="$2" ${built:+-X"SetCompressor /FINAL zlib"} packaging/windows/pixkit.nsi
}

make_deb() {
    [ -n "$built" ] || quiet "build for Debian" build package ${PIXKIT_MAINTAINER:+"-DPIXKIT_MAINTAINER=$PIXKIT_MAINTAINER"}
    quiet "packages for Debian" cpack --config "$(folder_of package)/CPackConfig.cmake" -B "$PWD/build/packages/deb"
    cp build/packages/deb/*.deb "$output"
}

# A clone's files as they were committed; without git, those that are there are the release's own.
make_source() {
    local prefix=pixkit-$version
    if is_clone; then
        git -c tar.umask=0022 archive --format=tar --prefix="$prefix/" HEAD >build/packages/source.tar
    else
        tar --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=root:0 --group=root:0 --mode=u=rwX,go=rX --format=ustar \
            --exclude=./.git --exclude=./build --exclude=./out --exclude='__pycache__' --transform="s|^\.|$prefix|" -cf build/packages/source.tar .
    fi
    xz $xz_level --threads=1 --stdout build/packages/source.tar >"$output/$prefix.tar.xz"
}

for part in "${parts[@]}"; do
    "make_$part"
done
tree=build/packages/windows
if [ -d $tree ]; then
    quiet "manifests and NuGet package" python3 scripts/packaging/manifests.py "$version" "$output" $tree
fi
quiet "list of contents" python3 scripts/packaging/sbom.py "$version" "$output" $tree
(cd "$output" && find . -type f -printf '%P\n' | sort | xargs sha256sum) >build/packages/sums
mv build/packages/sums "$output/SHA256SUMS"
say "done: $output"
