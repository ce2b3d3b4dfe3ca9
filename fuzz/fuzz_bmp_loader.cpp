// Fuzzes the BMP loader on any bytes: a picture comes back only with the size its
// header claims, and every pixel of it can be read.
#include <cstddef>
#include <cstdint>

#include "platform/win32/PictureFiles.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // Bytes that do not start as a BMP would go to the PNG reader; keep to the BMP one.
    if (size < 2 || data[0] != 'B' || data[1] != 'M') return 0;
    HBITMAP b = kiv_host::DecodePicture(data, size);
    if (!b) return 0;
    DIBSECTION ds{};
    if (GetObjectW(b, sizeof ds, &ds) != static_cast<int>(sizeof ds) || ds.dsBm.bmBitsPixel != 32) __builtin_trap();
    const auto* pixels = static_cast<const std::uint32_t*>(ds.dsBm.bmBits);
    std::uint32_t sum = 0;
    for (LONG i = 0; i < ds.dsBm.bmWidth * ds.dsBm.bmHeight; ++i) sum += pixels[i];
    static volatile std::uint32_t sink;
    sink = sum;  // keeps the reads of every pixel
    DeleteObject(b);
    return 0;
}
