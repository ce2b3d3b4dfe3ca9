// The CRC-16 tables and loops. The instance table is the one callers see through
// CRC16Init; long buffers over the standard table go through eight derived tables
// (slicing by eight), which give the same value as the byte loop, eight bytes per step.
#include "utils/settings/CRC16.h"

#include <cstdint>
#include <cstring>

#include "platform/kivutils/KivLog.h"

namespace {

constexpr unsigned kPolynomial = 0x1021;

constexpr std::uint16_t TableEntry(unsigned byte) {
    unsigned reg = byte << 8;
    for (int bit = 0; bit < 8; ++bit) reg = (reg & 0x8000) ? ((reg << 1) ^ kPolynomial) : (reg << 1);
    return static_cast<std::uint16_t>(reg);
}

// slices[k][i] is the register after byte i followed by k zero bytes, from a zero
// register; the register's contribution to eight bytes is then one lookup per byte.
struct SliceTables {
    std::uint16_t t[8][256];
};

constexpr SliceTables MakeSlices() {
    SliceTables s{};
    for (unsigned i = 0; i < 256; ++i) s.t[0][i] = TableEntry(i);
    for (int k = 1; k < 8; ++k)
        for (unsigned i = 0; i < 256; ++i) {
            const unsigned prev = s.t[k - 1][i];
            s.t[k][i] = static_cast<std::uint16_t>((prev << 8) ^ s.t[0][prev >> 8]);
        }
    return s;
}

constexpr SliceTables kSlices = MakeSlices();
static_assert(sizeof kSlices.t[0] == 256 * sizeof(unsigned short));

// Below this length the check of the instance table would cost more than slicing saves.
constexpr int kSliceFrom = 256;

unsigned SliceBy8(unsigned crc, const unsigned char*& p, std::size_t blocks) {
    const auto& t = kSlices.t;
    for (; blocks > 0; --blocks, p += 8) {
        crc = t[7][p[0] ^ (crc >> 8)] ^ t[6][p[1] ^ (crc & 0xFF)] ^ t[5][p[2]] ^ t[4][p[3]] ^
              t[3][p[4]] ^ t[2][p[5]] ^ t[1][p[6]] ^ t[0][p[7]];
    }
    return crc;
}

}  // namespace

CCRC16::CCRC16() { CRC16Init(); }

CCRC16::CCRC16(const CCRC16& other) { std::memcpy(m_table, other.m_table, sizeof m_table); }

CCRC16& CCRC16::operator=(const CCRC16& other) {
    std::memcpy(m_table, other.m_table, sizeof m_table);
    return *this;
}

CCRC16::~CCRC16() = default;

unsigned short* CCRC16::CRC16Init() {
    for (unsigned i = 0; i < 256; ++i) m_table[i] = TableEntry(i);
    return m_table;
}

unsigned short CCRC16::ComputeCRC16(unsigned short crc, const void* data, int length) {
    if (length < 0 || data == nullptr) {
        LOGMESSAGE(1, L"CCRC16::ComputeCRC16: tablem length %d < 0", length);
        return 0;
    }
    if (length == 0) return crc;
    const auto* p = static_cast<const unsigned char*>(data);
    unsigned reg = crc;
    int left = length;
    // The derived tables belong to the standard table. CRC16Init hands out the instance
    // table for writing, so a caller may have changed it at any time: a long buffer is
    // sliced only while the table is still the standard one, and anything else goes
    // byte by byte through the table as it now is. Short buffers skip the comparison.
    if (length >= kSliceFrom && std::memcmp(m_table, kSlices.t[0], sizeof m_table) == 0) {
        reg = SliceBy8(reg, p, static_cast<std::size_t>(length) / 8);
        left = length % 8;
    }
    for (; left > 0; --left, ++p) {
        const unsigned index = (*p ^ (reg >> 8)) & 0xFF;
        // Deliberate: the guard admits 256 and cannot fire for byte input; it is kept
        // as the data checks have always had it.
        if (index > 256) {
            LOGMESSAGE(1, L"CCRC16::ComputeCRC16: tablem index %d", static_cast<int>(index));
            return 0;
        }
        reg = (m_table[index] ^ (reg << 8)) & 0xFFFF;
    }
    return static_cast<unsigned short>(reg);
}

CCRC16* CreateCRC16() { return new (std::nothrow) CCRC16; }

void DeleteCRC16(CCRC16* crc) { delete crc; }
