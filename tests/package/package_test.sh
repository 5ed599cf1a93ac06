#!/bin/bash
# SPDX-License-Identifier: MIT
# Another project finds the installed library, and the example of the README is what it compiles.
#
#   package_test.sh BUILD-FOLDER
set -euo pipefail
cd "$(dirname "$0")/../.."
folder=$1/package
rm -rf "$folder"
cmake --install "$1" --prefix "$folder/prefix"
cmake -G Ninja -S tests/package -B "$folder/build" -DCMAKE_PREFIX_PATH="$folder/prefix"
cmake --build "$folder/build"
(cd "$folder" && ./build/example)
diff <(awk '/^```cpp/ { inside = 1; next } /^```/ { inside = 0 } inside' README.md) <(grep -v SPDX- samples/example.cpp)
