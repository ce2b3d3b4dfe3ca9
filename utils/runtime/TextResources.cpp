// The string table, resolved through the language translation at every load, so a
// language loaded later shows at the next load.
#include "utils/runtime/TextResources.h"

#include "platform/kivutils/Xlate.h"

void CKivTextResources::Add(unsigned int id, const wchar_t* text) {
    if (text) texts_[id] = text;
    else texts_.erase(id);
}

void CKivTextResources::AddTable(const TKivTextResource* table, int count) {
    if (!table) return;
    for (int i = 0; i < count; ++i) Add(table[i].id, table[i].text);
}

const wchar_t* CKivTextResources::GetSource(unsigned int id) const {
    const auto it = texts_.find(id);
    return it == texts_.end() ? nullptr : it->second.GetString();
}

bool CKivTextResources::Load(unsigned int id, CKivStringT& text) const {
    const wchar_t* source = GetSource(id);
    text = source ? Xlate(source) : L"";
    return source != nullptr;
}
