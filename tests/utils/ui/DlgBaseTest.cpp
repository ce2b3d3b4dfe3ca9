// The dialog base driven through its windows: title-bar building, key dispatch, the
// keyboard hook, the open and close notifications, the control helpers and the modal loop.
#include "utils/ui/DlgBase.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/TestSupport.h"
#include "utils/ui/DlgSupport.h"
#include "utils/ui/KeyInput.h"

namespace {

constexpr int kEdit1 = 100;
constexpr int kEdit2 = 101;
constexpr int kButton = 102;

void RegisterSample() {
    CDialogTemplate t;
    t.caption = L"Sample";
    t.rect = RECT{0, 0, 240, 200};
    t.items.push_back({L"EDIT", L"alpha", kEdit1, WS_TABSTOP, RECT{10, 40, 200, 62}});
    t.items.push_back({L"EDIT", L"beta", kEdit2, WS_TABSTOP, RECT{10, 70, 200, 92}});
    t.items.push_back({L"BUTTON", L"Go", kButton, WS_TABSTOP | BS_PUSHBUTTON, RECT{10, 100, 80, 124}});
    AfxRegisterDialogTemplate(L"DLGBASE_TEST", t);
}

// Counts the handlers that ran and answers with what the test asks.
class CProbeDlg : public CDlgBase {
public:
    explicit CProbeDlg(CWnd* parent = nullptr) : CDlgBase(L"DLGBASE_TEST", parent) {}
    int ArrowLeftKey() override { ++left; return swallowArrows; }
    int ArrowLeftKey_Keyup() override { ++leftUp; return swallowArrows; }
    int EnterKey() override { ++enter; return 1; }
    int FunctionKeyF3() override { ++f3; return 0; }
    void UpdateAlphaKeyIndicator() override {
        ++alpha;
        CDlgBase::UpdateAlphaKeyIndicator();
    }
    int swallowArrows = 0;
    int left = 0, leftUp = 0, enter = 0, f3 = 0, alpha = 0;
};

// A plain window that records what is sent to it.
std::vector<UINT> g_received;
LRESULT CALLBACK RecorderProc(HWND w, UINT m, WPARAM wp, LPARAM lp) {
    g_received.push_back(m);
    return DefWindowProcW(w, m, wp, lp);
}
HWND MakeRecorder() {
    WNDCLASSW wc{};
    wc.lpfnWndProc = &RecorderProc;
    wc.lpszClassName = L"DlgBaseRecorder";
    RegisterClassW(&wc);
    return CreateWindowExW(0, L"DlgBaseRecorder", L"", WS_POPUP, 0, 0, 240, 320, nullptr, nullptr, nullptr, nullptr);
}

bool Received(UINT m) { return std::find(g_received.begin(), g_received.end(), m) != g_received.end(); }

bool TakePosted(HWND w, UINT m) {
    MSG msg{};
    while (PeekMessageW(&msg, w, 0, 0, PM_REMOVE))
        if (msg.message == m) return true;
    return false;
}

void Key(BYTE vk, bool up = false) { keybd_event(vk, 0, up ? KEYEVENTF_KEYUP : 0, 0); }

class DlgBaseTest : public ::testing::Test {
protected:
    void SetUp() override {
        RegisterSample();
        SetCountry(eCountryUSA);
        SetShowAlphaKeyMode(false);
        SetBoldFont(false);
        AfxSetMainWnd(nullptr);
        g_received.clear();
        MSG m{};
        while (PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) {}
    }
    void TearDown() override {
        MSG m{};
        while (PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) {}
    }
};

TEST_F(DlgBaseTest, TitleBarButtonsTakeTheirNamesFromWhatElseIsShown) {
    {
        CProbeDlg d;
        d.ShowOkButton();
        d.ShowCancelButton();
        ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
        EXPECT_EQ(d.GetTitlebar().GetItemCommand(L"Y"), IDOK);
        EXPECT_EQ(d.GetTitlebar().GetItemCommand(L"Z"), IDCANCEL);
        EXPECT_EQ(d.GetTitlebar().GetLayoutOrder(), CKivStringT(L"ABYZ"));
    }
    {
        // OK alone (Close hidden) stands at the right edge as "Z".
        CProbeDlg d;
        d.ShowOkButton();
        d.HideCloseButton();
        ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
        EXPECT_EQ(d.GetTitlebar().GetItemCommand(L"Z"), IDOK);
        EXPECT_FALSE(d.GetTitlebar().HasItem(L"Y"));
    }
    {
        // Finish after OK leaves one IDOK button; Close is the default right-hand button.
        CProbeDlg d;
        d.ShowOkButton();
        d.ShowFinishButton();
        ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
        EXPECT_EQ(d.GetTitlebar().GetItemCommand(L"Y"), IDOK);
        EXPECT_EQ(d.GetTitlebar().GetItemCommand(L"Z"), IDCANCEL);
    }
    {
        CProbeDlg d;
        d.HideTitle();
        d.HideMenuButton();
        d.HideCloseButton();
        ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
        EXPECT_EQ(d.GetTitlebar().GetLayoutOrder(), CKivStringT(L""));
    }
}

TEST_F(DlgBaseTest, MenuGetsHelpExceptInCountry81) {
    {
        CProbeDlg d;
        ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
        ASSERT_EQ(d.GetTitlebar().GetMenuItems().size(), 1u);
        EXPECT_EQ(d.GetTitlebar().GetMenuItems()[0].id, ID_TBAR_HELP);
        EXPECT_EQ(d.GetTitlebar().GetMenuItems()[0].text, CKivStringT(L"Help"));
    }
    SetCountry(static_cast<EKivCountryLocalization>(81));
    CProbeDlg d;
    ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
    EXPECT_EQ(d.GetTitlebar().GetItemCommand(L"A"), static_cast<int>(ID_TBAR_MENU));
    EXPECT_TRUE(d.GetTitlebar().GetMenuItems().empty());
}

TEST_F(DlgBaseTest, TitleFollowsTheWindowTextAndTheBackgroundIsButtonFace) {
    CProbeDlg d;
    ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
    EXPECT_EQ(d.GetTitlebar().GetItemText(L"B"), CKivStringT(L"Sample"));
    d.SetWindowTextW(L"Renamed");
    EXPECT_EQ(d.GetTitlebar().GetItemText(L"B"), CKivStringT(L"Renamed"));
    // The colour asked for in the constructor is ignored on purpose.
    EXPECT_EQ(d.GetBackgroundColour(), GetSysColor(COLOR_BTNFACE));
}

TEST_F(DlgBaseTest, ArrowHandlersSwallowOrPassTheKey) {
    CProbeDlg d;
    ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
    HWND edit = GetDlgItem(d.m_hWnd, kEdit1);
    SetFocus(edit);
    AfxPumpPendingMessages();
    SendMessageW(edit, EM_SETSEL, 5, 5);

    d.swallowArrows = 1;
    Key(VK_LEFT);
    Key(VK_LEFT, true);
    AfxPumpPendingMessages();
    EXPECT_EQ(d.left, 1);
    EXPECT_EQ(d.leftUp, 1);
    EXPECT_EQ(HIWORD(SendMessageW(edit, EM_GETSEL, 0, 0)), 5) << "a swallowed arrow never reaches the field";

    d.swallowArrows = 0;
    Key(VK_LEFT);
    Key(VK_LEFT, true);
    AfxPumpPendingMessages();
    EXPECT_EQ(d.left, 2);
    EXPECT_EQ(HIWORD(SendMessageW(edit, EM_GETSEL, 0, 0)), 4);
}

TEST_F(DlgBaseTest, KeyFlagsAndTheAlphaKey) {
    CProbeDlg d;
    ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
    MSG alpha{GetDlgItem(d.m_hWnd, kEdit1), WM_KEYDOWN, VK_F24, 0, 0, {}};
    EXPECT_FALSE(d.PreTranslateMessage(&alpha));
    EXPECT_EQ(d.alpha, 0) << "the indicator is left alone while the alpha-key mode is off";

    SetShowAlphaKeyMode(true);
    EXPECT_FALSE(d.PreTranslateMessage(&alpha)) << "the alpha key is never swallowed";
    EXPECT_EQ(d.alpha, 1);
    EXPECT_TRUE(d.GetTitlebar().HasItem(L"R"));

    MSG enter{GetDlgItem(d.m_hWnd, kEdit1), WM_KEYDOWN, VK_RETURN, 0, 0, {}};
    EXPECT_TRUE(d.PreTranslateMessage(&enter));
    EXPECT_EQ(d.enter, 1);
    MSG f3{GetDlgItem(d.m_hWnd, kEdit1), WM_KEYDOWN, VK_F3, 0, 0, {}};
    EXPECT_FALSE(d.PreTranslateMessage(&f3));
    EXPECT_EQ(d.f3, 1);
}

TEST_F(DlgBaseTest, TapPostsShowKeyInputAndOpensTheKeyboardOverEditFields) {
    HWND keyboard = kiv_ui::CreateSoftKeyboardWindow();
    ASSERT_TRUE(keyboard);
    ShowWindow(keyboard, SW_HIDE);
    CProbeDlg d;
    ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
    HWND edit = GetDlgItem(d.m_hWnd, kEdit1);
    MSG tap{edit, WM_LBUTTONUP, 0, 0, 0, {}};
    EXPECT_FALSE(d.PreTranslateMessage(&tap));
    MSG posted{};
    ASSERT_TRUE(PeekMessageW(&posted, d.m_hWnd, WM_KIV_SHOW_KEYINPUT, WM_KIV_SHOW_KEYINPUT, PM_NOREMOVE));
    EXPECT_EQ(posted.wParam, static_cast<WPARAM>(WM_LBUTTONUP));
    EXPECT_EQ(reinterpret_cast<HWND>(posted.lParam), edit);
    AfxPumpPendingMessages();
    EXPECT_TRUE(IsWindowVisible(keyboard));

    // A button does not want the keyboard.
    ShowWindow(keyboard, SW_HIDE);
    MSG buttonTap{GetDlgItem(d.m_hWnd, kButton), WM_LBUTTONUP, 0, 0, 0, {}};
    d.PreTranslateMessage(&buttonTap);
    AfxPumpPendingMessages();
    EXPECT_FALSE(IsWindowVisible(keyboard));
    DestroyWindow(keyboard);
}

TEST_F(DlgBaseTest, OpeningIsToldToTheParentOfATopLevelDialogOnly) {
    HWND parentWindow = MakeRecorder();
    CWnd parent;
    parent.Attach(parentWindow);
    {
        CProbeDlg d(&parent);
        ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
        EXPECT_TRUE(Received(WM_KIV_DIALOG_OPENED));
        EXPECT_FALSE(d.IsChildOfDialog());
        EXPECT_EQ(kiv_ui::GetTopMostDialog(), d.m_hWnd);

        // A dialog over a dialog tells nobody.
        g_received.clear();
        CProbeDlg inner(&d);
        ASSERT_TRUE(inner.Create(L"DLGBASE_TEST"));
        EXPECT_TRUE(inner.IsChildOfDialog());
        EXPECT_FALSE(Received(WM_KIV_DIALOG_OPENED));
        EXPECT_EQ(kiv_ui::GetTopMostDialog(), inner.m_hWnd);
        inner.DestroyWindow();
        EXPECT_EQ(kiv_ui::GetTopMostDialog(), d.m_hWnd);
        EXPECT_FALSE(TakePosted(d.m_hWnd, WM_KIV_DIALOG_CLOSED));
    }
    parent.Detach();
    DestroyWindow(parentWindow);
}

TEST_F(DlgBaseTest, ClosingIsPostedToTheMainWindowOrTheParentOrNobody) {
    HWND mainWindow = MakeRecorder();
    HWND parentWindow = MakeRecorder();
    CWnd main, parent;
    main.Attach(mainWindow);
    parent.Attach(parentWindow);
    AfxSetMainWnd(&main);
    {
        CProbeDlg d(&parent);
        ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
        d.DestroyWindow();
        EXPECT_TRUE(TakePosted(mainWindow, WM_KIV_DIALOG_CLOSED));
        EXPECT_FALSE(TakePosted(parentWindow, WM_KIV_DIALOG_CLOSED));
    }
    AfxSetMainWnd(nullptr);
    {
        CProbeDlg d(&parent);
        ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
        d.DestroyWindow();
        EXPECT_TRUE(TakePosted(parentWindow, WM_KIV_DIALOG_CLOSED));
    }
    {
        CProbeDlg d;
        ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
        d.DestroyWindow();
        MSG m{};
        bool any = false;
        while (PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) any = any || m.message == WM_KIV_DIALOG_CLOSED;
        EXPECT_FALSE(any);
        EXPECT_EQ(kiv_ui::GetTopMostDialogCount(), 0);
    }
    main.Detach();
    parent.Detach();
    DestroyWindow(mainWindow);
    DestroyWindow(parentWindow);
}

TEST_F(DlgBaseTest, MissingControlsAreLoggedWithTheirUnitAndIgnored) {
    CProbeDlg d;
    ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
    kiv_test::LogCapture log;
    EXPECT_FALSE(d.SetDlgItemText(999, L"x"));
    EXPECT_TRUE(d.GetDlgItemText(999).IsEmpty());
    wchar_t buffer[8] = L"junk";
    EXPECT_EQ(d.GetDlgItemText(999, buffer, 8), 0);
    EXPECT_STREQ(buffer, L"");
    EXPECT_FALSE(d.IsDlgItemEnabled(999));
    d.CheckDlgButton(999, BST_CHECKED);
    const int ids[] = {kEdit1, 999, kEdit2};
    EXPECT_FALSE(d.DisableControls(ids, 3));
    EXPECT_FALSE(d.IsDlgItemEnabled(kEdit1));
    EXPECT_FALSE(d.IsDlgItemEnabled(kEdit2)) << "the controls that exist are still changed";
    ASSERT_EQ(log.count(), 6u);
    for (const auto& e : log.entries()) {
        EXPECT_EQ(e.source, "DlgBase");
        EXPECT_NE(e.text.find(L"999"), std::wstring::npos);
    }
    log.clear();
    EXPECT_TRUE(d.SetDlgItemText(kEdit1, L"new"));
    EXPECT_EQ(d.GetDlgItemText(kEdit1), CKivStringT(L"new"));
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(DlgBaseTest, FocusSelectsTheWholeFieldAndTypingReplacesIt) {
    CProbeDlg d;
    ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
    HWND first = GetDlgItem(d.m_hWnd, kEdit1), second = GetDlgItem(d.m_hWnd, kEdit2);
    SetFocus(first);
    AfxPumpPendingMessages();
    Key(VK_TAB);
    Key(VK_TAB, true);
    AfxPumpPendingMessages();
    ASSERT_EQ(GetFocus(), second);
    EXPECT_EQ(SendMessageW(second, EM_GETSEL, 0, 0), MAKELONG(0, 4));
    Key('X');
    Key('X', true);
    AfxPumpPendingMessages();
    EXPECT_EQ(d.GetDlgItemText(kEdit2), CKivStringT(L"x"));

    // The posted form moves the focus only once the queue is handled.
    EXPECT_TRUE(d.PostSetDlgItemFocus(kButton));
    EXPECT_EQ(GetFocus(), second);
    AfxPumpPendingMessages();
    EXPECT_EQ(GetFocus(), GetDlgItem(d.m_hWnd, kButton));
}

class CEndingDlg : public CDlgBase {
public:
    CEndingDlg() : CDlgBase(L"DLGBASE_TEST", nullptr) {}
    BOOL OnInitDialog() override {
        CDlgBase::OnInitDialog();
        PostMessage(WM_APP + 1);
        return TRUE;
    }
    LRESULT OnFinish(WPARAM, LPARAM) {
        EndDialog(42);
        return 0;
    }
    DECLARE_MESSAGE_MAP()
};
BEGIN_MESSAGE_MAP(CEndingDlg, CDlgBase)
    ON_MESSAGE(WM_APP + 1, OnFinish)
END_MESSAGE_MAP()

TEST_F(DlgBaseTest, ModalLoopEndsWithTheValueGivenToEndDialog) {
    CEndingDlg d;
    EXPECT_EQ(d.DoModal(), 42);
    EXPECT_EQ(d.m_hWnd, nullptr);
    EXPECT_EQ(kiv_ui::GetTopMostDialogCount(), 0);
}

// Presses keys into the message box from inside its own modal loop: each step is a
// message posted to a plain window, which the box's loop dispatches; it presses one key
// (into whatever has the focus then) and posts the next step behind the key's messages.
struct BoxDriver {
    static inline std::vector<std::vector<BYTE>> script;  // each step: keys held together, the last one pressed
    static inline size_t step = 0;
    static inline std::vector<BYTE> held;
    static inline HWND owner = nullptr, box = nullptr;
    static inline bool ownerEnabledDuring = true;
    static inline CDlgBase* dialog = nullptr;
    static inline bool boxActiveDuring = false, titleActiveDuring = true;
    static inline std::wstring caption;
    static inline HWND window = nullptr;
    static inline WPARAM run = 0;  // a step left queued by an earlier box is not replayed

    static LRESULT CALLBACK Proc(HWND w, UINT m, WPARAM wp, LPARAM lp) {
        if (m != WM_APP) return DefWindowProcW(w, m, wp, lp);
        if (wp != run) return 0;
        if (step == 0) {
            ownerEnabledDuring = IsWindowEnabled(owner) != FALSE;
            boxActiveDuring = GetActiveWindow() == GetParent(GetFocus());
            titleActiveDuring = dialog->GetTitlebar().IsActive() != FALSE;
            box = GetParent(GetFocus());
            wchar_t text[64] = {};
            GetWindowTextW(box, text, 64);
            caption = text;
        }
        // Keys held with the last one (Shift) stay down until its messages are handled.
        for (BYTE k : held) keybd_event(k, 0, KEYEVENTF_KEYUP, 0);
        held.clear();
        if (step < script.size()) {
            const std::vector<BYTE>& keys = script[step++];
            for (BYTE k : keys) keybd_event(k, 0, 0, 0);
            keybd_event(keys.back(), 0, KEYEVENTF_KEYUP, 0);
            held.assign(keys.begin(), keys.end() - 1);
            PostMessageW(w, WM_APP, run, 0);
        }
        return 0;
    }
    static int Run(CDlgBase& dialog, UINT type, std::vector<std::vector<BYTE>> keys, LPCWSTR boxCaption = L"") {
        if (!window) {
            WNDCLASSW wc{};
            wc.lpfnWndProc = &Proc;
            wc.lpszClassName = L"MessageBoxDriver";
            RegisterClassW(&wc);
            window = CreateWindowExW(0, L"MessageBoxDriver", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
        }
        script = std::move(keys);
        step = 0;
        owner = dialog.m_hWnd;
        BoxDriver::dialog = &dialog;
        box = nullptr;
        PostMessageW(window, WM_APP, ++run, 0);
        return dialog.MessageBoxW(L"Store the point?", boxCaption, type, eSoundOk);
    }
};

TEST_F(DlgBaseTest, MessageBoxAnswersWithThePressedButtonWhileItsOwnerWaits) {
    CProbeDlg d;
    ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
    d.ShowWindow(SW_SHOW);
    HWND field = GetDlgItem(d.m_hWnd, kEdit2);
    SetFocus(field);
    using Keys = std::vector<std::vector<BYTE>>;
    const BYTE tab = VK_TAB, enter = VK_RETURN, escape = VK_ESCAPE, space = VK_SPACE;
    const struct {
        UINT type;
        Keys keys;
        int expected;
    } cases[] = {
        {MB_OK, {{enter}}, IDOK},
        {MB_OK, {{escape}}, IDOK},  // a box without Cancel answers Escape with its only button
        {MB_OKCANCEL, {{enter}}, IDOK},
        {MB_OKCANCEL, {{escape}}, IDCANCEL},
        {MB_OKCANCEL, {{tab}, {enter}}, IDCANCEL},
        {MB_YESNO, {{enter}}, IDYES},
        {MB_YESNO, {{escape}}, IDNO},
        {MB_YESNO, {{tab}, {space}}, IDNO},
        {MB_YESNOCANCEL, {{tab}, {enter}}, IDNO},
        {MB_YESNOCANCEL, {{escape}}, IDCANCEL},
        {MB_YESNOCANCEL, {{VK_SHIFT, tab}, {enter}}, IDCANCEL},  // Shift+Tab wraps to the last button
        {MB_RETRYCANCEL, {{enter}}, IDRETRY},
        {MB_ABORTRETRYIGNORE, {{tab}, {tab}, {enter}}, IDIGNORE},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << "type " << c.type << ", " << c.keys.size() << " key steps");
        EXPECT_EQ(BoxDriver::Run(d, c.type | MB_ICONQUESTION, c.keys), c.expected);
        EXPECT_NE(BoxDriver::box, nullptr) << "the box had the focus while it ran";
        EXPECT_FALSE(BoxDriver::ownerEnabledDuring) << "the owner is disabled while the box runs";
        EXPECT_TRUE(d.IsWindowEnabled()) << "and enabled again after";
        EXPECT_FALSE(IsWindow(BoxDriver::box));
        EXPECT_TRUE(BoxDriver::boxActiveDuring);
        EXPECT_FALSE(BoxDriver::titleActiveDuring) << "the owner's title bar shows it inactive under the box";
        EXPECT_TRUE(d.GetTitlebar().IsActive());
        EXPECT_EQ(GetActiveWindow(), d.m_hWnd);
        EXPECT_EQ(GetFocus(), field) << "the field that had the focus has it again";
        EXPECT_EQ(BoxDriver::caption, L"Warning!") << "an empty caption warns";
    }
    EXPECT_EQ(BoxDriver::Run(d, MB_OK, {{enter}}, L"Stake out"), IDOK);
    EXPECT_EQ(BoxDriver::caption, L"Stake out");
    EXPECT_TRUE(IsWindow(d.m_hWnd));
}

TEST(DlgCtrlItem, WritesItsTranslatedTextIntoTheBoundControl) {
    RegisterSample();
    CProbeDlg d;
    ASSERT_TRUE(d.Create(L"DLGBASE_TEST"));
    CDlgCtrlItem item;
    item.Create(nullptr, L"Name");
    EXPECT_FALSE(item.IsBound());
    EXPECT_FALSE(item.UpdateText(&d));
    item.BindCtrlID(kEdit1);
    CDlgCtrlItem copy = item;
    EXPECT_TRUE(copy.UpdateText(&d));
    EXPECT_EQ(d.GetDlgItemText(kEdit1), CKivStringT(L"Name"));
    copy.UnBindCtrlID();
    EXPECT_FALSE(copy.UpdateText(&d, L"x"));
}

}  // namespace
