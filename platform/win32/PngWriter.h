// A PNG encoder of our own for builds without a PNG library (the Windows build): 8-bit
// RGB, every row unfiltered, the image data in stored deflate blocks. The files are
// larger than a compressing encoder's, and every PNG reader takes them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace kiv_host {

// `rgb` holds height rows of width pixels, three bytes each, top row first.
std::string EncodePngRgb(int width, int height, const std::uint8_t* rgb);

// The CRC-32 of PNG chunks and zip files (reflected 0xEDB88320), continued from `crc`.
std::uint32_t Crc32(const std::uint8_t* bytes, std::size_t size, std::uint32_t crc = 0);

}  // namespace kiv_host
