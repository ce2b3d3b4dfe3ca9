// VirtualAlloc and VirtualFree over mmap: a reservation is an inaccessible private
// mapping, committing opens pages of it for reading and writing. The sizes of live
// reservations are remembered so that MEM_RELEASE can unmap them whole. File mappings
// are handle objects holding their own descriptor of the file; views are mmap regions
// remembered by their start.
#include "platform/win32/Memory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "platform/host/Host.h"
#include "platform/win32/FileObject.h"
#include "platform/win32/Handles.h"

namespace {

// Views start at multiples of this many bytes of the mapping, whatever the page size, as
// on Windows.
constexpr DWORD kFileMappingGranularity = 0x10000;

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

// ---- file mappings ----------------------------------------------------------------------

namespace {

// What a mapping is, shared by its handles and its views; the descriptor closes with
// the last of them.
struct MappingCore {
    MappingCore(int fd, DWORD protect, std::uint64_t size) : fd(fd), protect(protect), size(size) {}
    ~MappingCore() { ::close(fd); }
    MappingCore(const MappingCore&) = delete;
    MappingCore& operator=(const MappingCore&) = delete;
    const int fd;
    const DWORD protect;
    const std::uint64_t size;
};

class MappingHandle : public kiv_win32::HandleObject {
public:
    explicit MappingHandle(std::shared_ptr<MappingCore> core) : core(std::move(core)) {}
    const std::shared_ptr<MappingCore> core;
};

struct View {
    std::size_t bytes = 0;
    bool shared = false;  // written through to the file (not copy-on-write)
    std::shared_ptr<MappingCore> core;
};

struct MappingTables {
    std::mutex lock;
    std::unordered_map<std::wstring, std::weak_ptr<MappingCore>> names;
    std::map<std::uintptr_t, View> views;  // by start address
};

MappingTables& Mappings() {
    static MappingTables* tables = [] {
        kiv_host::AddResetHook("win32.mappings", [] {
            std::lock_guard g(Mappings().lock);
            Mappings().names.clear();  // views stay: their memory belongs to whoever mapped it
        });
        return new MappingTables;
    }();
    return *tables;
}

template <class Result>
Result Failed(DWORD error, Result result) {
    SetLastError(error);
    return result;
}

// A descriptor of the mapped bytes and their size, or -1 with the error set.
int MappedDescriptor(HANDLE file, DWORD protect, std::uint64_t requested, std::uint64_t& size) {
    if (file == INVALID_HANDLE_VALUE) {
        if (requested == 0) return Failed(ERROR_INVALID_PARAMETER, -1);
        const int fd = ::memfd_create("kiv-mapping", MFD_CLOEXEC);
        if (fd < 0) return Failed(ERROR_NOT_ENOUGH_MEMORY, -1);
        if (::ftruncate(fd, static_cast<off_t>(requested)) != 0) {
            ::close(fd);
            return Failed(ERROR_NOT_ENOUGH_MEMORY, -1);
        }
        size = requested;
        return fd;
    }
    auto object = kiv_win32::FindHandleAs<kiv_win32::detail::FileObject>(file);
    if (!object) return Failed(ERROR_INVALID_HANDLE, -1);
    if (!object->reads || (protect == PAGE_READWRITE && !object->writes)) return Failed(ERROR_ACCESS_DENIED, -1);
    struct stat st;
    if (::fstat(object->fd, &st) != 0) return Failed(ERROR_INVALID_HANDLE, -1);
    const auto length = static_cast<std::uint64_t>(st.st_size);
    if (requested == 0 && length == 0) return Failed(ERROR_FILE_INVALID, -1);
    size = requested == 0 ? length : requested;
    if (size > length) {
        if (protect != PAGE_READWRITE) return Failed(ERROR_NOT_ENOUGH_MEMORY, -1);
        if (::ftruncate(object->fd, static_cast<off_t>(size)) != 0) return Failed(ERROR_DISK_FULL, -1);
    }
    // A descriptor of the same open file: the mapping keeps the file, and the share
    // mode the handle claimed, after the handle is closed.
    const int fd = ::fcntl(object->fd, F_DUPFD_CLOEXEC, 0);
    return fd >= 0 ? fd : Failed(ERROR_TOO_MANY_OPEN_FILES, -1);
}

}  // namespace

HANDLE CreateFileMappingW(HANDLE file, LPSECURITY_ATTRIBUTES, DWORD protect, DWORD maximumSizeHigh,
                          DWORD maximumSizeLow, LPCWSTR name) {
    // Section flags (SEC_COMMIT and the like) in the high bits change nothing on the host.
    protect &= 0xFF;
    if (protect != PAGE_READONLY && protect != PAGE_READWRITE && protect != PAGE_WRITECOPY) {
        return Failed(ERROR_INVALID_PARAMETER, static_cast<HANDLE>(nullptr));
    }
    const std::uint64_t requested = (std::uint64_t{maximumSizeHigh} << 32) | maximumSizeLow;
    auto& tables = Mappings();
    std::unique_lock g(tables.lock, std::defer_lock);
    if (name && *name) {
        g.lock();  // held until the new mapping is named, so that one name makes one mapping
        auto it = tables.names.find(name);
        if (auto core = it == tables.names.end() ? nullptr : it->second.lock()) {
            HANDLE handle = kiv_win32::AddHandle(std::make_shared<MappingHandle>(std::move(core)));
            SetLastError(ERROR_ALREADY_EXISTS);
            return handle;
        }
    }
    std::uint64_t size = 0;
    const int fd = MappedDescriptor(file, protect, requested, size);
    if (fd < 0) return nullptr;
    auto core = std::make_shared<MappingCore>(fd, protect, size);
    if (g.owns_lock()) {
        std::erase_if(tables.names, [](const auto& entry) { return entry.second.expired(); });
        tables.names[name] = core;
        g.unlock();
    }
    HANDLE handle = kiv_win32::AddHandle(std::make_shared<MappingHandle>(std::move(core)));
    SetLastError(ERROR_SUCCESS);
    return handle;
}

HANDLE OpenFileMappingW(DWORD, BOOL, LPCWSTR name) {
    if (!name || !*name) return Failed(ERROR_INVALID_PARAMETER, static_cast<HANDLE>(nullptr));
    std::shared_ptr<MappingCore> core;
    {
        std::lock_guard g(Mappings().lock);
        auto it = Mappings().names.find(name);
        if (it != Mappings().names.end()) core = it->second.lock();
    }
    if (!core) return Failed(ERROR_FILE_NOT_FOUND, static_cast<HANDLE>(nullptr));
    return kiv_win32::AddHandle(std::make_shared<MappingHandle>(std::move(core)));
}

LPVOID MapViewOfFile(HANDLE mapping, DWORD desiredAccess, DWORD fileOffsetHigh, DWORD fileOffsetLow,
                     SIZE_T numberOfBytesToMap) {
    auto handle = kiv_win32::FindHandleAs<MappingHandle>(mapping);
    if (!handle) return Failed(ERROR_INVALID_HANDLE, static_cast<LPVOID>(nullptr));
    const MappingCore& core = *handle->core;
    const std::uint64_t offset = (std::uint64_t{fileOffsetHigh} << 32) | fileOffsetLow;
    if (offset % kFileMappingGranularity != 0) return Failed(ERROR_MAPPED_ALIGNMENT, static_cast<LPVOID>(nullptr));
    if (offset >= core.size) return Failed(ERROR_INVALID_PARAMETER, static_cast<LPVOID>(nullptr));
    const std::uint64_t bytes = numberOfBytesToMap == 0 ? core.size - offset : numberOfBytesToMap;
    if (bytes > core.size - offset) return Failed(ERROR_ACCESS_DENIED, static_cast<LPVOID>(nullptr));

    int protection = PROT_READ;
    int flags = MAP_SHARED;
    // FILE_MAP_ALL_ACCESS holds the copy bit too; only without write access does it
    // ask for a copy-on-write view.
    if ((desiredAccess & FILE_MAP_WRITE) || desiredAccess == FILE_MAP_ALL_ACCESS) {
        if (core.protect != PAGE_READWRITE) return Failed(ERROR_ACCESS_DENIED, static_cast<LPVOID>(nullptr));
        protection |= PROT_WRITE;
    } else if (desiredAccess & FILE_MAP_COPY) {
        protection |= PROT_WRITE;
        flags = MAP_PRIVATE;
    } else if (!(desiredAccess & FILE_MAP_READ)) {
        return Failed(ERROR_INVALID_PARAMETER, static_cast<LPVOID>(nullptr));
    }
    void* base = ::mmap(nullptr, static_cast<std::size_t>(bytes), protection, flags, core.fd,
                        static_cast<off_t>(offset));
    if (base == MAP_FAILED) return Failed(ERROR_NOT_ENOUGH_MEMORY, static_cast<LPVOID>(nullptr));
    std::lock_guard g(Mappings().lock);
    Mappings().views[reinterpret_cast<std::uintptr_t>(base)] =
        View{static_cast<std::size_t>(bytes), flags == MAP_SHARED, handle->core};
    return base;
}

// Any address inside a view names the whole view, as the system takes it.
BOOL UnmapViewOfFile(LPCVOID baseAddress) {
    const auto address = reinterpret_cast<std::uintptr_t>(baseAddress);
    std::uintptr_t start = 0;
    View view;
    {
        std::lock_guard g(Mappings().lock);
        auto it = Mappings().views.upper_bound(address);
        if (it == Mappings().views.begin()) return Failed(ERROR_INVALID_ADDRESS, FALSE);
        --it;
        if (address - it->first >= it->second.bytes) return Failed(ERROR_INVALID_ADDRESS, FALSE);
        start = it->first;
        view = std::move(it->second);
        Mappings().views.erase(it);
    }
    ::munmap(reinterpret_cast<void*>(start), view.bytes);
    return TRUE;
}

BOOL FlushViewOfFile(LPCVOID baseAddress, SIZE_T numberOfBytesToFlush) {
    const auto address = reinterpret_cast<std::uintptr_t>(baseAddress);
    std::uintptr_t start = 0;
    View view;
    {
        std::lock_guard g(Mappings().lock);
        auto it = Mappings().views.upper_bound(address);
        if (it == Mappings().views.begin()) return Failed(ERROR_INVALID_ADDRESS, FALSE);
        --it;
        if (address - it->first >= it->second.bytes) return Failed(ERROR_INVALID_ADDRESS, FALSE);
        start = it->first;
        view = it->second;  // keeps the mapping while the pages are written
    }
    const std::size_t rest = view.bytes - (address - start);
    if (!view.shared) return TRUE;
    const std::size_t bytes = numberOfBytesToFlush == 0 || numberOfBytesToFlush > rest ? rest : numberOfBytesToFlush;
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const std::uintptr_t from = address / page * page;
    if (::msync(reinterpret_cast<void*>(from), address + bytes - from, MS_SYNC) != 0) {
        return Failed(errno == ENOMEM ? ERROR_INVALID_ADDRESS : ERROR_WRITE_FAULT, FALSE);
    }
    return TRUE;
}

void GetSystemInfo(LPSYSTEM_INFO info) {
    if (!info) return;
    *info = SYSTEM_INFO{};
    const long page = ::sysconf(_SC_PAGESIZE);
    const long processors = ::sysconf(_SC_NPROCESSORS_ONLN);
    info->dwPageSize = page > 0 ? static_cast<DWORD>(page) : 4096;
    info->lpMinimumApplicationAddress = reinterpret_cast<LPVOID>(static_cast<std::uintptr_t>(kFileMappingGranularity));
    info->lpMaximumApplicationAddress = reinterpret_cast<LPVOID>(~std::uintptr_t{0} - kFileMappingGranularity);
    info->dwNumberOfProcessors = processors > 0 ? static_cast<DWORD>(processors) : 1;
    info->dwActiveProcessorMask = info->dwNumberOfProcessors >= 8 * sizeof(DWORD_PTR)
                                      ? ~DWORD_PTR{0}
                                      : (DWORD_PTR{1} << info->dwNumberOfProcessors) - 1;
    info->dwAllocationGranularity = kFileMappingGranularity;
}
