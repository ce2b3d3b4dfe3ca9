#include "utils/settings/CRC16.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "tests/support/TestSupport.h"
#include "utils/settings/CRC16Paths.h"

namespace {

unsigned short ByteLoop(const unsigned short* table, unsigned short crc, const unsigned char* p, int n) {
    for (int i = 0; i < n; ++i) crc = static_cast<unsigned short>(table[(p[i] ^ (crc >> 8)) & 0xFF] ^ (crc << 8));
    return crc;
}

}  // namespace

TEST(CRC16, CatalogueValuesWholeInPiecesAndFromEveryInstance) {
    CCRC16 crc;
    EXPECT_EQ(crc.ComputeCRC16(0, "123456789", 9), 0x31C3);
    EXPECT_EQ(crc.ComputeCRC16(0xFFFF, "123456789", 9), 0x29B1);
    EXPECT_EQ(crc.ComputeCRC16(crc.ComputeCRC16(0, "1234", 4), "56789", 5), 0x31C3);
    EXPECT_EQ(crc.ComputeCRC16(0x1234, "x", 0), 0x1234);
    CCRC16 copy(crc);
    CCRC16 assigned;
    assigned = crc;
    CCRC16* made = CreateCRC16();
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(copy.ComputeCRC16(0, "123456789", 9), 0x31C3);
    EXPECT_EQ(assigned.ComputeCRC16(0, "123456789", 9), 0x31C3);
    EXPECT_EQ(made->ComputeCRC16(0xFFFF, "123456789", 9), 0x29B1);
    DeleteCRC16(made);
    DeleteCRC16(nullptr);
}

TEST(CRC16FastPath, EqualsTheByteLoopForEveryLengthAndAlignment) {
    std::vector<unsigned char> bytes(4096 + 8);
    std::mt19937 rng(7);
    for (auto& b : bytes) b = static_cast<unsigned char>(rng());
    CCRC16 crc;
    const unsigned short* table = crc.CRC16Init();
    for (int offset = 0; offset < 8; ++offset) {
        const unsigned char* p = bytes.data() + offset;
        for (int n = 0; n <= 4096; ++n) {
            const unsigned short start = static_cast<unsigned short>(n * 40503u);
            ASSERT_EQ(crc.ComputeCRC16(start, p, n), ByteLoop(table, start, p, n)) << "length " << n << " offset " << offset;
        }
    }
}

// Both long-buffer paths directly, whichever of them this processor makes CCRC16 use.
TEST(CRC16FastPath, FoldingAndSlicingEqualTheByteLoopAtEveryLengthAlignmentAndStart) {
    std::vector<unsigned char> bytes(400 + 16);
    std::mt19937 rng(3);
    for (auto& b : bytes) b = static_cast<unsigned char>(rng());
    const unsigned short* table = kiv_crc_detail::StandardTable();
    for (int offset = 0; offset < 16; ++offset) {
        const unsigned char* p = bytes.data() + offset;
        for (int n = 0; n <= 400; ++n) {
            for (unsigned start16 : {0x0000u, 0xFFFFu, (n * 40503u) & 0xFFFFu}) {
                const auto start = static_cast<unsigned short>(start16);
                const unsigned short expected = ByteLoop(table, start, p, n);
                ASSERT_EQ(kiv_crc_detail::FoldedCrc16(start, p, static_cast<std::size_t>(n)), expected)
                    << "length " << n << " offset " << offset << " start " << start;
                ASSERT_EQ(kiv_crc_detail::SlicedCrc16(start, p, static_cast<std::size_t>(n)), expected)
                    << "length " << n << " offset " << offset << " start " << start;
            }
        }
    }
    // Long random buffers, and the runs of zero and one bits a folding constant error
    // would show on.
    std::vector<unsigned char> big((1 << 20) + 77);
    for (int round = 0; round < 4; ++round) {
        for (auto& b : big) b = round == 2 ? 0x00 : round == 3 ? 0xFF : static_cast<unsigned char>(rng());
        const std::size_t n = big.size() - static_cast<std::size_t>(rng() % 300);
        const unsigned short start = static_cast<unsigned short>(rng());
        const unsigned short expected = ByteLoop(table, start, big.data() + 1, static_cast<int>(n - 1));
        EXPECT_EQ(kiv_crc_detail::FoldedCrc16(start, big.data() + 1, n - 1), expected) << round;
        EXPECT_EQ(kiv_crc_detail::SlicedCrc16(start, big.data() + 1, n - 1), expected) << round;
    }
}

TEST(CRC16FastPath, AChangedTableIsHonouredForEveryLength) {
    std::vector<unsigned char> bytes(5000);
    std::mt19937 rng(11);
    for (auto& b : bytes) b = static_cast<unsigned char>(rng());
    CCRC16 crc;
    unsigned short* table = crc.CRC16Init();
    const unsigned short standard = crc.ComputeCRC16(0xFFFF, bytes.data(), 5000);
    table[0x5A] ^= 0x8001;
    // A copy takes the changed table along.
    CCRC16 copy(crc);
    for (int n : {1, 7, 255, 256, 257, 1024, 4999, 5000}) {
        EXPECT_EQ(crc.ComputeCRC16(0xFFFF, bytes.data(), n), ByteLoop(table, 0xFFFF, bytes.data(), n)) << n;
        EXPECT_EQ(copy.ComputeCRC16(0xFFFF, bytes.data(), n), ByteLoop(table, 0xFFFF, bytes.data(), n)) << n;
    }
    EXPECT_NE(crc.ComputeCRC16(0xFFFF, bytes.data(), 5000), standard);
    crc.CRC16Init();
    EXPECT_EQ(crc.ComputeCRC16(0xFFFF, bytes.data(), 5000), standard);
}
