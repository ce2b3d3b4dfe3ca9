// Bitmap files read for their size before a blit: the header reader and
// GetBitmapFileSizeFromFile.
#pragma once

#include <cstdio>

// What ReadBitmapFileHeader hands over: the still open file and the block that holds
// everything after the 14-byte file header, starting with the bitmap information header.
struct TBitmapFileHeader {
    FILE* file = nullptr;
    unsigned char* block = nullptr;  // from the shared heap, zeroed before it was read into
    unsigned long blockBytes = 0;    // the file header's size field less 14
};

// Opens the file ("rb"), checks the file header's B, M and reads the rest of the file,
// as the size field gives it, in one read. The size field is refused when it is below
// the two headers' 54 bytes or above the file's real size: a hostile header could
// otherwise make us allocate gigabytes or hand over a block whose information header
// was never read. On failure nothing is held.
bool ReadBitmapFileHeader(const wchar_t* path, TBitmapFileHeader& header);
// Frees the block and closes the file; a header that holds nothing is fine.
void ReleaseBitmapFileHeader(TBitmapFileHeader& header);

// Bytes needed for the pixels: the row of a 24-bit bitmap of the file's width padded to
// whole 32-bit words, ((W + 1) x 3 rounded down to a multiple of 4), times the height,
// whatever the file's own bit depth. This is deliberate: callers size a 24-bit buffer
// with it. A top-down file's negative height enters the product as it stands; the
// product wraps to 32 bits as on the device. 0 when the header cannot be read.
unsigned long GetBitmapFileSizeFromFile(const wchar_t* path);
