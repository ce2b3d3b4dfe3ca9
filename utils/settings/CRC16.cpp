// The CRC-16 table and loop. The instance table is the one callers see through
// CRC16Init; long buffers over the standard table go through a faster path of equal
// result (carry-less-multiply folding where the processor has it, slicing by eight
// elsewhere).
#include "utils/settings/CRC16.h"

#include <cstdint>
#include <cstring>

#include "platform/kivutils/KivLog.h"
#include "utils/settings/CRC16Paths.h"

namespace {

constexpr unsigned kPolynomial = 0x1021;

constexpr std::uint16_t TableEntry(unsigned byte) {
    unsigned reg = byte << 8;
    for (int bit = 0; bit < 8; ++bit) reg = (reg & 0x8000) ? ((reg << 1) ^ kPolynomial) : (reg << 1);
    return static_cast<std::uint16_t>(reg);
}

// Below this length the check of the instance table would cost more than the long-buffer
// paths save.
constexpr int kLongFrom = 256;

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
    // The long-buffer paths belong to the standard table. CRC16Init hands out the
    // instance table for writing, so a caller may have changed it at any time: a long
    // buffer takes them only while the table is still the standard one, and anything
    // else goes byte by byte through the table as it now is. Short buffers skip the
    // comparison.
    if (length >= kLongFrom &&
        std::memcmp(m_table, kiv_crc_detail::StandardTable(), sizeof m_table) == 0) {
        const auto n = static_cast<std::size_t>(length);
        return kiv_crc_detail::FoldingAvailable() ? kiv_crc_detail::FoldedCrc16(crc, p, n)
                                                  : kiv_crc_detail::SlicedCrc16(crc, p, n);
    }
    unsigned reg = crc;
    for (int left = length; left > 0; --left, ++p) {
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
