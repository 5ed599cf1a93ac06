#!/bin/bash
# SPDX-License-Identifier: MIT
# Makes a release as scripts/package.sh does, and takes it as its users will.
#
#   release_test.sh [PART...]    without one: all
#
#   contents      makes the packages, in build/release-test; each has what it should, and nothing else
#   windows       archive and installer under Wine, for both word sizes: tests/package/windows_test.sh
#   debian        the packages installed in a fresh Debian, which does the examples of the README, and purged again
#   source        the source archive built without git and network
#   reproducible  made again from a clone in another folder, on another day, without any cache: the same bytes
#
# Needs scripts/setup.sh release, and root for the part debian. The fresh Debian is kept, packed, in build/fresh-debian.tar.
# Parts but the first look at what that one made. The last line is "N passed, N failed".
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
case ${1:-} in -*) sed -n '3,15p' "$0"; exit 2 ;; esac
[ $# -gt 0 ] || set -- contents windows debian source reproducible
made=$PWD/build/release-test
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
passed=0 failed=0

check() {
    local start=$SECONDS
    printf '%-40s' "$1"
    if "${@:2}" >"$work/log" 2>&1 </dev/null; then
        passed=$((passed + 1))
        echo "ok  $((SECONDS - start)) s"
    else
        failed=$((failed + 1))
        echo "FAILED  $((SECONDS - start)) s"
        tail -n 40 "$work/log"
    fi
}

# A root that apt has fetched once, with what the packages depend on in its cache.
fresh_root() {
    local root=$1 kept=build/fresh-debian.tar suite mirror
    if [ ! -e "$kept" ]; then
        suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
        mirror=$(apt-get indextargets --format '$(CODENAME) $(COMPONENT) $(REPO_URI)' 'Created-By: Packages' |
            awk -v suite="$suite" '$1 == suite && $2 == "main" { print $3; exit }')
        [ -n "$mirror" ] || { echo "apt has no list of $suite's packages, and so no mirror: apt-get update"; return 1; }
        debootstrap --variant=minbase "$suite" "$work/first" "$mirror" &&
            tar -C "$work/first" --one-file-system -cf "$kept.new" . && mv "$kept.new" "$kept" && rm -rf "$work/first" || return 1
    fi
    mkdir "$root" && tar -C "$root" -xf "$kept" && cp /etc/resolv.conf "$root/etc/resolv.conf"
    cp /etc/apt/apt.conf.d/*prox* "$root/etc/apt/apt.conf.d/" 2>/dev/null || true
}

debian() {
    local root=$work/root
    fresh_root "$root" || return 1
    mkdir "$root/packages" && cp "$made"/*.deb samples/pictures/l*.png samples/example.cpp "$root/packages" || return 1
    cat >"$root/packages/user.sh" <<'USER'
set -ex
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8
cd /packages
apt-get update
files() { find / -xdev -not -path '/proc/*' -not -path '/sys/*' -not -path '/dev/*' -not -path '/packages/*' -not -path '/var/*' \
    -not -path '/etc/ld.so.cache' | sort; }
# What the packages need stays when they go; theirs must not.
depends() { dpkg-deb -f pixkit_*.deb Recommends | tr -d ' ' | tr , '\n'; dpkg-deb -f libpixkit3_*.deb Depends | sed 's/([^)]*)//g' | tr -d ' ' | tr , '\n'; }
apt-get install -y --no-install-recommends $(depends)
files >before
apt-get install -y --no-install-recommends ./pixkit_*.deb ./libpixkit3_*.deb
pixkit --version | grep -q "$(dpkg-deb -f pixkit_*.deb Version | cut -d- -f1)"
# The README's lines.
pixkit convert l*.png results/ --to jpg --quality 85 --resize 1024x768 --fit down
pixkit convert landscape.png marked.jpg --text '© Me:size=5%:color=#ffffff:at=right-10,bottom-10:opacity=50%'
pixkit compose -o card.png --canvas '640x480:#204060' landscape.png@20,20 lantern.png@right-10,bottom-10:60%
pixkit info marked.jpg card.png results/*.jpg
test -s /usr/share/bash-completion/completions/pixkit
apt-get purge -y pixkit libpixkit3
files >after
diff before after
# Programs that are built with it run without the development files.
apt-get install -y --no-install-recommends ./libpixkit-dev_*.deb ./libpixkit3_*.deb g++ pkg-config
g++ -std=c++20 example.cpp -o example $(pkg-config --cflags --libs pixkit)
apt-get purge -y libpixkit-dev
./example
apt-get purge -y libpixkit3
! ls /usr/share/doc | grep pixkit
! ls -d /usr/include/pixkit /usr/lib/*/*pixkit* 2>/dev/null
USER
    chroot "$root" /bin/bash /packages/user.sh
}

source_build() {
    tar -C "$work" -xf "$made"/pixkit-*.tar.xz && cd "$work"/pixkit-* || return 1
    # A namespace of its own has no network.
    unshare -n env -u CMAKE_CXX_COMPILER_LAUNCHER bash -ec '
        if git rev-parse 2>/dev/null; then exit 1; fi
        cmake --preset install -B built
        cmake --build built
        built/src/cli/pixkit info samples/pictures/landscape.png'
}

reproducible() {
    local commit
    commit=$(git rev-parse HEAD) && git clone -q "$(git rev-parse --git-common-dir)" "$work/another/folder" || return 1
    cd "$work/another/folder" && git checkout -q --detach "$commit" || return 1
    CCACHE_DISABLE=1 faketime '+40 days' scripts/package.sh --output "$work/again" || return 1
    diff -r "$made" "$work/again"
}

for part in "$@"; do
    case $part in
    contents)
        check "packages are made" scripts/package.sh --output "$made"
        check "packages hold what they should" tests/package/contents_test.py "$made"
        ;;
    windows)
        check "32-bit Windows" tests/package/windows_test.sh "$made" 32
        check "64-bit Windows" tests/package/windows_test.sh "$made" 64
        ;;
    debian) check "a fresh Debian" debian ;;
    source) check "the source archive builds" source_build ;;
    reproducible) check "made again, the same bytes" reproducible ;;
    *) echo "no such part: $part"; exit 2 ;;
    esac
done
echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
