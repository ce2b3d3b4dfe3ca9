// The open-file dialog: the folder's listing through FindFirstFileW, the extension
// filter, folder navigation and the remembered folders.
#include "utils/ui/FileOpenDlg.h"

#include <algorithm>
#include <vector>

#include "platform/kivutils/FileFuncs.h"
#include "platform/win32/FileFind.h"
#include "platform/kivutils/Xlate.h"
#include "utils/settings/AppStrPaths.h"

namespace {

constexpr const wchar_t* kFileOpenTemplate = L"#KivFileOpen";

CKivStringT RememberedFolder(EKivFileKind kind) {
    switch (kind) {
        case eFileCodeLibrary: return AppStrPaths::GetLastCodeLibraryPath();
        case eFileGeoidList: return AppStrPaths::GetGeoidsListPath();
        case eFileBackgroundImage: return AppStrPaths::GetLastBackgroundImagesPath();
        case eFileSurface: return AppStrPaths::GetLastTN3FilePath();
        case eFileImageData: return AppStrPaths::GetLastImageDataPath();
        case eFileCameraData: return AppStrPaths::GetLastCameraDataPath();
        default: return AppStrPaths::GetLastIEFilePath();
    }
}

bool Remember(EKivFileKind kind, const CKivStringT& file) {
    switch (kind) {
        case eFileCodeLibrary: return AppStrPaths::StoreCodeLibraryPath(file);
        case eFileGeoidList: return AppStrPaths::StoreGeoidsListPath(file);
        case eFileBackgroundImage: return AppStrPaths::StoreLastBackgroundImagesPath(file);
        case eFileSurface: return AppStrPaths::StoreTN3FilePath(file);
        case eFileImageData: return AppStrPaths::StoreImageDataPath(file);
        case eFileCameraData: return AppStrPaths::StoreCameraDataPath(file);
        default: return AppStrPaths::StoreIEFilePath(file);
    }
}

// "\a\b\" and "\a\b" are the same folder; the top stays "\".
CKivStringT Normalised(LPCWSTR folder) {
    CKivStringT f = folder ? folder : L"";
    while (f.GetLength() > 1 && f.Right(1) == L"\\") f = f.Left(f.GetLength() - 1);
    return f.IsEmpty() ? CKivStringT(L"\\") : f;
}

CKivStringT Child(const CKivStringT& folder, const CKivStringT& name) {
    return folder == L"\\" ? L"\\" + name : folder + L"\\" + name;
}

bool IsFolderEntry(const CKivStringT& e) { return e.GetLength() >= 2 && e.Left(1) == L"[" && e.Right(1) == L"]"; }

}  // namespace

CKivFileOpenDlg::CKivFileOpenDlg(EKivFileKind kind, LPCWSTR filter, CWnd* parent)
    : CDlgBase(kFileOpenTemplate, parent), m_kind(kind), m_filter(filter && *filter ? filter : L"*.*") {
    ShowOkButton();
    ShowCancelButton();
    HideMenuButton();
}

void CKivFileOpenDlg::RegisterTemplate() const {
    CDialogTemplate t;
    t.caption = Xlate(L"Open file");
    t.rect = RECT{0, 0, 240, 320};
    t.items.push_back({L"STATIC", L"", IDC_FILEOPEN_FOLDER, SS_LEFT, RECT{6, 32, 234, 50}});
    t.items.push_back({L"LISTBOX", L"", IDC_FILEOPEN_LIST, WS_TABSTOP, RECT{6, 52, 234, 290}});
    t.items.push_back({L"STATIC", L"", IDC_FILEOPEN_FILTER, SS_LEFT, RECT{6, 294, 234, 314}});
    AfxRegisterDialogTemplate(kFileOpenTemplate, t);
}

BOOL CKivFileOpenDlg::Create(CWnd* parent) {
    RegisterTemplate();
    return CDlgBase::Create(kFileOpenTemplate, parent);
}

INT_PTR CKivFileOpenDlg::DoModal() {
    RegisterTemplate();
    return CDlgBase::DoModal();
}

BOOL CKivFileOpenDlg::OnInitDialog() {
    CDlgBase::OnInitDialog();
    SetDlgItemText(IDC_FILEOPEN_FILTER, CKivStringT(Xlate(L"Files: ")) + m_filter);
    // A remembered folder that has gone since is replaced by the top of the device.
    CKivStringT start = Normalised(RememberedFolder(m_kind));
    if (!FileFuncs::IsDirExist(start)) start = L"\\";
    SetFolder(start);
    SetDlgItemFocus(IDC_FILEOPEN_LIST);
    return FALSE;
}

bool CKivFileOpenDlg::Matches(const CKivStringT& name) const {
    int at = 0;
    for (CKivStringT pattern = m_filter.Tokenize(L";", at); at >= 0; pattern = m_filter.Tokenize(L";", at)) {
        pattern.Trim();
        if (!pattern.IsEmpty() && kiv_win32::MatchesWildcard(pattern.view(), name.view())) return true;
    }
    return false;
}

BOOL CKivFileOpenDlg::SetFolder(LPCWSTR folder) {
    const CKivStringT f = Normalised(folder);
    if (!FileFuncs::IsDirExist(f)) return FALSE;
    m_folder = f;
    Fill();
    return TRUE;
}

void CKivFileOpenDlg::Fill() {
    HWND list = ::GetDlgItem(m_hWnd, IDC_FILEOPEN_LIST);
    if (!list) return;
    SetDlgItemText(IDC_FILEOPEN_FOLDER, m_folder);
    ::SendMessageW(list, LB_RESETCONTENT, 0, 0);
    std::vector<CKivStringT> folders, files;
    WIN32_FIND_DATAW data{};
    HANDLE find = ::FindFirstFileW(Child(m_folder, L"*"), &data);
    if (find != INVALID_HANDLE_VALUE) {
        do {
            const CKivStringT name = data.cFileName;
            // A desktop's listing also names the folder itself and its parent; the list
            // offers "[..]" of its own.
            if (name == L"." || name == L"..") continue;
            if (data.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN) continue;
            if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) folders.push_back(L"[" + name + L"]");
            else if (Matches(name)) files.push_back(name);
        } while (::FindNextFileW(find, &data));
        ::FindClose(find);
    }
    auto byName = [](const CKivStringT& a, const CKivStringT& b) { return a.CompareNoCase(b) < 0; };
    std::sort(folders.begin(), folders.end(), byName);
    std::sort(files.begin(), files.end(), byName);
    if (m_folder != L"\\") folders.insert(folders.begin(), L"[..]");
    for (const auto* group : {&folders, &files})
        for (const CKivStringT& e : *group) ::SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(e.GetString()));
    ::SendMessageW(list, LB_SETCURSEL, 0, 0);
}

int CKivFileOpenDlg::GetEntryCount() const {
    return static_cast<int>(::SendMessageW(::GetDlgItem(m_hWnd, IDC_FILEOPEN_LIST), LB_GETCOUNT, 0, 0));
}

CKivStringT CKivFileOpenDlg::GetEntry(int index) const {
    HWND list = ::GetDlgItem(m_hWnd, IDC_FILEOPEN_LIST);
    const LRESULT length = ::SendMessageW(list, LB_GETTEXTLEN, static_cast<WPARAM>(index), 0);
    if (length < 0) return CKivStringT();
    std::wstring text(static_cast<size_t>(length) + 1, L'\0');
    ::SendMessageW(list, LB_GETTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<size_t>(length));
    return CKivStringT(text.c_str());
}

BOOL CKivFileOpenDlg::SelectEntry(LPCWSTR text) {
    for (int i = 0; i < GetEntryCount(); ++i)
        if (GetEntry(i).CompareNoCase(text) == 0)
            return ::SendMessageW(::GetDlgItem(m_hWnd, IDC_FILEOPEN_LIST), LB_SETCURSEL, static_cast<WPARAM>(i), 0) >= 0;
    return FALSE;
}

void CKivFileOpenDlg::Up() {
    if (m_folder == L"\\") return;
    const CKivStringT from = m_folder;
    const int cut = m_folder.ReverseFind(L'\\');
    SetFolder(cut <= 0 ? L"\\" : m_folder.Left(cut).GetString());
    // The folder just left stays current, so Enter goes straight back into it.
    SelectEntry(L"[" + from.Mid(from.ReverseFind(L'\\') + 1) + L"]");
}

void CKivFileOpenDlg::Open() {
    const int current = static_cast<int>(::SendMessageW(::GetDlgItem(m_hWnd, IDC_FILEOPEN_LIST), LB_GETCURSEL, 0, 0));
    if (current < 0) return;
    const CKivStringT entry = GetEntry(current);
    if (entry == L"[..]") return Up();
    if (IsFolderEntry(entry)) {
        SetFolder(Child(m_folder, entry.Mid(1, entry.GetLength() - 2)));
        return;
    }
    m_path = Child(m_folder, entry);
    Remember(m_kind, m_path);
    EndDialog(IDOK);
}

int CKivFileOpenDlg::EnterKey() {
    Open();
    return 1;
}

int CKivFileOpenDlg::ArrowLeftKey() {
    Up();
    return 1;
}

BOOL CKivFileOpenDlg::PreTranslateMessage(MSG* msg) {
    if (msg->message == WM_KEYDOWN && msg->wParam == VK_BACK) {
        Up();
        return TRUE;
    }
    return CDlgBase::PreTranslateMessage(msg);
}
