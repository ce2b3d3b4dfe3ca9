// Loading the column records of one list from "columns.ini" and writing the whole file
// back with this list's records replaced.
#include "utils/settings/ColumnSettings.h"

#include "platform/kivutils/FileFuncs.h"
#include "platform/kivutils/KivLog.h"

namespace {

CKivStringT ColumnsFile() { return GetRootDir() + L"\\columns.ini"; }

}  // namespace

CColumnSettings::CColumnSettings(const wchar_t* listName) : m_listName(listName) {
    m_readFailed = !kiv_settings::readSettingsAsIni(ColumnsFile(), *this, m_encoding);
    m_skipSave = false;
    if (m_readFailed) return;
    const CKivStringT order = GetValue(m_listName, L"order", L"");
    int cursor = 0;
    for (CKivStringT id = order.Tokenize(L" ", cursor); !id.IsEmpty(); id = order.Tokenize(L" ", cursor))
        m_columns.Add(Column{id, L"1"});
    const CKivStringT show = GetValue(m_listName, L"show", L"");
    cursor = 0;
    // Missing flags leave their columns shown; surplus flags are ignored.
    int k = 0;
    for (CKivStringT flag = show.Tokenize(L" ", cursor); !flag.IsEmpty() && k < m_columns.GetSize();
         flag = show.Tokenize(L" ", cursor), ++k)
        m_columns[k].show = flag;
}

CColumnSettings::~CColumnSettings() {
    if (m_skipSave) return;
    // The lists of every view share the file: one that exists but was not read (over
    // the reader's size cap, or unreadable) would lose all other lists to this one.
    if (m_readFailed && FileFuncs::IsFileExist(ColumnsFile())) {
        LOGMESSAGE(1, L"Column settings file %s was not read, so list %s is not written to it",
                   ColumnsFile().GetString(), m_listName.GetString());
        return;
    }
    CKivStringT order, show;
    for (int i = 0; i < m_columns.GetSize(); ++i) {
        if (i > 0) {
            order += L" ";
            show += L" ";
        }
        order += m_columns[i].id;
        show += m_columns[i].show;
    }
    SetValue(m_listName, L"order", order);
    SetValue(m_listName, L"show", show);
    // Deliberate: the result is not checked; a list view has nobody to tell.
    kiv_settings::writeSettingsAsIni(ColumnsFile(), *this, m_encoding);
}

int CColumnSettings::getColumnCount() const { return m_columns.GetSize(); }

const wchar_t* CColumnSettings::getColumnId(int index) const {
    if (index < 0 || index >= m_columns.GetSize()) return nullptr;
    return m_columns[index].id;
}

bool CColumnSettings::getColumnShowFlag(int index) const {
    if (index < 0 || index >= m_columns.GetSize()) return false;
    return m_columns[index].show == L"1";
}

void CColumnSettings::addColumn(const wchar_t* id, bool show) { m_columns.Add(Column{CKivStringT(id), show ? L"1" : L"0"}); }

void CColumnSettings::clear() { m_columns.RemoveAll(); }
