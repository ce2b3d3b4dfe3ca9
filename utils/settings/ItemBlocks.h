// Room for the values a settings tree reads from its file, carved from a few growing
// blocks rather than one heap block each. A file of ten thousand values would otherwise cost
// ten thousand allocations to read and as many frees (with the heap's coalescing) to
// drop, more than reading the text itself.
#pragma once

#include <cstddef>
#include <vector>

namespace kiv_settings_detail {

class ItemBlocks {
public:
    ItemBlocks() = default;
    ~ItemBlocks();
    ItemBlocks(const ItemBlocks&) = delete;
    ItemBlocks& operator=(const ItemBlocks&) = delete;

    // Room for an object of `bytes` bytes, aligned for any type; throws std::bad_alloc
    // as new does. The room is given back only when the blocks go, with their owner: an
    // object destroyed before that leaves its room unused, so a tree never holds more
    // than what it once read.
    void* Allocate(std::size_t bytes);

private:
    void AddBlock(std::size_t atLeast);

    std::vector<void*> blocks_;
    char* next_ = nullptr;
    std::size_t left_ = 0;
    std::size_t lastBlock_ = 0;
};

}  // namespace kiv_settings_detail
