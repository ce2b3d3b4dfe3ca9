// Hand-made vector image bytes for the tests: words appended little-endian, patched in
// place, and read back, so each test spells the file it feeds the loader.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "utils/vector/ByteOrder.h"

namespace vector_test {

struct ImageBytes {
    std::vector<unsigned char> bytes;

    std::size_t word(std::uint32_t value) {
        const std::size_t at = bytes.size();
        bytes.resize(at + 4);
        VectorFormat::writeU32(&bytes[at], value);
        return at;
    }
    void words(std::initializer_list<std::uint32_t> values) {
        for (auto v : values) word(v);
    }
    void set(std::size_t at, std::uint32_t value) { VectorFormat::writeU32(&bytes[at], value); }
    std::uint32_t get(std::size_t at) const { return VectorFormat::readU32(&bytes[at]); }
    int size() const { return static_cast<int>(bytes.size()); }
    unsigned char* data() { return bytes.data(); }
};

inline std::uint32_t wordAt(const std::string& file, std::size_t at) { return VectorFormat::readU32(file.data() + at); }

}  // namespace vector_test
