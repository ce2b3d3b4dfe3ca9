// The find handle holds the matching names of the folder, read once when it is made, so
// that changes to the folder while it is walked neither crash nor repeat entries.
#include "platform/win32/FileFind.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "platform/host/Host.h"
#include "platform/host/TextCodec.h"

namespace {

class FindObject : public kiv_win32::HandleObject {
public:
    std::wstring folder;  // with its trailing separator
    std::vector<std::wstring> names;
    size_t next = 0;
};

bool Fill(const FindObject& f, const std::wstring& name, LPWIN32_FIND_DATAW data) {
    *data = WIN32_FIND_DATAW{};
    WIN32_FILE_ATTRIBUTE_DATA info{};
    const std::wstring path = f.folder + name;
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &info)) return false;
    data->dwFileAttributes = info.dwFileAttributes;
    data->ftCreationTime = info.ftCreationTime;
    data->ftLastAccessTime = info.ftLastAccessTime;
    data->ftLastWriteTime = info.ftLastWriteTime;
    data->nFileSizeHigh = info.nFileSizeHigh;
    data->nFileSizeLow = info.nFileSizeLow;
    std::copy(name.begin(), name.end(), data->cFileName);
    data->cFileName[name.size()] = L'\0';
    return true;
}

// Hands out the next entry that can still be described; an entry removed since the
// folder was read is passed over.
bool Next(FindObject& f, LPWIN32_FIND_DATAW data) {
    while (f.next < f.names.size())
        if (Fill(f, f.names[f.next++], data)) return true;
    return false;
}

}  // namespace

HANDLE FindFirstFileW(LPCWSTR pattern, LPWIN32_FIND_DATAW data) {
    if (!pattern || !data || !*pattern) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    const std::wstring whole(pattern);
    const size_t cut = whole.find_last_of(L"\\/");
    const std::wstring folder = cut == std::wstring::npos ? L"" : whole.substr(0, cut + 1);
    const std::wstring mask = cut == std::wstring::npos ? whole : whole.substr(cut + 1);
    const std::string host = folder.empty() ? std::string(".") : kiv_host::ToHostPath(folder);
    std::error_code error;
    if (!std::filesystem::is_directory(host, error)) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    auto find = std::make_shared<FindObject>();
    find->folder = folder;
    for (std::filesystem::directory_iterator it(host, error), end; !error && it != end; it.increment(error)) {
        const std::wstring name = kiv_text::FromUtf8(it->path().filename().string());
        if (name.size() < MAX_PATH && kiv_win32::MatchesWildcard(mask, name)) find->names.push_back(name);
    }
    std::sort(find->names.begin(), find->names.end());
    if (!Next(*find, data)) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    return kiv_win32::AddHandle(find);
}

BOOL FindNextFileW(HANDLE find, LPWIN32_FIND_DATAW data) {
    auto f = kiv_win32::FindHandleAs<FindObject>(find);
    if (!f || !data) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (Next(*f, data)) return TRUE;
    SetLastError(ERROR_NO_MORE_FILES);
    return FALSE;
}

BOOL FindClose(HANDLE find) {
    if (!kiv_win32::FindHandleAs<FindObject>(find)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    kiv_win32::RemoveHandle(find);
    return TRUE;
}
