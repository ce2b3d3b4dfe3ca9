// The manual-entry dialogs: fields laid out from their list, typed text read through the
// units subsystem, range checks in metres, and the refusal message.
#include "utils/ui/ManualEntryDlg.h"

#include <cmath>

#include "platform/kivutils/Xlate.h"
#include "utils/units/UnitConvertEx.h"
#include "utils/units/UnitText.h"

namespace {
constexpr int kRowHeight = 32;
constexpr int kFirstRow = 40;
// One template for every entry dialog, made again from the dialog's fields just before
// it is shown.
constexpr const wchar_t* kEntryTemplate = L"#KivManualEntry";
}  // namespace

CKivManualEntryDlg::CKivManualEntryDlg(LPCWSTR caption, kiv_df::UNITS units, CWnd* parent)
    : CDlgBase(kEntryTemplate, parent), m_caption(caption ? caption : L""), m_units(units) {
    ShowOkButton();
    ShowCancelButton();
    HideMenuButton();
}

void CKivManualEntryDlg::AddField(LPCWSTR label, double minimum, double maximum, bool optional) {
    m_fields.push_back({label ? label : L"", minimum, maximum, optional});
}

void CKivManualEntryDlg::RegisterTemplate() const {
    CDialogTemplate t;
    t.caption = Xlate(m_caption);
    t.rect = RECT{0, 0, 240, 220};
    const CKivStringT unit = DispDistUnitsStrShortEx(m_units);
    for (size_t i = 0; i < m_fields.size(); ++i) {
        const int y = kFirstRow + static_cast<int>(i) * kRowHeight, n = static_cast<int>(i);
        t.items.push_back({L"STATIC", Xlate(m_fields[i].label), IDC_ENTRY_LABEL_FIRST + n, SS_LEFT, RECT{8, y + 3, 104, y + 21}});
        t.items.push_back({L"EDIT", L"", IDC_ENTRY_FIRST + n, WS_TABSTOP | ES_RIGHT, RECT{106, y, 200, y + 24}});
        t.items.push_back({L"STATIC", unit.GetString(), IDC_ENTRY_UNIT_FIRST + n, SS_LEFT, RECT{204, y + 3, 236, y + 21}});
    }
    const int y = kFirstRow + static_cast<int>(m_fields.size()) * kRowHeight + 6;
    t.items.push_back({L"STATIC", L"", IDC_ENTRY_MESSAGE, SS_LEFT, RECT{8, y, 232, y + 80}});
    AfxRegisterDialogTemplate(kEntryTemplate, t);
}

BOOL CKivManualEntryDlg::Create(CWnd* parent) {
    RegisterTemplate();
    return CDlgBase::Create(kEntryTemplate, parent);
}

INT_PTR CKivManualEntryDlg::DoModal() {
    RegisterTemplate();
    return CDlgBase::DoModal();
}

BOOL CKivManualEntryDlg::OnInitDialog() {
    CDlgBase::OnInitDialog();
    SetDlgItemFocus(IDC_ENTRY_FIRST);
    return FALSE;
}

double CKivManualEntryDlg::GetMetres(int field) const {
    return field >= 0 && field < GetFieldCount() ? m_fields[static_cast<size_t>(field)].metres : 0.0;
}

CKivStringT CKivManualEntryDlg::InUnits(double metres) const {
    kiv_df::UNITS units = m_units;
    return FromMetersStrEx(metres, eDecDigits3, units, false) + L" " + DispDistUnitsStrShortEx(m_units);
}

bool CKivManualEntryDlg::Refuse(int field, const CKivStringT& message) {
    m_refusal = message;
    SetDlgItemText(IDC_ENTRY_MESSAGE, m_refusal);
    HWND edit = ::GetDlgItem(m_hWnd, IDC_ENTRY_FIRST + field);
    ::SetFocus(edit);
    ::SendMessageW(edit, EM_SETSEL, 0, -1);
    return false;
}

bool CKivManualEntryDlg::CheckEntries() {
    const CKivStringT unit = DispDistUnitsStrShortEx(m_units);
    for (int i = 0; i < GetFieldCount(); ++i) {
        Field& f = m_fields[static_cast<size_t>(i)];
        const CKivStringT label = Xlate(f.label);
        CKivStringT text = GetDlgItemText(IDC_ENTRY_FIRST + i);
        text.Trim();
        if (text.IsEmpty()) {
            if (f.optional) {
                f.metres = 0;
                continue;
            }
            return Refuse(i, label + L": " + Xlate(L"a value is needed") + L". " + Xlate(L"Type it in") + L" " + unit + L".");
        }
        double value = 0;
        if (!StringToLinearValEx(text, value, m_units) || !std::isfinite(value))
            return Refuse(i, label + L": \"" + text + L"\" " + Xlate(L"is not a number") + L". " + Xlate(L"Type a value in") +
                                 L" " + unit + L", e.g. " + InUnits(f.maximum / 4) + L".");
        const double metres = m_units == kiv_df::eMeters ? value : ToMetersEx(value, m_units);
        if (metres < f.minimum || metres > f.maximum)
            return Refuse(i, label + L": " + InUnits(metres) + L" " + Xlate(L"is outside") + L" " + InUnits(f.minimum) + L" " +
                                 Xlate(L"to") + L" " + InUnits(f.maximum) + L".");
        f.metres = metres;
    }
    m_refusal = CKivStringT();
    SetDlgItemText(IDC_ENTRY_MESSAGE, L"");
    return true;
}

void CKivManualEntryDlg::OnOK() {
    if (CheckEntries()) CDlgBase::OnOK();
}

int CKivManualEntryDlg::EnterKey() {
    const int id = ::GetDlgCtrlID(::GetFocus());
    const int field = id - IDC_ENTRY_FIRST;
    if (field >= 0 && field + 1 < GetFieldCount()) {
        SetDlgItemFocus(id + 1);
        return 1;
    }
    OnOK();
    return 1;
}

// Staffs are at most a few metres long; a reading above 10 m or a sight over 500 m is a
// typing slip, not a reading.
CKivLevelReadingDlg::CKivLevelReadingDlg(kiv_df::UNITS units, CWnd* parent)
    : CKivManualEntryDlg(L"Level reading", units, parent) {
    AddField(L"Staff reading", 0.0, 10.0, false);
    AddField(L"Sight distance", 0.0, 500.0, true);
}

// A slope distance is what a distance meter can measure; a target stands at most 30 m
// above the mark (a tall pole on a building).
CKivDistanceReadingDlg::CKivDistanceReadingDlg(kiv_df::UNITS units, CWnd* parent)
    : CKivManualEntryDlg(L"Distance reading", units, parent) {
    AddField(L"Slope distance", 0.001, 10000.0, false);
    AddField(L"Target height", 0.0, 30.0, true);
}
