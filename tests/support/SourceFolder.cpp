#include "support/SourceFolder.h"

std::filesystem::path pixkit::test::sourceFolder() {
    return PIXKIT_SOURCE_DIR;
}
// SPDX-License-Identifier: MIT
