// The open-file dialog over a device folder tree: the filter, navigation by keys, and
// the folder it remembers for the next time.
#include "utils/ui/FileOpenDlg.h"

#include <gtest/gtest.h>

#include "platform/kivutils/FileFuncs.h"
#include "tests/support/TestSupport.h"
#include "utils/settings/AppStrPaths.h"

namespace {

void Key(BYTE vk) {
    keybd_event(vk, 0, 0, 0);
    keybd_event(vk, 0, KEYEVENTF_KEYUP, 0);
    AfxPumpPendingMessages();
}

void Touch(const kiv_test::TempDeviceRoot& root, const std::wstring& path) { kiv_test::WriteFileBytes(root.HostPath(path), "x"); }

std::vector<std::wstring> Entries(const CKivFileOpenDlg& d) {
    std::vector<std::wstring> out;
    for (int i = 0; i < d.GetEntryCount(); ++i) out.emplace_back(d.GetEntry(i).GetString());
    return out;
}

TEST(FileOpenDlg, FiltersByExtensionWalksFoldersByKeysAndRemembersTheChosenFolder) {
    kiv_test::TempDeviceRoot root;
    const std::wstring ie = AppStrPaths::GetPredefinedIEFilePath().GetString();
    ASSERT_TRUE(FileFuncs::CreateDir(ie.c_str()));
    ASSERT_TRUE(FileFuncs::CreateDir((ie + L"\\Roads").c_str()));
    Touch(root, ie + L"\\site.DXF");
    Touch(root, ie + L"\\notes.txt");
    Touch(root, ie + L"\\boundary.shp");
    Touch(root, ie + L"\\Roads\\main.dxf");

    {
        CKivFileOpenDlg d(eFileImportExport, L"*.dxf; *.shp");
        ASSERT_TRUE(d.Create());
        d.ShowWindow(SW_SHOW);
        // Nothing remembered yet: the predefined folder, folders first, the filter ignoring case.
        EXPECT_EQ(d.GetFolder(), CKivStringT(ie.c_str()));
        EXPECT_EQ(Entries(d), (std::vector<std::wstring>{L"[..]", L"[Roads]", L"boundary.shp", L"site.DXF"}));
        Key(VK_DOWN);
        Key(VK_RETURN);  // into Roads
        EXPECT_EQ(d.GetFolder(), CKivStringT((ie + L"\\Roads").c_str()));
        EXPECT_EQ(Entries(d), (std::vector<std::wstring>{L"[..]", L"main.dxf"}));
        Key(VK_BACK);  // up again, on the folder just left
        EXPECT_EQ(d.GetEntry(static_cast<int>(SendMessageW(GetDlgItem(d.m_hWnd, IDC_FILEOPEN_LIST), LB_GETCURSEL, 0, 0))),
                  CKivStringT(L"[Roads]"));
        Key(VK_RETURN);
        Key(VK_DOWN);
        Key(VK_RETURN);  // main.dxf
        EXPECT_FALSE(d.IsWindowVisible());
        EXPECT_EQ(d.GetPathName(), CKivStringT((ie + L"\\Roads\\main.dxf").c_str()));
    }
    EXPECT_EQ(AppStrPaths::GetLastIEFilePath(), CKivStringT((ie + L"\\Roads").c_str()));
    {
        // The next dialog of the kind opens where the last one chose; Left climbs out.
        CKivFileOpenDlg d(eFileImportExport, L"*.dxf");
        ASSERT_TRUE(d.Create());
        d.ShowWindow(SW_SHOW);
        EXPECT_EQ(d.GetFolder(), CKivStringT((ie + L"\\Roads").c_str()));
        Key(VK_LEFT);
        EXPECT_EQ(d.GetFolder(), CKivStringT(ie.c_str()));
        EXPECT_EQ(Entries(d), (std::vector<std::wstring>{L"[..]", L"[Roads]", L"site.DXF"}));
        // Another kind of file keeps its own folder.
        EXPECT_NE(AppStrPaths::GetLastTN3FilePath(), AppStrPaths::GetLastIEFilePath());
    }
}

TEST(FileOpenDlg, AForgottenFolderFallsBackToTheTopOfTheDevice) {
    kiv_test::TempDeviceRoot root;
    ASSERT_TRUE(FileFuncs::CreateDir(L"\\Data"));
    Touch(root, L"\\Data\\gone.dxf");
    ASSERT_TRUE(AppStrPaths::StoreTN3FilePath(L"\\Nowhere\\x.tn3"));
    CKivFileOpenDlg d(eFileSurface, L"*.tn3");
    ASSERT_TRUE(d.Create());
    EXPECT_EQ(d.GetFolder(), CKivStringT(L"\\"));
    EXPECT_EQ(d.GetEntry(0), CKivStringT(L"[Data]"));
    Key(VK_LEFT);  // already at the top
    EXPECT_EQ(d.GetFolder(), CKivStringT(L"\\"));
}

}  // namespace
