// The address space a built vector image lives in. Pointer words of an image hold
// offsets from an arena base, so every block of a built image is carved out of one
// reserved range; pages are committed as blocks reach them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace kiv_vector_detail {

class PoolArena {
public:
    // Reserves the whole range a 32-bit pointer word can name (less on a 32-bit host);
    // null when the host refuses the reservation.
    static std::shared_ptr<PoolArena> reserve();
    ~PoolArena();
    PoolArena(const PoolArena&) = delete;
    PoolArena& operator=(const PoolArena&) = delete;

    unsigned char* base() const { return base_; }
    // Bytes from the base up to the end of the last block carved.
    std::size_t used() const { return used_; }
    // A new block of `bytes`, 8-byte aligned; null when the range is exhausted or the
    // pages cannot be committed. Blocks are never given back one by one: they go with
    // the arena.
    unsigned char* carve(std::size_t bytes);

private:
    PoolArena(unsigned char* base, std::size_t reserved);

    unsigned char* base_;
    std::size_t reserved_;
    std::size_t committed_ = 0;
    std::size_t used_;
};

}  // namespace kiv_vector_detail
