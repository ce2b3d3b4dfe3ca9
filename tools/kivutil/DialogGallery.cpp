// The gallery's sample screens. Each is made, filled as a user would see it in the field,
// painted and saved, then destroyed before the next.
#include "tools/kivutil/DialogGallery.h"

#include <filesystem>
#include <iostream>
#include <system_error>

#include "platform/host/Host.h"
#include "platform/kivutils/FileFuncs.h"
#include "tools/kivutil/Command.h"
#include "tools/kivutil/DialogView.h"
#include "utils/settings/AppStrPaths.h"
#include "utils/ui/ArrowButton.h"
#include "utils/ui/BitmapButton.h"
#include "utils/ui/CheckListBox.h"
#include "utils/ui/ColourButton.h"
#include "utils/ui/CopyListCtrl.h"
#include "utils/ui/FileOpenDlg.h"
#include "utils/ui/ManualEntryDlg.h"
#include "utils/ui/MenuTable.h"
#include "utils/ui/MessagePopup.h"
#include "utils/ui/PagedToolbar.h"
#include "utils/ui/ProgressDlg.h"
#include "utils/ui/PropertySheet.h"
#include "utils/ui/UiBitmaps.h"

namespace kivutil {

namespace {

// A plain library dialog over a template of the given controls.
class CGalleryDlg : public CDlgBase {
public:
    explicit CGalleryDlg(LPCWSTR name) : CDlgBase(name, nullptr) { ShowOkButton(); }
    BOOL OnInitDialog() override {
        CDlgBase::OnInitDialog();
        return FALSE;
    }
};

void Register(LPCWSTR name, LPCWSTR caption, int height, std::vector<CDialogItemTemplate> items) {
    CDialogTemplate t;
    t.caption = caption;
    t.rect = RECT{0, 0, 240, height};
    t.items = std::move(items);
    AfxRegisterDialogTemplate(name, t);
}

class Gallery {
public:
    explicit Gallery(std::filesystem::path folder) : folder_(std::move(folder)) {}
    bool Save(CWnd& dialog, const char* file) {
        dialog.ShowWindow(SW_SHOW);
        AfxPumpPendingMessages();
        const bool saved = SaveDialogPicture(dialog, (folder_ / file).string());
        ok_ = ok_ && saved;
        return saved;
    }
    bool ok() const { return ok_; }

private:
    std::filesystem::path folder_;
    bool ok_ = true;
};

void PropertySheet(Gallery& g) {
    Register(L"GALLERY_PAGE_GENERAL", L"", 0, {});
    CDialogTemplate general;
    general.style = WS_CHILD;
    general.items = {{L"STATIC", L"Style name", -1, SS_LEFT, RECT{8, 12, 90, 30}},
                     {L"EDIT", L"Topo 1:500", 100, WS_TABSTOP, RECT{96, 8, 232, 32}},
                     {L"STATIC", L"Point prefix", -1, SS_LEFT, RECT{8, 44, 90, 62}},
                     {L"EDIT", L"PT", 101, WS_TABSTOP, RECT{96, 40, 232, 64}},
                     {L"BUTTON", L"Beep on store", 102, WS_TABSTOP | BS_AUTOCHECKBOX, RECT{8, 76, 232, 96}},
                     {L"BUTTON", L"Ask for code", 103, WS_TABSTOP | BS_AUTOCHECKBOX, RECT{8, 100, 232, 120}}};
    AfxRegisterDialogTemplate(L"GALLERY_PAGE_GENERAL", general);
    CDialogTemplate other;
    other.style = WS_CHILD;
    AfxRegisterDialogTemplate(L"GALLERY_PAGE_OTHER", other);
    CKivPropertyPage a(L"GALLERY_PAGE_GENERAL", L"General"), b(L"GALLERY_PAGE_OTHER", L"Heights"),
        c(L"GALLERY_PAGE_OTHER", L"Codes");
    CKivPropertySheet sheet(L"Survey style");
    sheet.AddPage(&a);
    sheet.AddPage(&b);
    sheet.AddPage(&c);
    if (!sheet.Create()) return;
    ::SendMessageW(::GetDlgItem(a.m_hWnd, 102), BM_SETCHECK, BST_CHECKED, 0);
    g.Save(sheet, "property_sheet.png");
    sheet.DestroyWindow();
}

void PagedToolbar(Gallery& g) {
    Register(L"GALLERY_TOOLBAR", L"Stakeout", 240,
             {{L"STATIC", L"Point", -1, SS_LEFT, RECT{8, 40, 80, 58}},
              {L"EDIT", L"PT117", 100, WS_TABSTOP, RECT{84, 36, 232, 60}},
              {L"STATIC", L"Go north 1.204 m", -1, SS_LEFT, RECT{8, 72, 232, 90}},
              {L"STATIC", L"Go east 0.337 m", -1, SS_LEFT, RECT{8, 94, 232, 112}},
              {L"STATIC", L"Cut 0.052 m", -1, SS_LEFT, RECT{8, 116, 232, 134}}});
    CGalleryDlg d(L"GALLERY_TOOLBAR");
    if (!d.Create(L"GALLERY_TOOLBAR")) return;
    CKivPagedToolbar bar;
    bar.Create(&d, 300, 3);
    for (const wchar_t* t : {L"Measure", L"Store", L"Next", L"Offset", L"Map", L"Info", L"Undo"}) bar.AddButton(t, 301);
    bar.SetPage(1);
    g.Save(d, "paged_toolbar.png");
}

void Buttons(Gallery& g) {
    Register(L"GALLERY_BUTTONS", L"Owner-drawn buttons", 110,
             {{L"BUTTON", L"Measure", 100, WS_TABSTOP | BS_OWNERDRAW, RECT{8, 40, 116, 70}},
              {L"BUTTON", L"Store", 101, WS_TABSTOP | BS_OWNERDRAW, RECT{124, 40, 232, 70}},
              {L"BUTTON", L"Disabled", 102, WS_TABSTOP | BS_OWNERDRAW | WS_DISABLED, RECT{8, 76, 116, 104}}});
    {
        CGalleryDlg d(L"GALLERY_BUTTONS");
        if (!d.Create(L"GALLERY_BUTTONS")) return;
        CKivOwnerDrawButton a, b, c;
        a.Attach(100, &d);
        b.Attach(101, &d);
        c.Attach(102, &d);
        ::SetFocus(a.m_hWnd);
        b.SendMessage(BM_SETSTATE, TRUE);
        g.Save(d, "owner_draw_button.png");
    }
    Register(L"GALLERY_BITMAPS", L"Bitmap buttons", 110,
             {{L"BUTTON", L"Settings", 100, WS_TABSTOP | BS_OWNERDRAW, RECT{8, 40, 116, 70}},
              {L"BUTTON", L"Measure", 101, WS_TABSTOP | BS_OWNERDRAW, RECT{124, 40, 232, 70}},
              {L"BUTTON", L"", 102, WS_TABSTOP | BS_OWNERDRAW, RECT{8, 76, 48, 104}},
              {L"BUTTON", L"Check", 103, WS_TABSTOP | BS_OWNERDRAW | WS_DISABLED, RECT{124, 76, 232, 104}}});
    {
        CGalleryDlg d(L"GALLERY_BITMAPS");
        if (!d.Create(L"GALLERY_BITMAPS")) return;
        CKivBitmapButton a, b, c, e;
        const std::pair<CKivBitmapButton*, UINT> all[] = {{&a, IDB_TBAR_SETTINGS}, {&b, IDB_TBAR_EDM}, {&c, IDB_TBAR_OK}, {&e, IDB_TBAR_CHECK}};
        int id = 100;
        for (auto [button, bitmap] : all) {
            button->Attach(static_cast<UINT>(id++), &d);
            button->LoadBitmaps(bitmap);
        }
        g.Save(d, "bitmap_button.png");
    }
    Register(L"GALLERY_ARROWS", L"Arrow-key buttons", 150,
             {{L"BUTTON", L"", 100, WS_TABSTOP | BS_OWNERDRAW, RECT{100, 36, 140, 70}},
              {L"BUTTON", L"", 101, WS_TABSTOP | BS_OWNERDRAW, RECT{56, 74, 96, 108}},
              {L"BUTTON", L"", 102, WS_TABSTOP | BS_OWNERDRAW, RECT{144, 74, 184, 108}},
              {L"BUTTON", L"", 103, WS_TABSTOP | BS_OWNERDRAW, RECT{100, 112, 140, 146}}});
    {
        CGalleryDlg d(L"GALLERY_ARROWS");
        if (!d.Create(L"GALLERY_ARROWS")) return;
        CKivArrowButton up(CKivArrowButton::eUp), left(CKivArrowButton::eLeft), right(CKivArrowButton::eRight),
            down(CKivArrowButton::eDown);
        up.Attach(100, &d);
        left.Attach(101, &d);
        right.Attach(102, &d);
        down.Attach(103, &d);
        g.Save(d, "arrow_button.png");
    }
    Register(L"GALLERY_COLOURS", L"Colour buttons", 130,
             {{L"BUTTON", L"Roads", 100, WS_TABSTOP | BS_OWNERDRAW, RECT{8, 40, 232, 68}},
              {L"BUTTON", L"Fences", 101, WS_TABSTOP | BS_OWNERDRAW, RECT{8, 72, 232, 100}},
              {L"BUTTON", L"Trees", 102, WS_TABSTOP | BS_OWNERDRAW, RECT{8, 104, 232, 126}}});
    {
        CGalleryDlg d(L"GALLERY_COLOURS");
        if (!d.Create(L"GALLERY_COLOURS")) return;
        CKivColourButton a, b, c;
        a.Attach(100, &d);
        b.Attach(101, &d);
        c.Attach(102, &d);
        b.SetColour(RGB(255, 160, 0));
        c.SetColour(RGB(0, 170, 0));
        ::SetFocus(b.m_hWnd);
        g.Save(d, "colour_button.png");
    }
}

void Lists(Gallery& g) {
    CKivCheckListBox::RegisterClass();
    CKivCopyListCtrl::RegisterClass();
    Register(L"GALLERY_CHECKLIST", L"Layers", 220, {{kCheckListClass, L"", 100, WS_TABSTOP, RECT{8, 36, 232, 212}}});
    {
        CGalleryDlg d(L"GALLERY_CHECKLIST");
        if (!d.Create(L"GALLERY_CHECKLIST")) return;
        CKivCheckListBox list;
        list.AttachItem(100, &d);
        for (const wchar_t* layer : {L"Roads", L"Fences", L"Trees", L"Buildings", L"Contours", L"Utilities"}) list.AddString(layer);
        list.SetCheck(0, BST_CHECKED);
        list.SetCheck(2, BST_CHECKED);
        list.SetCheck(5, BST_INDETERMINATE);
        list.SetCurSel(2);
        ::SetFocus(list.m_hWnd);
        g.Save(d, "check_list.png");
        list.Detach();
    }
    Register(L"GALLERY_COPYLIST", L"Points", 220, {{kCopyListClass, L"", 100, WS_TABSTOP, RECT{4, 34, 236, 214}}});
    {
        CGalleryDlg d(L"GALLERY_COPYLIST");
        if (!d.Create(L"GALLERY_COPYLIST")) return;
        CKivCopyListCtrl list;
        list.AttachItem(100, &d);
        list.AddColumn(L"name", L"Point", 52);
        list.AddColumn(L"north", L"North", 68);
        list.AddColumn(L"east", L"East", 68);
        list.AddColumn(L"code", L"Code", 44);
        list.AddRow({L"PT1", L"1000.000", L"5000.000", L"CP"});
        list.AddRow({L"PT2", L"1010.250", L"5003.125", L"FENCE"});
        list.AddRow({L"PT3", L"1020.500", L"5006.250", L"TREE"});
        list.AddRow({L"PT4", L"1031.875", L"5002.500", L"TREE"});
        list.AddRow({L"PT5", L"1040.125", L"4998.750", L"KERB"});
        list.SetSel(1, true);
        list.SetSel(2, true);
        list.SendMessage(LB_SETCURSEL, 2);
        ::SetFocus(list.m_hWnd);
        g.Save(d, "copy_list.png");
        list.Detach();
    }
}

void Menu(Gallery& g) {
    static const TMenuString kMenu[] = {
        {eMenuCommand, L"Store point", 40001}, {eMenuCommand, L"Offset", 40002}, {eMenuSeparator, nullptr, 0},
        {eMenuPopup, L"Units", 0},            {eMenuCommand, L"Metres", 40003}, {eMenuCommand, L"US feet", 40004},
        {eMenuPopupEnd, nullptr, 0},          {eMenuCommand, L"Help", 40005},
    };
    Register(L"GALLERY_MENU", L"Store Point", 220,
             {{L"STATIC", L"Point name", -1, SS_LEFT, RECT{8, 170, 88, 188}}, {L"EDIT", L"PT100", 100, WS_TABSTOP, RECT{92, 166, 232, 190}}});
    CGalleryDlg d(L"GALLERY_MENU");
    if (!d.Create(L"GALLERY_MENU")) return;
    kiv_ui::LoadMenuTable(d, kMenu);
    d.CheckTbarMenuItem(40003, TRUE);
    d.ShowWindow(SW_SHOW);
    d.SendMessage(WM_COMMAND, ID_TBAR_MENU, 0);
    HWND menu = d.GetTitlebar().GetMenuWindow();
    for (int i = 0; i < 2; ++i) ::SendMessageW(menu, WM_KEYDOWN, VK_DOWN, 1);
    g.Save(d, "menu.png");
}

void Progress(Gallery& g) {
    CKivProgressDlg d(L"Importing", L"Reading points from site.dxf...", 200);
    if (!d.Create()) return;
    ::SendMessageW(::GetDlgItem(d.m_hWnd, IDC_PROGRESS_BAR), PBM_SETPOS, 130, 0);
    g.Save(d, "progress.png");
}

void FileOpen(Gallery& g) {
    const std::wstring ie = AppStrPaths::GetPredefinedIEFilePath().GetString();
    FileFuncs::CreateDir(ie.c_str());
    for (const wchar_t* f : {L"\\Roads", L"\\Archive"}) FileFuncs::CreateDir((ie + f).c_str());
    for (const wchar_t* f : {L"\\site.dxf", L"\\boundary.shp", L"\\levels.dxf", L"\\notes.txt"})
        FileFuncs::WriteWholeFile((ie + f).c_str(), "sample");
    CKivFileOpenDlg d(eFileImportExport, L"*.dxf;*.shp");
    if (!d.Create()) return;
    d.SelectEntry(L"site.dxf");
    g.Save(d, "file_open.png");
}

void Entries(Gallery& g) {
    {
        CKivLevelReadingDlg d(kiv_df::eUSFeet);
        if (!d.Create()) return;
        d.SetDlgItemText(IDC_ENTRY_FIRST, L"40");
        d.SetDlgItemText(IDC_ENTRY_FIRST + 1, L"120");
        d.CheckEntries();
        g.Save(d, "level_entry.png");
    }
    CKivDistanceReadingDlg d(kiv_df::eMeters);
    if (!d.Create()) return;
    d.SetDlgItemText(IDC_ENTRY_FIRST, L"152.347");
    d.SetDlgItemText(IDC_ENTRY_FIRST + 1, L"1.800");
    g.Save(d, "distance_entry.png");
}

void MessageBox(Gallery& g) {
    AfxRegisterDialogTemplate(L"GALLERY_MESSAGE", kiv_ui::MessagePopupTemplate(
        L"The point PT100 exists already. Overwrite it with the new measurement?", L"Store Point", MB_YESNOCANCEL));
    CDialog d(L"GALLERY_MESSAGE", nullptr);
    if (!d.Create(L"GALLERY_MESSAGE")) return;
    g.Save(d, "message_box.png");
}

}  // namespace

int SaveDialogGallery(const std::string& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (!std::filesystem::is_directory(folder, error))
        return BadInput("cannot make the folder \"" + folder + "\"; give a folder that can be written to");
    // The open-file dialog lists sample files on a device of its own, so nothing of the
    // user's device is shown or touched.
    const std::filesystem::path device = std::filesystem::temp_directory_path() / ("kivutil-gallery-" + std::to_string(::GetTickCount()));
    std::filesystem::create_directories(device, error);
    kiv_host::SetDeviceRoot(device.string());
    Gallery g(folder);
    PropertySheet(g);
    PagedToolbar(g);
    Buttons(g);
    Lists(g);
    Menu(g);
    Progress(g);
    FileOpen(g);
    Entries(g);
    MessageBox(g);
    std::filesystem::remove_all(device, error);
    return g.ok() ? kExitOk : kExitFailed;
}

}  // namespace kivutil
