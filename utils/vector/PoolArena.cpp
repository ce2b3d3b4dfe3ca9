// The reserved arena of built vector images, over the Win32 virtual memory calls.
#include "utils/vector/PoolArena.h"

#include <algorithm>
#include <new>

#include "platform/win32/Memory.h"

namespace kiv_vector_detail {
namespace {

// A pointer word names 4 GiB, which a 64-bit host reserves whole. A 32-bit process has
// not much more address space than that in all, and there the words are plain addresses
// anyway, so an arena takes 256 MiB: several images can be built side by side.
constexpr std::uint64_t kWordRange = std::uint64_t{1} << 32;
constexpr std::size_t kReservedBytes =
    sizeof(std::size_t) > 4 ? static_cast<std::size_t>(kWordRange) : std::size_t{256} << 20;
constexpr std::size_t kCommitStep = std::size_t{1} << 20;
// Word 0 must name no block, so that a zero pointer word never reaches a pool.
constexpr std::size_t kFirstBlockOffset = 16;

}  // namespace

std::shared_ptr<PoolArena> PoolArena::reserve() {
    void* base = VirtualAlloc(nullptr, kReservedBytes, MEM_RESERVE, PAGE_NOACCESS);
    if (base == nullptr) return nullptr;
    std::shared_ptr<PoolArena> arena(new (std::nothrow) PoolArena(static_cast<unsigned char*>(base), kReservedBytes));
    if (!arena) VirtualFree(base, 0, MEM_RELEASE);
    return arena;
}

PoolArena::PoolArena(unsigned char* base, std::size_t reserved)
    : base_(base), reserved_(reserved), used_(kFirstBlockOffset) {}

PoolArena::~PoolArena() { VirtualFree(base_, 0, MEM_RELEASE); }

unsigned char* PoolArena::carve(std::size_t bytes) {
    const std::size_t start = (used_ + 7) & ~std::size_t{7};
    if (bytes > reserved_ - start) return nullptr;
    const std::size_t end = start + bytes;
    if (end > committed_) {
        const std::size_t target = std::min(reserved_, (end + kCommitStep - 1) / kCommitStep * kCommitStep);
        if (VirtualAlloc(base_ + committed_, target - committed_, MEM_COMMIT, PAGE_READWRITE) == nullptr) return nullptr;
        committed_ = target;
    }
    used_ = end;
    return base_ + start;
}

}  // namespace kiv_vector_detail
