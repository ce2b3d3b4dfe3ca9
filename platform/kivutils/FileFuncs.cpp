// File and folder checks, path-name helpers, whole-file replacement and the base folders.
#include "platform/kivutils/FileFuncs.h"

#include <algorithm>

#include "platform/host/Host.h"
#include "platform/win32/Win32.h"
#include "platform/win32/WholeFile.h"

namespace FileFuncs {
namespace {

bool IsSeparator(wchar_t c) { return c == L'\\' || c == L'/'; }

std::wstring_view ViewOf(const wchar_t* path) { return path ? std::wstring_view(path) : std::wstring_view(); }

size_t LastSeparator(std::wstring_view path) { return path.find_last_of(L"\\/"); }

std::wstring_view NameOf(std::wstring_view path) {
    const size_t sep = LastSeparator(path);
    return sep == std::wstring_view::npos ? path : path.substr(sep + 1);
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

bool WriteWholeFile(const wchar_t* path, std::string_view bytes) { return kiv_win32::ReplaceWholeFile(path, bytes); }

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
