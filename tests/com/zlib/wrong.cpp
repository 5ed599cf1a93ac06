// A zlib1.dll by name only.
extern "C" __declspec(dllexport) int somethingElse() {
    return 1;
}
// SPDX-License-Identifier: MIT
