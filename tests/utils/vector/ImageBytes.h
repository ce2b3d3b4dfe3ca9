// Hand-made vector image bytes: each test spells the file it feeds the loader.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "utils/vector/ByteOrder.h"
#include "utils/vector/VectorFormat.h"

namespace vector_test {

using Kinds = std::vector<std::pair<std::uint32_t, std::uint32_t>>;  // id, payload size

struct ImageBytes {
    std::vector<unsigned char> bytes;

    ImageBytes() = default;
    // Directory {TagDirectory, entries...}, then each entity with a zeroed payload.
    explicit ImageBytes(const Kinds& kinds) {
        const auto count = static_cast<std::uint32_t>(kinds.size());
        words({VectorFormat::eTagDirectory, 8 * count});
        std::uint32_t offset = 8 + 8 * count;
        for (auto [id, payload] : kinds) {
            words({id, offset});
            offset += 8 + payload;
        }
        for (auto [id, payload] : kinds) {
            words({id, payload});
            bytes.resize(bytes.size() + payload, 0);
        }
    }
    void words(std::initializer_list<std::uint32_t> values) {
        for (auto v : values) {
            bytes.resize(bytes.size() + 4);
            VectorFormat::writeU32(&bytes[bytes.size() - 4], v);
        }
    }
    void set(std::size_t at, std::uint32_t value) { VectorFormat::writeU32(&bytes[at], value); }
    std::uint32_t get(std::size_t at) const { return VectorFormat::readU32(&bytes[at]); }
    // Where the payload of directory entry `entry` starts.
    std::size_t payloadOf(int entry) const { return get(8 + 8 * static_cast<std::size_t>(entry) + 4) + 8; }
    int size() const { return static_cast<int>(bytes.size()); }
    unsigned char* data() { return bytes.data(); }
};

inline std::uint32_t wordAt(const std::string& file, std::size_t at) { return VectorFormat::readU32(file.data() + at); }

}  // namespace vector_test
