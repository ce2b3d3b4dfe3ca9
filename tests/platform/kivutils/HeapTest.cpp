#include <gtest/gtest.h>

#include <new>

#include "platform/kivutils/Heap.h"

namespace {
struct Tracked : SharedHeapObject {
    static inline int alive = 0;
    int payload[4] = {1, 2, 3, 4};
    Tracked() { ++alive; }
    ~Tracked() { --alive; }
};
}  // namespace

TEST(SharedHeap, EveryAllocationFormPairsWithItsRelease) {
    Tracked* one = new Tracked;
    Tracked* many = new Tracked[3];
    Tracked* quiet = new (std::nothrow) Tracked;
    ASSERT_NE(quiet, nullptr);
    EXPECT_EQ(Tracked::alive, 5);
    alignas(Tracked) unsigned char place[sizeof(Tracked)];
    Tracked* placed = new (place) Tracked;
    EXPECT_EQ(static_cast<void*>(placed), static_cast<void*>(place));
    placed->~Tracked();
    delete one;
    delete[] many;
    delete quiet;
    EXPECT_EQ(Tracked::alive, 0);
}

