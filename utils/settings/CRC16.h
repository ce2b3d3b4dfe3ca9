// CCRC16: the table-driven CRC-16 of the data checks (polynomial 1021 hex, most
// significant bit first, no reflection, no final XOR; the caller chooses the start:
// 0 for XMODEM, FFFF hex for CCITT-FALSE), computed incrementally over byte buffers.
#pragma once

#include "platform/kivutils/Heap.h"

class CCRC16 : public SharedHeapObject {
public:
    CCRC16();
    CCRC16(const CCRC16& other);
    CCRC16& operator=(const CCRC16& other);
    virtual ~CCRC16();

    // (Re)builds the 256-entry table and returns its first entry.
    unsigned short* CRC16Init();

    // Continues `crc` over `length` bytes at `data`. A negative length or a null buffer
    // is logged and gives 0.
    unsigned short ComputeCRC16(unsigned short crc, const void* data, int length);

private:
    unsigned short m_table[256];
};

// For callers that only hold a pointer: null when the allocation fails.
CCRC16* CreateCRC16();
void DeleteCRC16(CCRC16* crc);
