// Manual entry of readings the instrument could not deliver: the user types each value
// in their display units (a typed unit suffix such as "1.2m" or "4ft" is honoured), the
// dialog checks it against the reading's range and keeps it in metres. A bad entry is
// refused with a message under the fields that names the field, what was wrong and what
// to type; the focus goes back to that field with its text selected.
// CKivLevelReadingDlg asks for a levelling staff reading and its sight distance,
// CKivDistanceReadingDlg for a slope distance and the target height.
#pragma once

#include <vector>

#include "utils/ui/DlgBase.h"
#include "utils/units/UnitTypes.h"

constexpr int IDC_ENTRY_FIRST = 2201;       // the fields, in order
constexpr int IDC_ENTRY_UNIT_FIRST = 2211;  // their unit labels
constexpr int IDC_ENTRY_LABEL_FIRST = 2221;
constexpr int IDC_ENTRY_MESSAGE = 2231;

class CKivManualEntryDlg : public CDlgBase {
public:
    BOOL Create(CWnd* parent = nullptr);
    INT_PTR DoModal() override;

    kiv_df::UNITS GetUnits() const { return m_units; }
    int GetFieldCount() const { return static_cast<int>(m_fields.size()); }
    // The checked value of a field in metres (valid after OK).
    double GetMetres(int field) const;
    // The message of the last refused entry; empty when none was refused.
    const CKivStringT& GetRefusal() const { return m_refusal; }
    // Checks every field; on success keeps the metres and returns true.
    bool CheckEntries();

    BOOL OnInitDialog() override;
    void OnOK() override;
    // Enter in a field moves to the next one, and in the last field checks and closes.
    int EnterKey() override;

protected:
    struct Field {
        CKivStringT label;
        double minimum;  // metres
        double maximum;
        bool optional;
        double metres = 0;
    };
    CKivManualEntryDlg(LPCWSTR caption, kiv_df::UNITS units, CWnd* parent);
    void AddField(LPCWSTR label, double minimum, double maximum, bool optional);

private:
    void RegisterTemplate() const;
    bool Refuse(int field, const CKivStringT& message);
    CKivStringT InUnits(double metres) const;

    CKivStringT m_caption;
    kiv_df::UNITS m_units;
    std::vector<Field> m_fields;
    CKivStringT m_refusal;
};

class CKivLevelReadingDlg : public CKivManualEntryDlg {
public:
    enum { eStaffReading = 0, eSightDistance = 1 };
    explicit CKivLevelReadingDlg(kiv_df::UNITS units, CWnd* parent = nullptr);
    double GetStaffReading() const { return GetMetres(eStaffReading); }
    double GetSightDistance() const { return GetMetres(eSightDistance); }
};

class CKivDistanceReadingDlg : public CKivManualEntryDlg {
public:
    enum { eSlopeDistance = 0, eTargetHeight = 1 };
    explicit CKivDistanceReadingDlg(kiv_df::UNITS units, CWnd* parent = nullptr);
    double GetSlopeDistance() const { return GetMetres(eSlopeDistance); }
    double GetTargetHeight() const { return GetMetres(eTargetHeight); }
};
