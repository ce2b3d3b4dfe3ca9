// CColumnSettings: the order and visibility of one list view's columns, kept as the
// section of that list in "columns.ini" in the data root; read when made, written back
// when destroyed.
#pragma once

#include "platform/kivutils/IniFile.h"
#include "platform/kivutils/KivArray.h"
#include "platform/kivutils/KivString.h"
#include "platform/kivutils/ThreeTupleStore.h"

class CColumnSettings : public kiv_settings::CThreeTupleStore {
public:
    explicit CColumnSettings(const wchar_t* listName);
    ~CColumnSettings() override;

    int getColumnCount() const;
    // Null when the index is out of range.
    const wchar_t* getColumnId(int index) const;
    // False when the index is out of range.
    bool getColumnShowFlag(int index) const;
    void addColumn(const wchar_t* id, bool show);
    void clear();

    CColumnSettings(const CColumnSettings&) = delete;
    CColumnSettings& operator=(const CColumnSettings&) = delete;

private:
    struct Column {
        CKivStringT id;
        CKivStringT show;  // "1" or "0"
    };

    kiv_settings::ETextEncoding m_encoding = kiv_settings::eEncodingUtf16LE;
    CKivStringT m_listName;
    bool m_readFailed = false;
    CKivArray<Column> m_columns;
    bool m_skipSave = false;
};
