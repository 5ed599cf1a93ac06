#!/bin/bash
# SPDX-License-Identifier: MIT
# Other projects find the installed library, static and shared, by CMake and by pkg-config, or have the sources inside
# themselves, and the example of the README is what they compile.
#
#   package_test.sh BUILD-FOLDER
set -euo pipefail
cd "$(dirname "$0")/../.."
folder=$1/package
rm -rf "$folder"
mkdir -p "$folder"
compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$1/CMakeCache.txt")
strict=(-std=c++20 -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)

# Has the example use an installation, whose folder has this name.
use() {
    local kind=$1 prefix=$folder/$1 modules
    cmake -G Ninja -S tests/package -B "$folder/$kind-cmake" -DCMAKE_PREFIX_PATH="$prefix"
    cmake --build "$folder/$kind-cmake"
    modules=$(dirname "$(find "$prefix" -name pixkit.pc)")
    # Found from another place than the one where it was installed.
    mv "$prefix" "$folder/moved"
    modules=${modules/#$prefix/$folder/moved}
    # shellcheck disable=SC2046 # words
    "$compiler" "${strict[@]}" samples/example.cpp -o "$folder/$kind-pkg-config" \
        $(PKG_CONFIG_PATH=$modules pkg-config --cflags --libs pixkit)
    (cd "$folder" && LD_LIBRARY_PATH=$(dirname "$modules") "./$kind-pkg-config")
    mv "$folder/moved" "$prefix"
    (cd "$folder" && "$kind-cmake/example")
}

cmake --install "$1" --prefix "$folder/static"
use static
diff <(awk '/^```cpp/ { inside = 1; next } /^```/ { inside = 0 } inside' README.md) <(grep -v SPDX- samples/example.cpp)

# The same objects, so that a compiler cache has them all. scripts/package.sh --built makes Debian's packages of these.
shared=$(dirname "$1")/$(basename "$1")-shared
cmake -G Ninja -S . -B "$shared" -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=ON -DPIXKIT_TESTS=OFF -DPIXKIT_COMMAND=ON \
    -DCMAKE_COMPILE_WARNING_AS_ERROR=ON -DCMAKE_CXX_COMPILER="$compiler"
cmake --build "$shared"
cmake --install "$shared" --prefix "$folder/shared"
use shared
library=$(find "$folder/shared" -name 'libpixkit.so.3')
readelf -d "$library" | grep -F 'soname: [libpixkit.so.3]'
# Nothing but what programs may call, and all of that.
nm -DC --defined-only "$library" | cut -d' ' -f3- | sed 's/@.*//' | sort -u >"$folder/symbols.txt"
diff tests/package/symbols.txt "$folder/symbols.txt"
# Programs that were compiled before find everything in its place.
if [ "$(uname -m)" = x86_64 ]; then
    "$compiler" "${strict[@]}" -I"$folder/shared/include" -fsyntax-only tests/package/layout.cpp
fi

# The headers bring no warnings, for each compiler that is here.
for each in "$compiler" clang++; do
    command -v "$each" || continue
    "$each" "${strict[@]}" -Wold-style-cast -Wsign-conversion -I"$folder/static/include" -fsyntax-only samples/example.cpp
done

# Inside of another project there are the library and nothing else, and its warnings are that project's affair.
for way in add_subdirectory FetchContent; do
    cmake -G Ninja -S tests/package/subproject -B "$folder/$way" -DWAY=$way -DPIXKIT="$PWD" \
        -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DCMAKE_CXX_COMPILER="$compiler"
done
cmake --build "$folder/$way" --target example
cmake --install "$folder/$way" --prefix "$folder/inside"
diff <(cd "$folder/inside" && find . -type f) <(echo ./share/outer/CMakeLists.txt)
[ "$(ctest --test-dir "$folder/$way" -N | tail -n 1)" = "Total Tests: 0" ]
commands=$(grep -E '/src/[a-z]+/[^ ]*\.cpp"' "$folder/$way/compile_commands.json" | grep command)
if grep -E -- '-W([a-mo-z]|n[a-np-z])|FORTIFY|stack-protector' <<<"$commands"; then # but for -Wno-...
    exit 1
fi
