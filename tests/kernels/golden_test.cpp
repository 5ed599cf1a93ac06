// One number for what all kernels give over a long random run: the same on every processor, compiler and system.
#include "operations.h"

#include <gtest/gtest.h>

namespace pixkit::kernels::test {
namespace {

class Fnv1a64 {
  public:
    void add(std::uint8_t byte) { m_hash = (m_hash ^ byte) * 0x100000001B3U; }
    void add(std::uint64_t value) {
        for (int shift = 0; shift < 64; shift += 8)
            add(static_cast<std::uint8_t>(value >> shift));
    }
    std::uint64_t value() const { return m_hash; }

  private:
    std::uint64_t m_hash = 0xCBF29CE484222325U;
};

constexpr std::uint64_t goldenChecksum = 0x1A7358C541CCB507U;

std::uint64_t checksum(const Table& table) {
    Fnv1a64 hash;
    Numbers numbers(20);
    for (const Operation& operation : operations()) {
        for (int round = 0; round < 40; ++round) {
            const std::size_t count = 1 + numbers.below(2000);
            const Content content = contents[round % 5];
            std::vector<std::uint8_t> dst = rowOf(content, operation.dstBytes(count), numbers);
            const std::vector<std::uint8_t> src = rowOf(content, operation.srcBytes(count), numbers);
            hash.add(operation.run(table, dst.data(), src.data(), count, operation.argument));
            for (const std::uint8_t byte : dst)
                hash.add(byte);
        }
    }
    return hash.value();
}

TEST(KernelGolden, DiffersBetweenBuildsOrProcessors) {
    for (const CpuLevel& level : cpuLevels) {
        if (!level.isHere()) continue;
        EXPECT_EQ(checksum(tableFor(level.features)), goldenChecksum) << level.name;
    }
    EXPECT_EQ(checksum(table()), goldenChecksum) << "the table in use";
}

} // namespace
} // namespace pixkit::kernels::test
