// kivutil dialog: a sample dialog of the library, initialised headless. "demo" saves it
// as a picture, or with --show opens it in a desktop window; "keys" replays a key
// sequence into it and prints the handlers that fired and the fields' final texts;
// "gallery" saves a picture of each class of the framework.
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/host/TextCodec.h"
#include "tools/kivutil/Command.h"
#include "tools/kivutil/DialogGallery.h"
#include "tools/kivutil/DialogView.h"
#include "tools/kivutil/LiveView.h"
#include "utils/ui/DlgBase.h"
#include "utils/ui/KeyInput.h"

namespace {

constexpr int IDC_NAME = 1001;
constexpr int IDC_CODE = 1002;
constexpr int IDC_HEIGHT = 1003;
constexpr int IDC_OFFSET = 1004;
constexpr int IDC_MODE = 1005;
constexpr int IDC_MEASURE = 1006;
constexpr int IDC_CLEAR = 1007;
constexpr UINT ID_MENU_UNITS = 40001;
constexpr UINT ID_MENU_CALCULATOR = 40002;

void RegisterSample() {
    CDialogTemplate t;
    t.caption = L"Store Point";
    t.rect = RECT{0, 0, 240, 300};
    auto add = [&](const wchar_t* cls, const wchar_t* text, int id, DWORD style, RECT r) {
        t.items.push_back({cls, text, id, style, r});
    };
    add(L"STATIC", L"Point name", -1, SS_LEFT, RECT{8, 40, 88, 58});
    add(L"EDIT", L"PT100", IDC_NAME, WS_TABSTOP, RECT{92, 36, 232, 60});
    add(L"STATIC", L"Code", -1, SS_LEFT, RECT{8, 70, 88, 88});
    add(L"EDIT", L"FENCE", IDC_CODE, WS_TABSTOP, RECT{92, 66, 232, 90});
    add(L"STATIC", L"Height", -1, SS_LEFT, RECT{8, 100, 88, 118});
    add(L"EDIT", L"1.500", IDC_HEIGHT, WS_TABSTOP, RECT{92, 96, 232, 120});
    add(L"BUTTON", L"Store with offset", IDC_OFFSET, WS_TABSTOP | BS_AUTOCHECKBOX, RECT{8, 128, 232, 148});
    add(L"STATIC", L"Survey mode", -1, SS_LEFT, RECT{8, 156, 232, 172});
    add(L"LISTBOX", L"", IDC_MODE, WS_TABSTOP, RECT{8, 174, 232, 258});
    add(L"BUTTON", L"Measure", IDC_MEASURE, WS_TABSTOP | BS_PUSHBUTTON, RECT{8, 266, 116, 292});
    add(L"BUTTON", L"Clear", IDC_CLEAR, WS_TABSTOP | BS_PUSHBUTTON, RECT{124, 266, 232, 292});
    AfxRegisterDialogTemplate(L"KIVUTIL_SAMPLE", t);
}

// The sample: every key handler reports itself and passes the key on.
class CSampleDlg : public CDlgBase {
public:
    CSampleDlg() : CDlgBase(L"KIVUTIL_SAMPLE", nullptr) {
        ShowOkButton();
        ShowCancelButton();
    }
    std::vector<std::string> fired;

    BOOL OnInitDialog() override {
        CDlgBase::OnInitDialog();
        AddMenuItem(L"Units", ID_MENU_UNITS);
        AddMenuItem(L"Calculator", ID_MENU_CALCULATOR);
        AddSeparator();
        CheckTbarMenuItem(ID_MENU_UNITS, TRUE);
        FinalizeChanges();
        for (const wchar_t* mode : {L"Topo", L"Stakeout", L"Level run", L"Resection"})
            ::SendMessageW(::GetDlgItem(m_hWnd, IDC_MODE), LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(mode));
        ::SendMessageW(::GetDlgItem(m_hWnd, IDC_MODE), LB_SETCURSEL, 0, 0);
        SetDlgItemFocus(IDC_NAME);
        return FALSE;
    }

#define KIV_REPORT(name) \
    int name() override { fired.push_back(#name); return 0; }
    KIV_REPORT(FunctionKeyF1)
    KIV_REPORT(FunctionKeyF2)
    KIV_REPORT(FunctionKeyF3)
    KIV_REPORT(FunctionKeyF4)
    KIV_REPORT(FunctionKeyF5)
    KIV_REPORT(FunctionKeyF6)
    KIV_REPORT(FunctionKeyF7)
    KIV_REPORT(FunctionKeyF8)
    KIV_REPORT(FunctionKeyF9)
    KIV_REPORT(EnterKey)
    KIV_REPORT(EscapeKey)
    KIV_REPORT(ArrowUpKey)
    KIV_REPORT(ArrowDownKey)
    KIV_REPORT(ArrowLeftKey)
    KIV_REPORT(ArrowRightKey)
    KIV_REPORT(ArrowUpKey_Keyup)
    KIV_REPORT(ArrowDownKey_Keyup)
    KIV_REPORT(ArrowLeftKey_Keyup)
    KIV_REPORT(ArrowRightKey_Keyup)
#undef KIV_REPORT
    void UpdateAlphaKeyIndicator() override {
        fired.push_back("UpdateAlphaKeyIndicator");
        CDlgBase::UpdateAlphaKeyIndicator();
    }
    void OnOK() override {
        fired.push_back("OnOK");
        CDlgBase::OnOK();
    }
    void OnCancel() override {
        fired.push_back("OnCancel");
        CDlgBase::OnCancel();
    }
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override {
        if (HIWORD(wParam) == BN_CLICKED && LOWORD(wParam) == IDC_MEASURE) fired.push_back("OnMeasure");
        if (HIWORD(wParam) == BN_CLICKED && LOWORD(wParam) == IDC_CLEAR) {
            fired.push_back("OnClear");
            for (int id : {IDC_NAME, IDC_CODE, IDC_HEIGHT}) SetDlgItemText(id, L"");
        }
        if (HIWORD(wParam) == BN_CLICKED && LOWORD(wParam) == IDC_OFFSET) fired.push_back("OnOffset");
        if (HIWORD(wParam) == 0 && LOWORD(wParam) == ID_MENU_UNITS && lParam == 0) fired.push_back("OnMenuUnits");
        if (HIWORD(wParam) == 0 && LOWORD(wParam) == ID_MENU_CALCULATOR && lParam == 0) {
            fired.push_back("OnMenuCalculator");
            CalcKey();  // for the focused field, which gets the result on OK
        }
        return CDlgBase::OnCommand(wParam, lParam);
    }
};

struct DialogOptions {
    std::string output = "dialog.png";
    std::string keys;
    bool outputGiven = false;
    bool show = false;
};

const std::map<std::string, BYTE>& NamedKeys() {
    static const std::map<std::string, BYTE> keys = {
        {"TAB", VK_TAB},     {"ENTER", VK_RETURN}, {"ESC", VK_ESCAPE}, {"BACK", VK_BACK},   {"DEL", VK_DELETE},
        {"LEFT", VK_LEFT},   {"RIGHT", VK_RIGHT},  {"UP", VK_UP},      {"DOWN", VK_DOWN},   {"HOME", VK_HOME},
        {"END", VK_END},     {"SPACE", VK_SPACE},  {"ALPHA", VK_F24},  {"F1", VK_F1},       {"F2", VK_F2},
        {"F3", VK_F3},       {"F4", VK_F4},        {"F5", VK_F5},      {"F6", VK_F6},       {"F7", VK_F7},
        {"F8", VK_F8},       {"F9", VK_F9},
    };
    return keys;
}

std::string AcceptedKeys() {
    std::string list;
    for (const auto& [name, vk] : NamedKeys()) list += (list.empty() ? "{" : ", {") + name + "}";
    return list + ", {S-TAB} and {MENU}, {{ for a brace; other characters are typed";
}

void Press(BYTE vk, bool shift = false) {
    if (shift) keybd_event(VK_SHIFT, 0, 0, 0);
    keybd_event(vk, 0, 0, 0);
    AfxPumpPendingMessages();
    keybd_event(vk, 0, KEYEVENTF_KEYUP, 0);
    if (shift) keybd_event(VK_SHIFT, 0, KEYEVENTF_KEYUP, 0);
    AfxPumpPendingMessages();
}

// Types one character as the controller's keyboard would: letters and digits through
// their keys (Shift for capitals), anything else as the character itself.
void Type(wchar_t ch) {
    if (ch >= L'a' && ch <= L'z') return Press(static_cast<BYTE>(ch - L'a' + 'A'));
    if (ch >= L'A' && ch <= L'Z') return Press(static_cast<BYTE>(ch), true);
    if (ch >= L'0' && ch <= L'9') return Press(static_cast<BYTE>(ch));
    if (ch == L' ') return Press(VK_SPACE);
    ::PostMessageW(::GetFocus(), WM_CHAR, ch, 1);
    AfxPumpPendingMessages();
}

// Checks the whole sequence first, so that a bad name changes nothing.
bool ParseKeys(const std::wstring& text, std::vector<std::wstring>& steps, std::string& error) {
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != L'{') {
            steps.push_back(std::wstring(1, text[i]));
            continue;
        }
        if (i + 1 < text.size() && text[i + 1] == L'{') {
            steps.push_back(L"{");
            ++i;
            continue;
        }
        const size_t end = text.find(L'}', i);
        if (end == std::wstring::npos) {
            error = "unclosed \"{\" at character " + std::to_string(i + 1);
            return false;
        }
        const std::wstring name = text.substr(i + 1, end - i - 1);
        const std::string narrow = kiv_text::ToUtf8(name);
        if (!NamedKeys().count(narrow) && narrow != "S-TAB" && narrow != "MENU") {
            error = "unknown key {" + narrow + "}";
            return false;
        }
        steps.push_back(L"{" + name + L"}");
        i = end;
    }
    return true;
}

std::string FieldText(CSampleDlg& d, int id) { return kiv_text::ToUtf8(d.GetDlgItemText(id).view()); }

int RunDemo(const DialogOptions& o, bool replay) {
    RegisterSample();
    std::vector<std::wstring> steps;
    if (replay) {
        std::string error;
        if (o.keys.empty()) return kivutil::BadInput("give a key sequence, e.g. \"{TAB}abc{BACK}{ENTER}\"; accepted: " + AcceptedKeys());
        if (!ParseKeys(kiv_text::FromUtf8(o.keys), steps, error)) return kivutil::BadInput(error + "; accepted: " + AcceptedKeys());
    }
    if (o.show && !kivutil::OpenDesktop()) return kivutil::kExitBadInput;
    // On the desktop a real keyboard types; the device's soft keyboard is not drawn there.
    if (!o.show) kiv_ui::CreateSoftKeyboardWindow();
    CSampleDlg d;
    if (!d.Create(L"KIVUTIL_SAMPLE")) {
        std::cerr << "kivutil: the sample dialog could not be made\n";
        return kivutil::kExitFailed;
    }
    d.ShowWindow(SW_SHOW);
    if (o.show) return kivutil::RunOnDesktop(d);
    AfxPumpPendingMessages();
    for (const std::wstring& step : steps) {
        if (!::IsWindow(d.m_hWnd) || !d.IsWindowVisible()) break;  // OK or Cancel ended the dialog
        if (step.size() > 1 && step[0] == L'{') {
            const std::string name = kiv_text::ToUtf8(step.substr(1, step.size() - 2));
            if (name == "S-TAB") Press(VK_TAB, true);
            else if (name == "MENU") {
                d.SendMessage(WM_COMMAND, ID_TBAR_MENU, 0);
                AfxPumpPendingMessages();
            } else Press(NamedKeys().at(name));
        } else {
            Type(step[0]);
        }
    }
    if (replay) {
        std::cout << "fired:";
        for (const auto& f : d.fired) std::cout << " " << f;
        std::cout << (d.fired.empty() ? " (none)\n" : "\n");
        std::cout << "Point name: \"" << FieldText(d, IDC_NAME) << "\"\n";
        std::cout << "Code: \"" << FieldText(d, IDC_CODE) << "\"\n";
        std::cout << "Height: \"" << FieldText(d, IDC_HEIGHT) << "\"\n";
        std::cout << "Store with offset: " << (d.GetDlgButtonCheckedState(IDC_OFFSET) ? "checked" : "not checked") << "\n";
        const LRESULT mode = ::SendMessageW(::GetDlgItem(d.m_hWnd, IDC_MODE), LB_GETCURSEL, 0, 0);
        std::cout << "Survey mode: " << mode << "\n";
        const int focus = ::GetDlgCtrlID(::GetFocus());
        std::cout << "focus: " << (focus > 0 ? std::to_string(focus) : std::string("none")) << "\n";
        if (!d.IsWindowVisible()) std::cout << "dialog ended\n";
    }
    if ((!replay || o.outputGiven) && d.IsWindowVisible() && !kivutil::SaveDialogPicture(d, o.output))
        return kivutil::kExitFailed;
    return kivutil::kExitOk;
}

kivutil::Registration dialog(60, [](CLI::App& app, std::function<int()>& run) {
    auto o = std::make_shared<DialogOptions>();
    auto* sub = app.add_subcommand("dialog", "The library's sample dialog: save it as a picture, or replay keys into it");
    sub->require_subcommand(1);
    auto* demo = sub->add_subcommand("demo", "Initialise the sample dialog headless and save it as PNG");
    demo->add_option("-o,--output", o->output, "picture file (default dialog.png)");
    demo->add_flag("--show", o->show, "open it in a desktop window instead, to use it by keyboard and mouse");
    demo->callback([&run, o] { run = [o] { return RunDemo(*o, false); }; });
    auto* keys = sub->add_subcommand("keys", "Replay keys into the sample; print the handlers that fired and the fields");
    keys->add_option("sequence", o->keys, "characters to type and keys in braces: {TAB} {S-TAB} {ENTER} {ESC} {BACK} {F1}..{F9} {ALPHA} {MENU} ...")
        ->required();
    keys->add_option("-o,--output", o->output, "also save the dialog after the keys as a picture");
    keys->callback([&run, o, keys] {
        o->outputGiven = keys->count("--output") > 0;
        run = [o] { return RunDemo(*o, true); };
    });
    auto* gallery = sub->add_subcommand("gallery", "Save a picture of each class of the dialog framework into a folder");
    gallery->add_option("-o,--output", o->output, "folder for the pictures")->required();
    gallery->callback([&run, o] { run = [o] { return kivutil::SaveDialogGallery(o->output); }; });
});

}  // namespace
