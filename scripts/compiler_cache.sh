# SPDX-License-Identifier: MIT
# To be sourced from the project's folder: compile through ccache where it is there.
if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
    export CCACHE_SLOPPINESS=pch_defines,time_macros
    # Without a home folder that can be written to, every compilation would fail.
    mkdir -p "${XDG_CACHE_HOME:-${HOME:-/}/.cache}/ccache" 2>/dev/null || export CCACHE_DIR=$PWD/build/ccache
fi
