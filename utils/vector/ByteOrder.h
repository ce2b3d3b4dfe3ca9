// Little-endian field access for the packed, unaligned records of vector images. Every
// field is copied through memcpy, never read through a cast pointer, so records may
// start at any byte of a file image.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace VectorFormat {

inline std::uint32_t readU32(const void* at) {
    unsigned char b[4];
    std::memcpy(b, at, 4);
    return static_cast<std::uint32_t>(b[0]) | (static_cast<std::uint32_t>(b[1]) << 8) |
           (static_cast<std::uint32_t>(b[2]) << 16) | (static_cast<std::uint32_t>(b[3]) << 24);
}

inline void writeU32(void* at, std::uint32_t value) {
    const unsigned char b[4] = {static_cast<unsigned char>(value), static_cast<unsigned char>(value >> 8),
                                static_cast<unsigned char>(value >> 16), static_cast<unsigned char>(value >> 24)};
    std::memcpy(at, b, 4);
}

inline std::uint64_t readU64(const void* at) {
    const auto* p = static_cast<const unsigned char*>(at);
    return static_cast<std::uint64_t>(readU32(p)) | (static_cast<std::uint64_t>(readU32(p + 4)) << 32);
}

inline void writeU64(void* at, std::uint64_t value) {
    auto* p = static_cast<unsigned char*>(at);
    writeU32(p, static_cast<std::uint32_t>(value));
    writeU32(p + 4, static_cast<std::uint32_t>(value >> 32));
}

inline double readF64(const void* at) { return std::bit_cast<double>(readU64(at)); }
inline void writeF64(void* at, double value) { writeU64(at, std::bit_cast<std::uint64_t>(value)); }
inline float readF32(const void* at) { return std::bit_cast<float>(readU32(at)); }
inline void writeF32(void* at, float value) { writeU32(at, std::bit_cast<std::uint32_t>(value)); }

}  // namespace VectorFormat
