// On the host every module of the process shares the C library's heap, so the shared
// heap is that heap; keeping the dlmalloc names keeps the allocation seam of the device.
#include "platform/kivutils/Heap.h"

#include <cstdlib>

void* dlmalloc(std::size_t bytes) noexcept { return std::malloc(bytes == 0 ? 1 : bytes); }
void dlfree(void* block) noexcept { std::free(block); }

namespace {
void* AllocateOrThrow(std::size_t bytes) {
    if (void* p = dlmalloc(bytes)) return p;
    throw std::bad_alloc();
}
}  // namespace

void* SharedHeapObject::operator new(std::size_t bytes) { return AllocateOrThrow(bytes); }
void* SharedHeapObject::operator new[](std::size_t bytes) { return AllocateOrThrow(bytes); }
void* SharedHeapObject::operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return dlmalloc(bytes); }
void* SharedHeapObject::operator new[](std::size_t bytes, const std::nothrow_t&) noexcept { return dlmalloc(bytes); }
void SharedHeapObject::operator delete(void* block) noexcept { dlfree(block); }
void SharedHeapObject::operator delete[](void* block) noexcept { dlfree(block); }
void SharedHeapObject::operator delete(void* block, const std::nothrow_t&) noexcept { dlfree(block); }
void SharedHeapObject::operator delete[](void* block, const std::nothrow_t&) noexcept { dlfree(block); }
