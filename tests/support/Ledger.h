// Ledgers: files of tests/data that write down results, one a line. scripts/ledger.sh writes them anew; the difference
// is then seen in review.
#pragma once
#include "support/Pictures.h"
#include "support/SourceFolder.h"
#include <cstdlib>
#include <iomanip>
#include <span>
#include <sstream>

namespace pixkit::test {

// FNV-1a, 64 bits, in hexadecimal digits.
inline std::string checksum(std::span<const std::uint8_t> bytes) {
    std::uint64_t sum = 0xCBF29CE484222325U;
    for (const std::uint8_t byte : bytes)
        sum = (sum ^ byte) * 0x100000001B3U;
    std::ostringstream text;
    text << std::hex << std::setfill('0') << std::setw(16) << sum;
    return text.str();
}

// Fails at the first line that differs, or writes the ledger.
inline void compareWithLedger(const std::string& ledger, const std::string& actual) {
    const auto path = sourceFolder() / "tests" / "data" / ledger;
    if (std::getenv("PIXKIT_WRITE_LEDGER") != nullptr) {
        std::ofstream(path, std::ios::binary) << actual;
        return;
    }
    std::ifstream expected(path, std::ios::binary);
    std::istringstream found(actual);
    for (std::string line, other; std::getline(found, line);) {
        ASSERT_TRUE(std::getline(expected, other)) << line << " and more are not in " << ledger;
        ASSERT_EQ(line, other) << "scripts/ledger.sh writes " << ledger << " anew";
    }
    std::string more;
    EXPECT_FALSE(std::getline(expected, more)) << "nothing gave this line of " << ledger << ": " << more;
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
