// File checks over GetFileAttributesW, GetFileAttributesExW, CreateFileW and
// GetDiskFreeSpaceExW, so the host's path mapping applies to every one of them.
#include "utils/runtime/FileChecks.h"

#include <string>

namespace {

DWORD AttributesOf(const wchar_t* path) { return path ? GetFileAttributesW(path) : INVALID_FILE_ATTRIBUTES; }

// The folder part of a path, without its last separator; empty for a bare name.
std::wstring FolderOf(const wchar_t* path) {
    std::wstring p(path);
    while (p.size() > 1 && (p.back() == L'\\' || p.back() == L'/')) p.pop_back();
    const auto cut = p.find_last_of(L"\\/");
    if (cut == std::wstring::npos) return L"";
    return cut == 0 ? p.substr(0, 1) : p.substr(0, cut);
}

// A folder is writable when a file can be made in it. The probe takes a name nobody
// else uses (another name when one is taken) and is removed at once.
bool FolderTakesFiles(const std::wstring& folder) {
    std::wstring prefix = folder;
    if (!prefix.empty() && prefix.back() != L'\\' && prefix.back() != L'/') prefix += prefix[0] == L'/' ? L'/' : L'\\';
    prefix += L"~kiv-write-probe-" + std::to_wstring(GetCurrentThreadId()) + L"-";
    for (int attempt = 0; attempt < 8; ++attempt) {
        const std::wstring probe = prefix + std::to_wstring(GetTickCount() + attempt) + L".tmp";
        HANDLE file = CreateFileW(probe.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_TEMPORARY | FILE_ATTRIBUTE_HIDDEN, nullptr);
        if (file != INVALID_HANDLE_VALUE) {
            CloseHandle(file);
            DeleteFileW(probe.c_str());
            return true;
        }
        if (GetLastError() != ERROR_FILE_EXISTS) return false;
    }
    return false;
}

}  // namespace

namespace FileChecks {

bool Exists(const wchar_t* path) { return AttributesOf(path) != INVALID_FILE_ATTRIBUTES; }

bool IsFolder(const wchar_t* path) {
    const DWORD attributes = AttributesOf(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool IsFile(const wchar_t* path) {
    const DWORD attributes = AttributesOf(path);
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool IsWritable(const wchar_t* path) {
    if (!path || !*path) return false;
    const DWORD attributes = GetFileAttributesW(path);
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const std::wstring folder = FolderOf(path);
        return (folder.empty() || IsFolder(folder.c_str())) && FolderTakesFiles(folder);
    }
    if (attributes & FILE_ATTRIBUTE_DIRECTORY) return FolderTakesFiles(path);
    if (attributes & FILE_ATTRIBUTE_READONLY) return false;
    HANDLE file = CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    CloseHandle(file);
    return true;
}

bool GetFreeSpace(const wchar_t* path, std::uint64_t& freeBytes, std::uint64_t* totalBytes) {
    if (!path || !*path) return false;
    ULARGE_INTEGER available{}, total{};
    if (!GetDiskFreeSpaceExW(path, &available, &total, nullptr)) return false;
    freeBytes = available.QuadPart;
    if (totalBytes) *totalBytes = total.QuadPart;
    return true;
}

bool GetSizeAndTime(const wchar_t* path, std::uint64_t& size, FILETIME& lastWrite) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!path || !GetFileAttributesExW(path, GetFileExInfoStandard, &data)) return false;
    if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) return false;
    size = (std::uint64_t{data.nFileSizeHigh} << 32) | data.nFileSizeLow;
    lastWrite = data.ftLastWriteTime;
    return true;
}

bool GetSize(const wchar_t* path, std::uint64_t& size) {
    FILETIME ignored{};
    return GetSizeAndTime(path, size, ignored);
}

}  // namespace FileChecks
