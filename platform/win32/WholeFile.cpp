#include "platform/win32/WholeFile.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <random>

#include "platform/win32/Files.h"
#include "platform/win32/Handles.h"

namespace kiv_win32 {
namespace {

// A temporary name beside the target that no other writer picks: a per-process random
// stem and a counter.
std::wstring TemporarySibling(const wchar_t* path) {
    static const unsigned stem = std::random_device{}();
    static std::atomic<unsigned> counter{0};
    wchar_t suffix[24];
    std::swprintf(suffix, std::size(suffix), L".~%08x%04x", stem, counter++ & 0xFFFF);
    return std::wstring(path) + suffix;
}

bool WriteAll(HANDLE file, std::string_view bytes) {
    while (!bytes.empty()) {
        const DWORD chunk = static_cast<DWORD>(std::min<size_t>(bytes.size(), 1u << 30));
        DWORD written = 0;
        if (!WriteFile(file, bytes.data(), chunk, &written, nullptr) || written != chunk) return false;
        bytes.remove_prefix(chunk);
    }
    return true;
}

}  // namespace

bool ReadWholeFile(const wchar_t* path, std::string& bytes, size_t limit) {
    HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                              nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    DWORD high = 0;
    const DWORD low = GetFileSize(file, &high);
    const unsigned long long size = (static_cast<unsigned long long>(high) << 32) | low;
    bool ok = size <= limit;
    if (ok) {
        bytes.resize(static_cast<size_t>(size));
        size_t got = 0;
        while (got < bytes.size()) {
            DWORD n = 0;
            const DWORD want = static_cast<DWORD>(std::min<size_t>(bytes.size() - got, 1u << 30));
            if (!ReadFile(file, bytes.data() + got, want, &n, nullptr) || n == 0) break;
            got += n;
        }
        bytes.resize(got);
    } else {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    }
    CloseHandle(file);
    return ok;
}

bool ReplaceWholeFile(const wchar_t* path, std::string_view bytes) {
    if (!path || !*path) return false;
    const DWORD old = GetFileAttributesW(path);
    // A read-only file is left alone rather than replaced behind its owner's back.
    if (old != INVALID_FILE_ATTRIBUTES && (old & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY))) {
        SetLastError(ERROR_ACCESS_DENIED);
        return false;
    }
    std::wstring temporary;
    HANDLE file = INVALID_HANDLE_VALUE;
    for (int attempt = 0; attempt < 16 && file == INVALID_HANDLE_VALUE; ++attempt) {
        temporary = TemporarySibling(path);
        file = CreateFileW(temporary.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE && GetLastError() != ERROR_FILE_EXISTS) return false;
    }
    if (file == INVALID_HANDLE_VALUE) return false;
    const bool written = WriteAll(file, bytes) && FlushFileBuffers(file);
    CloseHandle(file);
    if (!written || !MoveFileExW(temporary.c_str(), path, MOVEFILE_REPLACE_EXISTING)) {
        const DWORD error = GetLastError();
        DeleteFileW(temporary.c_str());
        SetLastError(error);
        return false;
    }
    if (old != INVALID_FILE_ATTRIBUTES && (old & FILE_ATTRIBUTE_HIDDEN)) SetFileAttributesW(path, FILE_ATTRIBUTE_HIDDEN);
    return true;
}

}  // namespace kiv_win32
