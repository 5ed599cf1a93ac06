// Where the tests find the project's own pictures.
#pragma once
#include <filesystem>

namespace pixkit::test {

// The project's folder. Known to one source alone, so that compilers' caches serve copies of the project in any folder.
std::filesystem::path sourceFolder();

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
