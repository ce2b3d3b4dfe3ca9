// The long-buffer paths of CCRC16 over the standard table (polynomial 1021 hex, most
// significant bit first). Each gives the same value as the byte-table loop for every
// start value, length and alignment; CCRC16 picks the fastest one this processor runs.
#pragma once

#include <cstddef>

namespace kiv_crc_detail {

// The standard 256-entry table, entry i being byte i shifted through eight steps.
const unsigned short* StandardTable();

// Slicing by eight: eight table lookups per eight bytes. Runs on every processor.
unsigned short SlicedCrc16(unsigned short crc, const unsigned char* data, std::size_t length);

// True when this processor has a carry-less multiply that FoldedCrc16 can use; decided
// once, on first call.
bool FoldingAvailable();

// Carry-less-multiply folding, 128 bytes per step, for processors where
// FoldingAvailable() is true; any length.
unsigned short FoldedCrc16(unsigned short crc, const unsigned char* data, std::size_t length);

}  // namespace kiv_crc_detail
