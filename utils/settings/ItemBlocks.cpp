// Blocks double from a kilobyte up to 64 KiB: a file of three values costs one small
// block, a file of ten thousand a score of blocks.
#include "utils/settings/ItemBlocks.h"

#include <algorithm>
#include <new>

#include "platform/kivutils/Heap.h"

namespace kiv_settings_detail {

namespace {
constexpr std::size_t kAlign = alignof(std::max_align_t);
constexpr std::size_t kFirstBlock = 1024;
constexpr std::size_t kLargestBlock = 64 * 1024;
}  // namespace

ItemBlocks::~ItemBlocks() {
    for (void* block : blocks_) dlfree(block);
}

void* ItemBlocks::Allocate(std::size_t bytes) {
    bytes = (bytes + kAlign - 1) / kAlign * kAlign;
    if (bytes > left_) AddBlock(bytes);
    void* place = next_;
    next_ += bytes;
    left_ -= bytes;
    return place;
}

void ItemBlocks::AddBlock(std::size_t atLeast) {
    const std::size_t size = std::max(atLeast, std::clamp(2 * lastBlock_, kFirstBlock, kLargestBlock));
    blocks_.reserve(blocks_.size() + 1);  // so that the push below cannot throw and lose the block
    void* block = dlmalloc(size);
    if (block == nullptr) throw std::bad_alloc();
    blocks_.push_back(block);
    next_ = static_cast<char*>(block);
    left_ = size;
    lastBlock_ = size;
}

}  // namespace kiv_settings_detail
