// Global memory blocks: handle-table objects that own their bytes and count their locks.
#include "platform/win32/GlobalMemory.h"

#include <atomic>
#include <memory>
#include <new>

#include "platform/win32/Handles.h"

namespace {

class GlobalBlock : public kiv_win32::HandleObject {
public:
    GlobalBlock(std::unique_ptr<BYTE[]> bytes, SIZE_T size) : bytes_(std::move(bytes)), size_(size) {}
    BYTE* Bytes() { return bytes_.get(); }
    SIZE_T Size() const { return size_; }
    std::atomic<int> locks{0};

private:
    std::unique_ptr<BYTE[]> bytes_;
    SIZE_T size_;
};

std::shared_ptr<GlobalBlock> BlockOf(HGLOBAL memory) {
    auto block = kiv_win32::FindHandleAs<GlobalBlock>(memory);
    if (!block) SetLastError(ERROR_INVALID_HANDLE);
    return block;
}

}  // namespace

HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes) {
    // Refuses sizes no handheld could hold rather than trying the host's memory.
    constexpr SIZE_T kLargest = SIZE_T{1} << 31;
    if (bytes > kLargest) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    const SIZE_T reserved = bytes ? bytes : 1;
    std::unique_ptr<BYTE[]> data(new (std::nothrow) BYTE[reserved]);
    if (!data) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    if (flags & GMEM_ZEROINIT) std::fill(data.get(), data.get() + reserved, BYTE{0});
    return kiv_win32::AddHandle(std::make_shared<GlobalBlock>(std::move(data), bytes));
}

LPVOID GlobalLock(HGLOBAL memory) {
    auto block = BlockOf(memory);
    if (!block) return nullptr;
    ++block->locks;
    return block->Bytes();
}

BOOL GlobalUnlock(HGLOBAL memory) {
    auto block = BlockOf(memory);
    if (!block) return FALSE;
    int count = block->locks.load();
    while (count > 0 && !block->locks.compare_exchange_weak(count, count - 1)) {}
    if (count <= 0) {
        SetLastError(ERROR_NOT_LOCKED);
        return FALSE;
    }
    if (count - 1 == 0) {
        SetLastError(ERROR_SUCCESS);
        return FALSE;
    }
    return TRUE;
}

HGLOBAL GlobalFree(HGLOBAL memory) {
    if (!BlockOf(memory)) return memory;
    kiv_win32::RemoveHandle(memory);
    return nullptr;
}

SIZE_T GlobalSize(HGLOBAL memory) {
    auto block = BlockOf(memory);
    return block ? block->Size() : 0;
}
