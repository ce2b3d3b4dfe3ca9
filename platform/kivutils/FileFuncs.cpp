// File and folder checks, path-name helpers, whole-file replacement and the base folders.
#include "platform/kivutils/FileFuncs.h"

#include <algorithm>
#include <atomic>
#include <random>

#include "platform/host/Host.h"
#include "platform/win32/Win32.h"

namespace FileFuncs {
namespace {

bool IsSeparator(wchar_t c) { return c == L'\\' || c == L'/'; }

std::wstring_view ViewOf(const wchar_t* path) { return path ? std::wstring_view(path) : std::wstring_view(); }

size_t LastSeparator(std::wstring_view path) { return path.find_last_of(L"\\/"); }

std::wstring_view NameOf(std::wstring_view path) {
    const size_t sep = LastSeparator(path);
    return sep == std::wstring_view::npos ? path : path.substr(sep + 1);
}

// A temporary name beside the target that no other writer picks: a per-process random
// stem and a counter.
CKivStringT TemporarySibling(const wchar_t* path) {
    static const unsigned stem = std::random_device{}();
    static std::atomic<unsigned> counter{0};
    CKivStringT name(path);
    name.AppendFormat(L".~%08x%04x", stem, counter++ & 0xFFFF);
    return name;
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

bool IsFileExist(const wchar_t* path) {
    const DWORD attributes = GetFileAttributesW(path);
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool IsDirExist(const wchar_t* path) {
    const DWORD attributes = GetFileAttributesW(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool CreateDir(const wchar_t* path) {
    const std::wstring_view full = ViewOf(path);
    if (full.empty()) return false;
    for (size_t i = 1; i <= full.size(); ++i) {
        const bool endOfComponent = i == full.size() || IsSeparator(full[i]);
        if (!endOfComponent || IsSeparator(full[i - 1])) continue;
        const std::wstring prefix(full.substr(0, i));
        if (!IsDirExist(prefix.c_str())) CreateDirectoryW(prefix.c_str(), nullptr);
    }
    return IsDirExist(path);
}

CKivStringT ExtractFileNameExtFromPathName(const wchar_t* path) {
    const std::wstring_view name = NameOf(ViewOf(path));
    const size_t dot = name.find_last_of(L'.');
    return dot == std::wstring_view::npos ? CKivStringT() : CKivStringT(name.substr(dot + 1));
}

CKivStringT ExtractFileNameFromPathName(const wchar_t* path) { return CKivStringT(NameOf(ViewOf(path))); }

CKivStringT ExtractFileTitleFromPathName(const wchar_t* path) {
    const std::wstring_view name = NameOf(ViewOf(path));
    return CKivStringT(name.substr(0, name.find_last_of(L'.')));
}

CKivStringT ExtractDirNameWithSlashFromPathName(const wchar_t* path) {
    const std::wstring_view full = ViewOf(path);
    const size_t sep = LastSeparator(full);
    return sep == std::wstring_view::npos ? CKivStringT() : CKivStringT(full.substr(0, sep + 1));
}

CKivStringT ExtractDirNameWithoutSlashFromPathName(const wchar_t* path) {
    const std::wstring_view full = ViewOf(path);
    const size_t sep = LastSeparator(full);
    return sep == std::wstring_view::npos ? CKivStringT() : CKivStringT(full.substr(0, sep));
}

CKivStringT CombinePath(const wchar_t* folder, const wchar_t* name) {
    std::wstring_view head = ViewOf(folder), tail = ViewOf(name);
    while (!head.empty() && IsSeparator(head.back())) head.remove_suffix(1);
    while (!tail.empty() && IsSeparator(tail.front())) tail.remove_prefix(1);
    if (head.empty() && folder && *folder) return CKivStringT(L"\\") + CKivStringT(tail);
    if (head.empty()) return CKivStringT(tail);
    return CKivStringT(head) + L"\\" + CKivStringT(tail);
}

bool WriteWholeFile(const wchar_t* path, std::string_view bytes) {
    if (!path || !*path) return false;
    const DWORD old = GetFileAttributesW(path);
    // A read-only file is left alone rather than replaced behind its owner's back.
    if (old != INVALID_FILE_ATTRIBUTES && (old & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY))) {
        return false;
    }
    CKivStringT temporary;
    HANDLE file = INVALID_HANDLE_VALUE;
    for (int attempt = 0; attempt < 16 && file == INVALID_HANDLE_VALUE; ++attempt) {
        temporary = TemporarySibling(path);
        file = CreateFileW(temporary, GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE && GetLastError() != ERROR_FILE_EXISTS) return false;
    }
    if (file == INVALID_HANDLE_VALUE) return false;
    const bool written = WriteAll(file, bytes) && FlushFileBuffers(file);
    CloseHandle(file);
    if (!written || !MoveFileExW(temporary, path, MOVEFILE_REPLACE_EXISTING)) {
        const DWORD error = GetLastError();
        DeleteFileW(temporary);
        SetLastError(error);
        return false;
    }
    if (old != INVALID_FILE_ATTRIBUTES && (old & FILE_ATTRIBUTE_HIDDEN)) {
        SetFileAttributesW(path, FILE_ATTRIBUTE_HIDDEN);
    }
    return true;
}

}  // namespace FileFuncs

namespace {

CKivStringT WithoutTrailingBackslash(std::wstring folder) {
    while (!folder.empty() && (folder.back() == L'\\' || folder.back() == L'/')) folder.pop_back();
    return CKivStringT(std::move(folder));
}

}  // namespace

CKivStringT GetExeDir() { return WithoutTrailingBackslash(kiv_host::GetExeFolder()); }
CKivStringT GetRootDir() { return WithoutTrailingBackslash(kiv_host::GetRootFolder()); }
CKivStringT GetDocsDir() { return WithoutTrailingBackslash(kiv_host::GetDocsFolder()); }
