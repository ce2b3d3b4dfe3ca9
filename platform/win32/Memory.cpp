// VirtualAlloc and VirtualFree over mmap: a reservation is an inaccessible private
// mapping, committing opens pages of it for reading and writing. The sizes of live
// reservations are remembered so that MEM_RELEASE can unmap them whole.
#include "platform/win32/Memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <map>
#include <mutex>

namespace {

std::mutex reservationsLock;
std::map<std::uintptr_t, std::size_t>& reservations() {
    static std::map<std::uintptr_t, std::size_t> sizes;
    return sizes;
}

std::size_t roundToPages(std::size_t bytes) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return (bytes + page - 1) / page * page;
}

int protectionOf(DWORD protect) {
    switch (protect) {
        case PAGE_READWRITE: return PROT_READ | PROT_WRITE;
        case PAGE_READONLY: return PROT_READ;
        default: return PROT_NONE;
    }
}

// True when [address, address + size) lies inside one live reservation.
bool insideReservation(std::uintptr_t address, std::size_t size) {
    std::lock_guard<std::mutex> guard(reservationsLock);
    auto& all = reservations();
    auto it = all.upper_bound(address);
    if (it == all.begin()) return false;
    --it;
    return address >= it->first && address - it->first + size <= it->second;
}

}  // namespace

LPVOID VirtualAlloc(LPVOID address, SIZE_T size, DWORD allocationType, DWORD protect) {
    if (size == 0 || (allocationType & (MEM_RESERVE | MEM_COMMIT)) == 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const std::size_t bytes = roundToPages(size);
    if (allocationType & MEM_RESERVE) {
        if (address != nullptr) {  // placing a reservation is not part of the subset
            SetLastError(ERROR_INVALID_PARAMETER);
            return nullptr;
        }
        const int prot = (allocationType & MEM_COMMIT) ? protectionOf(protect) : PROT_NONE;
        void* block = mmap(nullptr, bytes, prot, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (block == MAP_FAILED) {
            SetLastError(ERROR_NOT_ENOUGH_MEMORY);
            return nullptr;
        }
        std::lock_guard<std::mutex> guard(reservationsLock);
        reservations()[reinterpret_cast<std::uintptr_t>(block)] = bytes;
        return block;
    }
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto start = reinterpret_cast<std::uintptr_t>(address) / page * page;
    const std::size_t span = roundToPages(reinterpret_cast<std::uintptr_t>(address) + size - start);
    if (address == nullptr || !insideReservation(start, span) ||
        mprotect(reinterpret_cast<void*>(start), span, protectionOf(protect)) != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return address;
}

BOOL VirtualFree(LPVOID address, SIZE_T size, DWORD freeType) {
    const auto start = reinterpret_cast<std::uintptr_t>(address);
    if (freeType == MEM_RELEASE) {
        std::size_t bytes = 0;
        {
            std::lock_guard<std::mutex> guard(reservationsLock);
            auto it = reservations().find(start);
            if (size != 0 || it == reservations().end()) {
                SetLastError(ERROR_INVALID_PARAMETER);
                return FALSE;
            }
            bytes = it->second;
            reservations().erase(it);
        }
        munmap(address, bytes);
        return TRUE;
    }
    if (freeType == MEM_DECOMMIT && insideReservation(start, roundToPages(size))) {
        // Dropping the pages and closing them again returns them to the system.
        madvise(address, roundToPages(size), MADV_DONTNEED);
        mprotect(address, roundToPages(size), PROT_NONE);
        return TRUE;
    }
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
}
