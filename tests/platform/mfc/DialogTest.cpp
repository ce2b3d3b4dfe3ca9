// CWnd and CDialog through their windows: message maps chaining to the base, run-time
// class tests, the dialog manager's keys, the modal loop, and the host's controls as a
// person types and taps into them.
#include "platform/mfc/Dialog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

using Codes = std::vector<WORD>;

constexpr int kName = 10, kCode = 11, kCheck = 12, kRadioA = 13, kRadioB = 14, kList = 15, kCombo = 16;

void RegisterForm() {
    CDialogTemplate t;
    t.caption = L"Form";
    t.rect = RECT{0, 0, 240, 300};
    t.items = {
        {L"EDIT", L"one", kName, WS_TABSTOP, RECT{8, 8, 200, 30}},
        {L"STATIC", L"label", -1, 0, RECT{8, 32, 200, 48}},
        {L"EDIT", L"two", kCode, WS_TABSTOP, RECT{8, 50, 200, 72}},
        {L"BUTTON", L"Check", kCheck, WS_TABSTOP | BS_AUTOCHECKBOX, RECT{8, 80, 200, 98}},
        {L"BUTTON", L"A", kRadioA, WS_TABSTOP | BS_AUTORADIOBUTTON, RECT{8, 100, 100, 118}},
        {L"BUTTON", L"B", kRadioB, BS_AUTORADIOBUTTON, RECT{108, 100, 200, 118}},
        {L"LISTBOX", L"", kList, WS_TABSTOP, RECT{8, 120, 200, 200}},
        {L"COMBOBOX", L"", kCombo, CBS_DROPDOWNLIST, RECT{8, 204, 200, 330}},
        {L"BUTTON", L"OK", IDOK, WS_TABSTOP | BS_DEFPUSHBUTTON, RECT{8, 240, 100, 264}},
        {L"BUTTON", L"Cancel", IDCANCEL, WS_TABSTOP | BS_PUSHBUTTON, RECT{108, 240, 200, 264}},
    };
    AfxRegisterDialogTemplate(L"FORM", t);
    AfxRegisterDialogTemplate(77u, t);
}

class CForm : public CDialog {
    DECLARE_DYNAMIC(CForm)
public:
    CForm() : CDialog(L"FORM", nullptr) {}
    std::vector<std::string> log;
    BOOL OnInitDialog() override {
        log.push_back("init");
        return TRUE;
    }
    void OnOK() override {
        log.push_back("ok");
        CDialog::OnOK();
    }
    void OnCancel() override {
        log.push_back("cancel");
        CDialog::OnCancel();
    }
    void OnCheck() { log.push_back("check"); }
    std::vector<WORD> comboCodes;  // the combo box's notifications, in order
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override {
        if (LOWORD(wParam) == kCombo) comboCodes.push_back(HIWORD(wParam));
        return CDialog::OnCommand(wParam, lParam);
    }
    LRESULT OnPing(WPARAM w, LPARAM) {
        log.push_back("ping");
        if (w == 2) EndDialog(7);
        return 99;
    }
    DECLARE_MESSAGE_MAP()
};
IMPLEMENT_DYNAMIC(CForm, CDialog)
BEGIN_MESSAGE_MAP(CForm, CDialog)
    ON_BN_CLICKED(kCheck, OnCheck)
    ON_MESSAGE(WM_APP + 5, OnPing)
END_MESSAGE_MAP()

void Key(BYTE vk, bool shift = false) {
    // Shift stays down while the key is handled, as a person holds it.
    if (shift) keybd_event(VK_SHIFT, 0, 0, 0);
    keybd_event(vk, 0, 0, 0);
    AfxPumpPendingMessages();
    keybd_event(vk, 0, KEYEVENTF_KEYUP, 0);
    if (shift) keybd_event(VK_SHIFT, 0, KEYEVENTF_KEYUP, 0);
    AfxPumpPendingMessages();
}

std::wstring Text(HWND w) {
    wchar_t b[64] = {};
    GetWindowTextW(w, b, 64);
    return b;
}

class DialogTest : public ::testing::Test {
protected:
    void SetUp() override {
        RegisterForm();
        ASSERT_TRUE(form.Create(L"FORM"));
        // Typed keys reach the focus of the foreground window only, as a person's would.
        ToFront();
        item = [this](int id) { return GetDlgItem(form.m_hWnd, id); };
    }
    // Shown and in front again: ending the dialog hides it, and a hidden window gets no keys.
    void ToFront() {
        ShowWindow(form.m_hWnd, SW_SHOW);
        SetForegroundWindow(form.m_hWnd);
    }
    CForm form;
    std::function<HWND(int)> item;
};

TEST_F(DialogTest, MessageMapsChainToTheBaseAndClassesKnowTheirBases) {
    EXPECT_EQ(form.log, std::vector<std::string>{"init"});
    EXPECT_EQ(form.SendMessage(WM_APP + 5), 99);
    EXPECT_TRUE(form.IsKindOf(RUNTIME_CLASS(CDialog)));
    EXPECT_TRUE(form.IsKindOf(RUNTIME_CLASS(CWnd)));
    CWnd plain;
    EXPECT_FALSE(plain.IsKindOf(RUNTIME_CLASS(CDialog)));
    // IDOK is handled by CDialog's own map.
    form.SendMessage(WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
    EXPECT_EQ(form.log.back(), "ok");
    EXPECT_EQ(CWnd::FromHandle(form.m_hWnd), &form);
    EXPECT_EQ(form.GetDlgItem(kName), nullptr) << "controls have no object until one is attached";
}

TEST_F(DialogTest, TabWalksTheTabStopsBothWaysAndSkipsDisabledOnes) {
    SetFocus(item(kName));
    Key(VK_TAB);
    EXPECT_EQ(GetFocus(), item(kCode));
    EnableWindow(item(kCheck), FALSE);
    Key(VK_TAB);
    EXPECT_EQ(GetFocus(), item(kRadioA));
    Key(VK_TAB, true);
    EXPECT_EQ(GetFocus(), item(kCode));
    SetFocus(item(IDCANCEL));
    Key(VK_TAB);
    EXPECT_EQ(GetFocus(), item(kName)) << "the order wraps";
}

TEST_F(DialogTest, EnterPressesTheDefaultButtonAndEscapeCancels) {
    SetFocus(item(kName));
    Key(VK_RETURN);
    EXPECT_EQ(form.log.back(), "ok");
    ToFront();
    SetFocus(item(kName));
    Key(VK_ESCAPE);
    EXPECT_EQ(form.log.back(), "cancel");
    // Enter on a focused push button presses that button.
    ToFront();
    SetFocus(item(IDCANCEL));
    form.log.clear();
    Key(VK_RETURN);
    EXPECT_EQ(form.log, std::vector<std::string>{"cancel"});
}

TEST_F(DialogTest, EditFieldTakesTypingAsAPersonExpects) {
    HWND e = item(kName);
    SetFocus(e);
    SendMessageW(e, EM_SETSEL, 0, -1);
    for (BYTE k : {BYTE('A'), BYTE('B'), BYTE('C')}) Key(k);
    EXPECT_EQ(Text(e), L"abc") << "typing replaces the selection";
    Key(VK_BACK);
    EXPECT_EQ(Text(e), L"ab");
    Key(VK_LEFT);
    Key('X', true);
    EXPECT_EQ(Text(e), L"aXb");
    Key(VK_HOME);
    Key(VK_DELETE);
    EXPECT_EQ(Text(e), L"Xb");
    Key(VK_END);
    Key(VK_LEFT, true);  // Shift+Left selects the last character
    EXPECT_EQ(SendMessageW(e, EM_GETSEL, 0, 0), MAKELONG(1, 2));
    SendMessageW(e, EM_LIMITTEXT, 3, 0);
    SendMessageW(e, EM_SETSEL, 2, 2);
    Key('1');
    Key('2');
    EXPECT_EQ(Text(e), L"Xb1") << "the limit holds";
    SendMessageW(e, EM_SETREADONLY, TRUE, 0);
    Key(VK_BACK);
    EXPECT_EQ(Text(e), L"Xb1");
}

TEST_F(DialogTest, ButtonsListsAndCombosAnswerKeysAndNotify) {
    SetFocus(item(kCheck));
    Key(VK_SPACE);
    EXPECT_EQ(SendMessageW(item(kCheck), BM_GETCHECK, 0, 0), BST_CHECKED);
    EXPECT_EQ(form.log.back(), "check");

    SendMessageW(item(kRadioA), BM_CLICK, 0, 0);
    SendMessageW(item(kRadioB), BM_CLICK, 0, 0);
    EXPECT_EQ(SendMessageW(item(kRadioA), BM_GETCHECK, 0, 0), BST_UNCHECKED);
    EXPECT_EQ(SendMessageW(item(kRadioB), BM_GETCHECK, 0, 0), BST_CHECKED);

    HWND list = item(kList);
    for (const wchar_t* s : {L"a", L"bb", L"ccc"}) SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(s));
    EXPECT_EQ(SendMessageW(list, LB_GETCURSEL, 0, 0), LB_ERR);
    SendMessageW(list, LB_SETCURSEL, 0, 0);
    SetFocus(list);
    Key(VK_DOWN);
    Key(VK_DOWN);
    Key(VK_DOWN);
    EXPECT_EQ(SendMessageW(list, LB_GETCURSEL, 0, 0), 2) << "stops at the last item";
    wchar_t text[8] = {};
    EXPECT_EQ(SendMessageW(list, LB_GETTEXT, 1, reinterpret_cast<LPARAM>(text)), 2);
    EXPECT_STREQ(text, L"bb");
    EXPECT_EQ(SendMessageW(list, LB_SETCURSEL, 5, 0), LB_ERR);

    HWND combo = item(kCombo);
    SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(L"m"));
    SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(L"ft"));
    SendMessageW(combo, CB_SETCURSEL, 1, 0);
    EXPECT_EQ(Text(combo), L"ft");
}

// The combo box as the system's drop list behaves: each test's box holds "m", "ft" and
// "usft" with "m" selected, has the focus, and its owner's record of notifications is empty.
class ComboTest : public DialogTest {
protected:
    void SetUp() override {
        DialogTest::SetUp();
        combo = item(kCombo);
        for (const wchar_t* s : {L"m", L"ft", L"usft"}) SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(s));
        SendMessageW(combo, CB_SETCURSEL, 0, 0);
        SetFocus(combo);
        form.comboCodes.clear();
        form.log.clear();
    }
    LRESULT Selected() { return SendMessageW(combo, CB_GETCURSEL, 0, 0); }
    bool Dropped() { return SendMessageW(combo, CB_GETDROPPEDSTATE, 0, 0) != 0; }
    static HWND DropList() { return FindWindowW(L"ComboLBox", nullptr); }
    int ItemHeight() { return static_cast<int>(SendMessageW(combo, CB_GETITEMHEIGHT, 0, 0)); }
    // The stylus on the box, down and up.
    void TapBox() {
        SendMessageW(combo, WM_LBUTTONDOWN, 0, MAKELPARAM(5, 5));
        SendMessageW(combo, WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
    }
    // The stylus in the open list at the middle of shown row `row`: down, or up, or moved
    // there while down.
    void Touch(UINT message, int row) {
        SendMessageW(DropList(), message, message == WM_MOUSEMOVE ? MK_LBUTTON : 0,
                     MAKELPARAM(10, row * ItemHeight() + ItemHeight() / 2));
    }
    void Type(wchar_t c) { SendMessageW(combo, WM_CHAR, c, 0); }
    Codes Take() { return std::exchange(form.comboCodes, {}); }
    HWND combo = nullptr;
};

TEST_F(ComboTest, TheListIsAWindowKeptForTheBoxsLifeThatOpensUnderTheBox) {
    HWND list = DropList();
    ASSERT_NE(list, nullptr) << "made with the box";
    EXPECT_FALSE(IsWindowVisible(list));
    EXPECT_NE(GetParent(list), combo) << "a window of the desktop, not the box's child";
    RECT box{};
    GetWindowRect(combo, &box);
    EXPECT_EQ(box.bottom - box.top, SendMessageW(combo, CB_GETITEMHEIGHT, static_cast<WPARAM>(-1), 0) + 4)
        << "the box is its selection field in a frame; the height it was made with holds the list too";

    TapBox();
    ASSERT_TRUE(Dropped());
    EXPECT_EQ(DropList(), list);
    EXPECT_TRUE(IsWindowVisible(list));
    RECT drop{};
    GetWindowRect(list, &drop);
    EXPECT_EQ(drop.top, box.bottom);
    EXPECT_EQ(drop.left, box.left);
    EXPECT_EQ(drop.right, box.right);
    EXPECT_GE(drop.bottom - drop.top, 3 * ItemHeight()) << "all three items show";

    // The focus leaving closes the list unchanged; the box tells it lost the focus last,
    // and that it has it again.
    SetFocus(item(kName));
    EXPECT_FALSE(Dropped());
    EXPECT_EQ(Selected(), 0);
    EXPECT_TRUE(IsWindow(list));
    EXPECT_FALSE(IsWindowVisible(list));
    EXPECT_EQ(Take(), (Codes{CBN_DROPDOWN, CBN_SELENDCANCEL, CBN_CLOSEUP, CBN_KILLFOCUS}));
    SetFocus(combo);
    EXPECT_EQ(Take(), Codes{CBN_SETFOCUS});
    SetFocus(item(kName));
    EXPECT_EQ(Take(), (Codes{CBN_SELENDCANCEL, CBN_KILLFOCUS})) << "cancelled even with the list closed";

    // The dialog may go while its list is open.
    SendMessageW(combo, CB_SHOWDROPDOWN, TRUE, 0);
    form.DestroyWindow();
    EXPECT_FALSE(IsWindow(list));
}

TEST_F(ComboTest, EveryKeyStepsTheSelectionAtOnceAndIsToldEvenAtTheEnds) {
    Key(VK_DOWN);
    EXPECT_EQ(Selected(), 1);
    EXPECT_EQ(Take(), (Codes{CBN_SELENDOK, CBN_SELCHANGE})) << "a closed box takes each step";
    Key(VK_DOWN);
    Key(VK_DOWN);
    EXPECT_EQ(Selected(), 2);
    EXPECT_EQ(Take(), (Codes{CBN_SELENDOK, CBN_SELCHANGE, CBN_SELENDOK, CBN_SELCHANGE}));

    Key(VK_F4);
    ASSERT_TRUE(Dropped());
    Key(VK_UP);
    EXPECT_EQ(Selected(), 1) << "the open list changes the selection at once";
    Key(VK_HOME);
    Key(VK_UP);
    EXPECT_EQ(Selected(), 0);
    EXPECT_EQ(Take(), (Codes{CBN_DROPDOWN, CBN_SELCHANGE, CBN_SELCHANGE, CBN_SELCHANGE}));
    Key(VK_RETURN);
    EXPECT_FALSE(Dropped());
    EXPECT_EQ(Take(), (Codes{CBN_SELENDOK, CBN_CLOSEUP}));
    EXPECT_TRUE(form.log.empty()) << "Enter went to the list, not to the default button";
    EXPECT_EQ(GetFocus(), combo);

    // Escape, F4 and Alt+arrow close the list as cancelled, keeping the step reached.
    keybd_event(VK_MENU, 0, 0, 0);
    Key(VK_DOWN);
    keybd_event(VK_MENU, 0, KEYEVENTF_KEYUP, 0);
    AfxPumpPendingMessages();
    ASSERT_TRUE(Dropped());
    Key(VK_END);
    Key(VK_ESCAPE);
    EXPECT_FALSE(Dropped());
    EXPECT_EQ(Selected(), 2);
    EXPECT_EQ(Take(), (Codes{CBN_DROPDOWN, CBN_SELCHANGE, CBN_SELENDCANCEL, CBN_CLOSEUP}));
    EXPECT_TRUE(form.log.empty()) << "Escape did not cancel the dialog";
    Key(VK_F4);
    Key(VK_UP);
    Key(VK_F4);
    EXPECT_EQ(Selected(), 1);
    EXPECT_EQ(Take(), (Codes{CBN_DROPDOWN, CBN_SELCHANGE, CBN_SELENDCANCEL, CBN_CLOSEUP}));

    // Tab leaves an open list for the next control.
    Key(VK_F4);
    Key(VK_TAB);
    EXPECT_NE(GetFocus(), combo);
    EXPECT_FALSE(Dropped());
    EXPECT_EQ(Take(), (Codes{CBN_DROPDOWN, CBN_SELENDCANCEL, CBN_CLOSEUP, CBN_KILLFOCUS}));
}

TEST_F(ComboTest, ATypedLetterTakesTheNextItemStartingWithIt) {
    Type(L'U');
    EXPECT_EQ(Selected(), 2);
    EXPECT_EQ(Take(), (Codes{CBN_SELENDOK, CBN_SELCHANGE}));
    Type(L'z');
    EXPECT_EQ(Selected(), 2);
    EXPECT_TRUE(Take().empty());
    Type(L'm');
    EXPECT_EQ(Selected(), 0) << "the search goes round the end";
    Take();
    // In an open list the letter takes the item and closes the list; the change is told last.
    SendMessageW(combo, CB_SHOWDROPDOWN, TRUE, 0);
    Type(L'f');
    EXPECT_EQ(Selected(), 1);
    EXPECT_FALSE(Dropped());
    EXPECT_EQ(Take(), (Codes{CBN_DROPDOWN, CBN_SELENDOK, CBN_CLOSEUP, CBN_SELCHANGE}));
}

TEST_F(ComboTest, TheStylusSelectsTheRowItTouchesAndTakesItWhenLifted) {
    for (const wchar_t* s : {L"a", L"b", L"c", L"d", L"e", L"f", L"g", L"h", L"i"})
        SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(s));
    SendMessageW(combo, CB_SETCURSEL, 1, 0);
    TapBox();
    ASSERT_TRUE(Dropped());
    RECT drop{};
    GetWindowRect(DropList(), &drop);
    const int rows = (drop.bottom - drop.top - 2) / ItemHeight();
    ASSERT_GE(rows, 3);
    ASSERT_LT(rows, 12) << "the list scrolls";
    EXPECT_EQ(SendMessageW(combo, CB_GETTOPINDEX, 0, 0), 1) << "the list opens with the selected item on top";

    Touch(WM_LBUTTONDOWN, 2);
    EXPECT_EQ(Selected(), 3) << "the touched row is selected at once";
    Touch(WM_MOUSEMOVE, 3);
    EXPECT_EQ(Selected(), 4);
    EXPECT_EQ(Take(), Codes{CBN_DROPDOWN}) << "nothing is told until the stylus lifts";
    Touch(WM_LBUTTONUP, 3);
    EXPECT_FALSE(Dropped());
    EXPECT_EQ(Selected(), 4);
    EXPECT_EQ(Take(), (Codes{CBN_SELENDOK, CBN_CLOSEUP, CBN_SELCHANGE}));

    // A touch outside the list cancels it; a tap on the box takes what the list shows.
    TapBox();
    EXPECT_EQ(SendMessageW(combo, CB_GETTOPINDEX, 0, 0), std::min(4, 12 - rows));
    SendMessageW(DropList(), WM_LBUTTONDOWN, 0, MAKELPARAM(10, -20));
    EXPECT_FALSE(Dropped());
    EXPECT_EQ(Selected(), 4);
    EXPECT_EQ(Take(), (Codes{CBN_DROPDOWN, CBN_SELENDCANCEL, CBN_CLOSEUP}));
    TapBox();
    Key(VK_END);
    EXPECT_EQ(SendMessageW(combo, CB_GETTOPINDEX, 0, 0), 12 - rows) << "the last item is kept in view";
    SendMessageW(combo, WM_LBUTTONDOWN, 0, MAKELPARAM(5, 5));
    EXPECT_FALSE(Dropped());
    EXPECT_EQ(Selected(), 11);
    EXPECT_EQ(Take(), (Codes{CBN_DROPDOWN, CBN_SELCHANGE, CBN_SELENDOK, CBN_CLOSEUP}));

    // A page is the shown rows less one.
    Key(VK_HOME);
    Key(VK_NEXT);
    EXPECT_EQ(Selected(), rows - 1);
}

TEST(Dialog, AutomaticRadioButtonsClearOnlyTheirOwnGroup) {
    CDialogTemplate t;
    auto radio = [](int id, DWORD group) {
        return CDialogItemTemplate{L"BUTTON", L"r", id, BS_AUTORADIOBUTTON | group, RECT{0, id * 20, 100, id * 20 + 18}};
    };
    // Groups: {1, 2}, {3, 4}, {5 (a check box), 6}.
    t.items = {radio(1, WS_GROUP), radio(2, 0), radio(3, WS_GROUP), radio(4, 0),
               {L"BUTTON", L"c", 5, BS_AUTOCHECKBOX | WS_GROUP, RECT{0, 100, 100, 118}}, radio(6, 0)};
    AfxRegisterDialogTemplate(L"RADIOS", t);
    CDialog d;
    ASSERT_TRUE(d.Create(L"RADIOS"));
    auto click = [&](int id) { SendMessageW(GetDlgItem(d.m_hWnd, id), BM_CLICK, 0, 0); };
    auto checked = [&] {
        std::string marks;
        for (int id = 1; id <= 6; ++id) marks += SendMessageW(GetDlgItem(d.m_hWnd, id), BM_GETCHECK, 0, 0) ? '1' : '0';
        return marks;
    };
    click(1);
    click(3);
    EXPECT_EQ(checked(), "101000");
    click(2);
    EXPECT_EQ(checked(), "011000");
    click(4);
    EXPECT_EQ(checked(), "010100");
    click(5);
    click(6);
    EXPECT_EQ(checked(), "010111") << "a group may hold other controls; its radio buttons still clear only within it";
    click(2);
    EXPECT_EQ(checked(), "010111");
}

TEST(Dialog, DoModalRunsItsOwnLoopAndReturnsTheEndValue) {
    RegisterForm();
    CWnd owner;
    ASSERT_TRUE(owner.CreateEx(0, nullptr, L"owner", WS_POPUP, RECT{0, 0, 10, 10}, nullptr, 0));
    // The ping arrives once the loop runs; its handler ends the dialog.
    struct Poster : CForm {
        BOOL OnInitDialog() override {
            EXPECT_FALSE(::IsWindowEnabled(::GetParent(m_hWnd))) << "the owner is disabled while the dialog runs";
            PostMessage(WM_APP + 5, 2);
            return TRUE;
        }
    } poster;
    poster.m_hWndParent = owner.m_hWnd;
    EXPECT_EQ(poster.DoModal(), 7);
    EXPECT_TRUE(owner.IsWindowEnabled());
    EXPECT_EQ(poster.m_hWnd, nullptr);
    CDialog missing(L"NO_SUCH_TEMPLATE", nullptr);
    EXPECT_EQ(missing.DoModal(), -1);
    owner.DestroyWindow();
    MSG m{};
    while (PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) {}
}

TEST(Dialog, RedrawCopiesTheControlsIntoTheDialogPicture) {
    RegisterForm();
    CForm form;
    ASSERT_TRUE(form.Create(77u));
    // Only a shown window has pixels to draw into.
    form.ShowWindow(SW_SHOW);
    form.RedrawWindow();
    HDC dc = GetDC(form.m_hWnd);
    // The edit field's white face and the dialog's button face both show.
    EXPECT_EQ(GetPixel(dc, 100, 20) & 0xFFFFFF, GetSysColor(COLOR_WINDOW) & 0xFFFFFF);
    EXPECT_EQ(GetPixel(dc, 220, 290) & 0xFFFFFF, GetSysColor(COLOR_BTNFACE) & 0xFFFFFF);
    ReleaseDC(form.m_hWnd, dc);
}

}  // namespace
