// Text resources bound to a window's children, applied through the loaded language.
#include <gtest/gtest.h>

#include "platform/kivutils/Xlate.h"
#include "tests/support/TestSupport.h"
#include "utils/runtime/DlgTextBinding.h"

namespace {

enum : unsigned { IDS_TITLE = 100, IDS_OK = 101, IDS_CANCEL = 102, IDS_HEIGHT = 103 };
enum : int { IDOK_BUTTON = 1, IDCANCEL_BUTTON = 2, IDC_HEIGHT_LABEL = 1001, IDC_MISSING = 1999 };

const TKivTextResource kStrings[] = {
    {IDS_TITLE, L"Stake out"}, {IDS_OK, L"OK"}, {IDS_CANCEL, L"Cancel"}, {IDS_HEIGHT, L"Height:\tm"}};
const TKivControlText kControls[] = {{CKivDlgTextBinding::kCaption, IDS_TITLE},
                                     {IDOK_BUTTON, IDS_OK},
                                     {IDCANCEL_BUTTON, IDS_CANCEL},
                                     {IDC_HEIGHT_LABEL, IDS_HEIGHT}};

class DlgTextBinding : public ::testing::Test {
protected:
    void SetUp() override {
        dialog = kiv_test::MakePlainWindow(240, 320);
        for (int id : {IDOK_BUTTON, IDCANCEL_BUTTON, IDC_HEIGHT_LABEL}) kiv_test::MakePlainWindow(50, 20, WS_CHILD, dialog, id, L"?");
    }
    void TearDown() override {
        DestroyWindow(dialog);
        UnloadLanguage();
    }
    void LoadLanguage(const char* name, const std::string& lines) {
        const std::string path = root.path() + "/" + name;
        kiv_test::WriteFileBytes(path, lines);
        const std::wstring wide(path.begin(), path.end());
        ASSERT_TRUE(LoadLanguageFile(wide.c_str()));
    }
    CKivStringT TextOf(int id) {
        wchar_t text[64] = {};
        GetWindowTextW(id == CKivDlgTextBinding::kCaption ? dialog : GetDlgItem(dialog, id), text, 64);
        return CKivStringT(text);
    }

    kiv_test::TempDeviceRoot root;
    HWND dialog = nullptr;
};

TEST_F(DlgTextBinding, AppliesTheSameTableInTheLanguageLoadedAtTheTime) {
    CKivTextResources strings(kStrings, 4);
    CKivDlgTextBinding binding(strings, kControls, 4);

    ASSERT_TRUE(binding.Apply(dialog));
    EXPECT_EQ(TextOf(CKivDlgTextBinding::kCaption), L"Stake out");
    EXPECT_EQ(TextOf(IDC_HEIGHT_LABEL), L"Height:\tm");

    LoadLanguage("deutsch.lng", "Stake out\tAbstecken\nCancel\tAbbrechen\nHeight:\\tm\tH\xC3\xB6he:\\tm\n");
    ASSERT_TRUE(binding.Apply(dialog));
    EXPECT_EQ(TextOf(CKivDlgTextBinding::kCaption), L"Abstecken");
    EXPECT_EQ(TextOf(IDOK_BUTTON), L"OK") << "a text the language file leaves out stays as written";
    EXPECT_EQ(TextOf(IDCANCEL_BUTTON), L"Abbrechen");
    EXPECT_EQ(TextOf(IDC_HEIGHT_LABEL), L"H\u00F6he:\tm");

    LoadLanguage("francais.lng", "# interface\nStake out\tImplantation\nCancel\tAnnuler\nOK\tValider\n");
    ASSERT_TRUE(binding.Apply(dialog));
    EXPECT_EQ(TextOf(CKivDlgTextBinding::kCaption), L"Implantation");
    EXPECT_EQ(TextOf(IDOK_BUTTON), L"Valider");
    EXPECT_EQ(TextOf(IDCANCEL_BUTTON), L"Annuler");
    EXPECT_EQ(TextOf(IDC_HEIGHT_LABEL), L"Height:\tm");
}

TEST_F(DlgTextBinding, MissingControlsAndStringsAreReportedAndTheRestApplied) {
    CKivTextResources strings(kStrings, 4);
    CKivDlgTextBinding binding(strings);
    binding.Bind(IDC_MISSING, IDS_OK);
    binding.Bind(IDOK_BUTTON, 999);
    binding.Bind(IDCANCEL_BUTTON, IDS_OK);
    binding.Bind(IDCANCEL_BUTTON, IDS_CANCEL);  // bound again: the later string holds
    EXPECT_EQ(binding.GetCount(), 3);

    kiv_test::LogCapture log;
    EXPECT_FALSE(binding.Apply(dialog));
    EXPECT_EQ(log.count(), 2u);
    EXPECT_EQ(TextOf(IDOK_BUTTON), L"?");
    EXPECT_EQ(TextOf(IDCANCEL_BUTTON), L"Cancel");
    EXPECT_FALSE(binding.Apply(nullptr));
}

}  // namespace
