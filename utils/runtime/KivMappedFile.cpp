// CKivMappedFile over CreateFileW, CreateFileMappingW, MapViewOfFile, FlushViewOfFile
// and UnmapViewOfFile.
#include "utils/runtime/KivMappedFile.h"

#include <limits>

bool CKivMappedFile::Fail() {
    error_ = GetLastError();
    Close();
    return false;
}

bool CKivMappedFile::Open(const wchar_t* path, EAccess access, std::uint64_t size) {
    Close();
    error_ = ERROR_SUCCESS;
    access_ = access;
    if (!path || (access != eReadWrite && size != 0) || size > std::numeric_limits<std::size_t>::max()) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return Fail();
    }
    const bool writes = access == eReadWrite;
    // Sharing reads only: a writer of this or another process could otherwise cut the
    // file short, and a page beyond the new end would fault when it is read.
    file_ = CreateFileW(path, writes ? GENERIC_READ | GENERIC_WRITE : GENERIC_READ, FILE_SHARE_READ, nullptr,
                        writes ? OPEN_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file_ == INVALID_HANDLE_VALUE) return Fail();
    const DWORD protect = access == eReadWrite ? PAGE_READWRITE : access == eCopyOnWrite ? PAGE_WRITECOPY : PAGE_READONLY;
    mapping_ = CreateFileMappingW(file_, nullptr, protect, static_cast<DWORD>(size >> 32), static_cast<DWORD>(size),
                                  nullptr);
    if (!mapping_) return Fail();
    const DWORD viewAccess = access == eReadWrite ? FILE_MAP_WRITE : access == eCopyOnWrite ? FILE_MAP_COPY : FILE_MAP_READ;
    view_ = MapViewOfFile(mapping_, viewAccess, 0, 0, 0);
    if (!view_) return Fail();
    DWORD high = 0;
    const DWORD low = GetFileSize(file_, &high);
    const std::uint64_t length = (std::uint64_t{high} << 32) | low;
    size_ = static_cast<std::size_t>(size != 0 ? size : length);
    return true;
}

void CKivMappedFile::Close() {
    if (view_) UnmapViewOfFile(view_);
    if (mapping_) CloseHandle(mapping_);
    if (file_ != INVALID_HANDLE_VALUE) CloseHandle(file_);
    view_ = nullptr;
    mapping_ = nullptr;
    file_ = INVALID_HANDLE_VALUE;
    size_ = 0;
}

bool CKivMappedFile::Flush(std::size_t offset, std::size_t bytes) {
    if (!view_ || offset >= size_) return false;
    if (access_ != eReadWrite) return true;
    const std::size_t rest = size_ - offset;
    return FlushViewOfFile(GetData() + offset, bytes == 0 || bytes > rest ? rest : bytes) != FALSE;
}
