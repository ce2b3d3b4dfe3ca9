// CKivFileOpenDlg: choosing a file on the device. The list shows the folder's sub-folders
// (in brackets, "[..]" for the folder above) and then its files that match the extension
// filter ("*.dxf;*.shp"). Up and Down move, Enter opens a folder or chooses a file, Left
// or Backspace goes to the folder above. The dialog opens in the folder remembered for
// its kind of file (through AppStrPaths) and, on OK, remembers the chosen file's folder.
#pragma once

#include "utils/ui/DlgBase.h"

constexpr int IDC_FILEOPEN_FOLDER = 2101;
constexpr int IDC_FILEOPEN_LIST = 2102;
constexpr int IDC_FILEOPEN_FILTER = 2103;

// The kinds of file that have a remembered folder.
enum EKivFileKind : int {
    eFileImportExport = 0,
    eFileCodeLibrary,
    eFileGeoidList,
    eFileBackgroundImage,
    eFileSurface,
    eFileImageData,
    eFileCameraData,
};

class CKivFileOpenDlg : public CDlgBase {
public:
    CKivFileOpenDlg(EKivFileKind kind, LPCWSTR filter, CWnd* parent = nullptr);
    BOOL Create(CWnd* parent = nullptr);
    INT_PTR DoModal() override;

    // The folder shown (a device path without a trailing backslash; "\" at the top).
    const CKivStringT& GetFolder() const { return m_folder; }
    // The chosen file once the dialog ended with IDOK.
    const CKivStringT& GetPathName() const { return m_path; }
    BOOL SetFolder(LPCWSTR folder);
    // The entries as listed, e.g. "[..]", "[Roads]", "site.dxf".
    int GetEntryCount() const;
    CKivStringT GetEntry(int index) const;
    BOOL SelectEntry(LPCWSTR text);

    BOOL OnInitDialog() override;
    int EnterKey() override;
    int ArrowLeftKey() override;
    BOOL PreTranslateMessage(MSG* msg) override;
    void OnOK() override { Open(); }

private:
    void RegisterTemplate() const;
    void Fill();
    void Open();
    void Up();
    bool Matches(const CKivStringT& name) const;

    EKivFileKind m_kind;
    CKivStringT m_filter;
    CKivStringT m_folder;
    CKivStringT m_path;
};
