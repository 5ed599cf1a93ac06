#!/bin/bash
# SPDX-License-Identifier: MIT
# Free Pascal for 32-bit Windows, built of Debian's packages (fp-compiler, fp-units-rtl, fp-utils, fpc-source), which have the
# compiler for this system alone. It takes a minute, once, and stays in build/free-pascal.
#
#   free_pascal.sh setup                    only builds it
#   free_pascal.sh SOURCE FOLDER [UNITS]    compiles a program into a folder; UNITS: a folder with more units
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD/build/free-pascal
version=$(fpc -iV)
sources=/usr/share/fpcsrc/$version
packages=(rtl-objpas/src/{inc,win,common} winunits-base/src fcl-registry/src fcl-base/src fcl-base/src/win fcl-xml/src)

# The compiler links Windows programs by itself: no assembler or linker of another package is needed.
build() {
    local messages=/usr/lib/$(uname -m)-linux-gnu/fpc/$version/msg/errore.msg
    local common=(-n -Twin32 -O2 -Fi. -Fi../win -Fi../inc -Fi../i386 -Fi../win/wininc -Fi../objpas -Fi../objpas/sysutils
        -Fi../objpas/classes -Fu. -Fu../win -Fu../inc -Fu../i386 -Fu../win/wininc -Fu../objpas -FU../units)
    rm -rf "$root" && mkdir -p "$root"/{compiler-units,programs} && cp -rL "$sources"/{compiler,rtl} "$root" &&
        mkdir -p "$root/compiler/msg" "$root/rtl/units" && cp "$messages" "$root/compiler/msg" &&
        (cd "$root/compiler" && fpc -FE../programs utils/msg2inc.pp && ../programs/msg2inc msg/errore.msg msg msg &&
            fpc -dI386 -Ur -Xs -O1 -Fui386 -Fux86 -Fusystems -Fii386 -Fix86 -FU../compiler-units -o../ppcross386 pp.pas) &&
        (cd "$root/rtl/win32" && ../../ppcross386 "${common[@]}" -Us -Sg system.pp && ../../ppcross386 "${common[@]}" buildrtl.pp) &&
        touch "$root/built"
}

if [ ! -e "$root/built" ]; then
    mkdir -p build
    build >build/free-pascal.log 2>&1 || { tail -n 20 build/free-pascal.log; echo "no Free Pascal for Windows: see build/free-pascal.log"; exit 1; }
fi
[ "${1:-}" != setup ] || exit 0
[ $# -ge 2 ] || { sed -n '6,7p' "$0"; exit 2; }
folders=()
for package in "${packages[@]}"; do
    folders+=("-Fu$sources/packages/$package" "-Fi$sources/packages/$package")
done
exec "$root/ppcross386" -n -Twin32 -O2 -vew "-Fu$root/rtl/units" "${folders[@]}" ${3:+"-Fu$3"} "-FU$root/programs" "-FE$2" "$1"
