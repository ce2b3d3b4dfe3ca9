// The running checksum of the history documents, shared by the writer that keeps it
// and the verifier that recomputes it: folding UTF-16 code units into four byte lanes,
// and the restore that a reopened writer performs from the last CheckSum element.
#pragma once

#include <cstdint>
#include <string_view>

namespace kiv_history {

// "<CheckSum>" + eight digits + "</CheckSum>" + CR LF: the span a reopened writer reads
// back before the root's end tag.
constexpr int kRestoreWindow = 31;

// Byte number `lane` of the sum takes the XOR of the low byte of each unit in turn; the
// lane advances by one (mod 4) per unit. Not a CRC: four interleaved byte-wise XORs.
std::uint32_t FoldCheckSum(std::u16string_view units, std::uint32_t sum, int& lane);

// Reads a number the way "%x" reads it from `text`: leading white space, an optional
// sign, an optional 0x, then hexadecimal digits. False when no digit is found.
bool ParseHexLikeScanf(std::u16string_view text, std::uint32_t& value);

// What a reopened writer makes of the 31 units that precede the root's end tag, which
// start at byte offset `windowBytePos` of the file. On success sum and lane are the
// values the writer continues with; on failure it keeps what it had.
struct RestoredCheckSum {
    bool ok = false;
    std::uint32_t sum = 0;
    int lane = 0;
};
RestoredCheckSum RestoreFromWindow(std::u16string_view window, std::int64_t windowBytePos);

}  // namespace kiv_history
