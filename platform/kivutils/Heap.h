// The one shared heap of the platform (dlmalloc/dlfree) and the mixin that gives an
// exported class class-level allocation operators over it, so that an object made in
// one module can be freed in another.
#pragma once

#include <cstddef>
#include <new>

void* dlmalloc(std::size_t bytes) noexcept;
void dlfree(void* block) noexcept;

struct SharedHeapObject {
    static void* operator new(std::size_t bytes);
    static void* operator new[](std::size_t bytes);
    static void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept;
    static void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept;
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void* operator new[](std::size_t, void* place) noexcept { return place; }

    static void operator delete(void* block) noexcept;
    static void operator delete[](void* block) noexcept;
    static void operator delete(void* block, const std::nothrow_t&) noexcept;
    static void operator delete[](void* block, const std::nothrow_t&) noexcept;
    static void operator delete(void*, void*) noexcept {}
    static void operator delete[](void*, void*) noexcept {}
};
