#!/bin/bash
# SPDX-License-Identifier: MIT
# A working Wine for the tests, for 32-bit and 64-bit programs: no X server, and where need be no root.
#
#   wine.sh run PROGRAM.exe [ARGUMENT...]    runs a 32-bit Windows program and exits with its code; sets up on first use
#   wine.sh run64 PROGRAM.exe [ARGUMENT...]  the same for a 64-bit one
#   wine.sh setup                            only sets up
#   wine.sh stop, stop64                     ends the Wine server of the prefix
#   wine.sh clean                            removes everything that setup put into the cache
#
# 64-bit programs run with Debian's package wine64, which scripts/setup.sh installs. For 32-bit ones setup tries two ways:
#   unpack  a private apt state downloads the i386 packages of the release's main section (so that security updates of
#           this machine cannot clash with them), which are unpacked, not installed, into the cache; patchelf points
#           the loader at the unpacked ld-linux. No root, no chroot, no mounts, the same Wine on every machine. About
#           140 MB to download, 1.3 GB on disk.
#   apt     as root: apt-get install wine32:i386. Refused when it would remove a package; undone when it fails.
# Settings: PIXKIT_WINE_MODE=apt|unpack forces one way; PIXKIT_WINE_PREFIX=FOLDER runs in a prefix of one's own, which is
# made when it is not there; PIXKIT_WINE_DISPLAY=:N shows the windows of programs on that X display, without a window
# manager, in a prefix for that alone (FOLDER-display); XDG_CACHE_HOME moves the cache (~/.cache/pixkit-wine).
set -u

CACHE=${XDG_CACHE_HOME:-${HOME:-/tmp}/.cache}/pixkit-wine
ROOT=$CACHE/root
LOG=$CACHE/setup.log
APT=(apt-get -y -o DPkg::Lock::Timeout=300)

say() { echo "wine: $*" >&2; }
quiet() { "$@" >>"$LOG" 2>&1 </dev/null; }

setup_apt() {
    [ -x /usr/lib/wine/wine ] && return 0
    [ "$(id -u)" = 0 ] || return 1
    export DEBIAN_FRONTEND=noninteractive
    quiet dpkg --add-architecture i386 || return 1
    quiet "${APT[@]}" update &&
        quiet "${APT[@]}" install --no-install-recommends --no-remove wine32:i386 wine fonts-wine &&
        [ -x /usr/lib/wine/wine ] && return 0
    # A machine that cannot hold i386 packages must not keep asking its mirrors for them. It keeps the architecture only
    # when some i386 package is installed.
    quiet dpkg --remove-architecture i386
    quiet "${APT[@]}" update
    return 1
}

# The apt configuration of the unpack mode: a state of its own, which knows of no installed package.
private_apt() {
    local apt=$1 suite mirror
    suite=$(. /etc/os-release && echo "${VERSION_CODENAME:-bookworm}")
    mirror=$(apt-get indextargets --format '$(CODENAME) $(COMPONENT) $(REPO_URI)' 'Created-By: Packages' 2>>"$LOG" |
        awk -v suite="$suite" '$1 == suite && $2 == "main" { print $3; exit }')
    [ -n "$mirror" ] || { say "apt has no list of $suite's packages, and so no mirror: apt-get update"; return 1; }
    mkdir -p "$apt"/{lists/partial,archives/partial,tools} && : >"$apt/status" || return 1
    echo "deb [arch=i386,amd64] $mirror $suite main" >"$apt/sources.list"
    cat >"$apt/conf" <<CONF
#clear APT::Update::Post-Invoke; #clear APT::Update::Post-Invoke-Success;
#clear DPkg::Post-Invoke; #clear DPkg::Pre-Install-Pkgs;
APT::Architecture "i386"; APT::Architectures { "i386"; "amd64"; };
APT::Install-Recommends "false"; APT::Sandbox::User ""; APT::Default-Release "";
Debug::NoLocking "1"; Acquire::Languages "none";
Acquire::IndexTargets::deb::DEP-11::DefaultEnabled "false";
Acquire::IndexTargets::deb::Contents-deb::DefaultEnabled "false";
Dir::State "$apt"; Dir::State::lists "$apt/lists"; Dir::State::status "$apt/status";
Dir::Cache "$apt"; Dir::Cache::archives "$apt/archives";
Dir::Etc::SourceList "$apt/sources.list"; Dir::Etc::SourceParts "/dev/null";
Dir::Etc::Preferences "/dev/null"; Dir::Etc::PreferencesParts "/dev/null";
CONF
}

setup_unpack() {
    local apt=$CACHE/apt package binary zlib builtin patchelf=patchelf
    rm -rf "$ROOT" "$apt" && mkdir -p "$ROOT" && private_apt "$apt" || return 1
    quiet apt-get -c "$apt/conf" update &&
        quiet apt-get -c "$apt/conf" -y --download-only install wine32 fonts-wine || return 1
    for package in "$apt"/archives/*.deb; do
        quiet dpkg-deb -x "$package" "$ROOT" || return 1
    done
    if ! command -v patchelf >>"$LOG"; then
        (cd "$apt/tools" &&
            quiet apt-get -c "$apt/conf" download patchelf:amd64 libstdc++6:amd64 libgcc-s1:amd64) || return 1
        for package in "$apt"/tools/*.deb; do
            quiet dpkg-deb -x "$package" "$apt/tools" || return 1
        done
        patchelf="env LD_LIBRARY_PATH=$apt/tools/lib/x86_64-linux-gnu:$apt/tools/usr/lib/x86_64-linux-gnu"
        patchelf+=" $apt/tools/usr/bin/patchelf"
    fi
    for binary in wine wineserver32; do
        # Unquoted on purpose: the fallback is a command with arguments.
        quiet $patchelf --set-interpreter "$ROOT/lib/i386-linux-gnu/ld-linux.so.2" "$ROOT/usr/lib/wine/$binary" ||
            return 1
    done
    # The packaged wineserver is a script with fixed paths.
    ln -sf wineserver32 "$ROOT/usr/lib/wine/wineserver" || return 1
    # What the package's installation script does: Wine's own DLLs import zlib1.dll, which must be stamped as built in.
    zlib=$ROOT/usr/i686-w64-mingw32/lib/zlib1.dll
    builtin=$ROOT/usr/lib/i386-linux-gnu/wine/i386-windows/zlib1.dll
    {
        head -c 64 "$zlib"
        printf 'Wine builtin DLL\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0'
        tail -c +97 "$zlib"
    } >"$builtin" || return 1
    rm -rf "$apt/archives" "$apt/lists"
}

# The variables that a run needs, by the way in which Wine was set up; wine64: for 64-bit programs.
load() {
    export WINEPREFIX=${PIXKIT_WINE_PREFIX:-$CACHE/prefix} WINEARCH=win32 WINEDEBUG=${WINEDEBUG:--all}
    export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}
    # Wine takes the encoding of file names and arguments from the locale.
    export LC_ALL=C.UTF-8
    # Only Wine's own fonts, so that text looks the same on every machine.
    export FONTCONFIG_FILE=$CACHE/fonts.conf
    case $1 in
    apt)
        LOADER=/usr/lib/wine/wine SERVER=/usr/lib/wine/wineserver FONTS=/usr/share/wine/fonts
        ;;
    wine64)
        LOADER=/usr/lib/wine/wine64 SERVER=/usr/lib/wine/wineserver64 FONTS=/usr/share/wine/fonts
        export WINEPREFIX=${PIXKIT_WINE_PREFIX:-$CACHE/prefix64} WINEARCH=win64 WINESERVER=$SERVER
        ;;
    unpack)
        LOADER=$ROOT/usr/lib/wine/wine SERVER=$ROOT/usr/lib/wine/wineserver32 FONTS=$ROOT/usr/share/wine/fonts
        export WINESERVER=$SERVER
        export LD_LIBRARY_PATH=$ROOT/lib/i386-linux-gnu:$ROOT/usr/lib/i386-linux-gnu${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}
        ;;
    esac
    # The first program of a Wine server decides on the window driver for all.
    [ -z "${PIXKIT_WINE_DISPLAY:-}" ] || export WINEPREFIX=$WINEPREFIX-display DISPLAY=$PIXKIT_WINE_DISPLAY
}

# A fresh prefix without a window driver (so no X server), or with that of X, and without the crash dialog, on which a
# run would hang. Nobody manages the windows on a display that was started for tests.
make_prefix() {
    local driver=null
    [ -z "${PIXKIT_WINE_DISPLAY:-}" ] || driver=x11
    rm -rf "$WINEPREFIX" && mkdir -p "$WINEPREFIX" "$CACHE" || return 1
    echo '<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "urn:fontconfig:fonts.dtd"><fontconfig></fontconfig>' \
        >"$FONTCONFIG_FILE"
    # Fonts first: the first start measures how high menus are, and without fonts keeps what happens to lie in memory.
    mkdir -p "$WINEPREFIX/drive_c/windows/Fonts" && cp "$FONTS"/* "$WINEPREFIX/drive_c/windows/Fonts/" &&
        quiet timeout 300 "$LOADER" wineboot -i &&
        quiet "$LOADER" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /t REG_SZ /d $driver /f &&
        quiet "$LOADER" reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /t REG_SZ /d N /f &&
        quiet "$LOADER" reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f || return 1
    quiet "$SERVER" -k -w
    touch "$WINEPREFIX/made"
}

is_ready() { [ -e "$CACHE/ready" ] && (load "$(cat "$CACHE/ready")" && [ -x "$LOADER" ]); }

# Sets up unless that is done; a lock keeps two callers from doing it at once.
setup() {
    local mode
    is_ready && return 0
    mkdir -p "$CACHE" || exit 1
    exec 9>"$CACHE/lock"
    flock 9
    if ! is_ready; then
        : >"$LOG"
        for mode in ${PIXKIT_WINE_MODE:-unpack apt}; do
            say "setting up ($mode)"
            # The Wine server outlives this script and must not inherit the lock.
            if ("setup_$mode" && load "$mode" && make_prefix) 9>&-; then
                echo "$mode" >"$CACHE/ready"
                break
            fi
            say "that did not work; see $LOG"
        done
        is_ready || { say "no 32-bit Wine here"; exit 1; }
    fi
    exec 9>&-
}

stop() {
    load "$1"
    quiet "$SERVER" -k -w
    return 0
}

# Runs a program in the prefix, which the first of several callers makes.
run() {
    load "$1"
    shift
    if [ ! -e "$WINEPREFIX/made" ]; then
        mkdir -p "$(dirname "$WINEPREFIX")"
        exec 9>"$WINEPREFIX.lock"
        flock 9
        [ -e "$WINEPREFIX/made" ] || make_prefix 9>&- || { say "no prefix; see $LOG"; exit 1; }
        exec 9>&-
    fi
    exec "$LOADER" "$@"
}

case ${1:-} in
run)
    shift
    setup
    run "$(cat "$CACHE/ready")" "$@"
    ;;
run64)
    shift
    [ -x /usr/lib/wine/wine64 ] || { say "no 64-bit Wine here: scripts/setup.sh windows installs it"; exit 1; }
    run wine64 "$@"
    ;;
setup) setup ;;
stop) if is_ready; then stop "$(cat "$CACHE/ready")"; fi ;;
stop64) stop wine64 ;;
clean)
    is_ready && stop "$(cat "$CACHE/ready")"
    rm -rf "$CACHE"
    ;;
*)
    sed -n '3,10p' "$0"
    exit 2
    ;;
esac
