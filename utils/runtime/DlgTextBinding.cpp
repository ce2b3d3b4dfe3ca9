// Applying a dialog's text binding through GetDlgItem and SetWindowTextW.
#include "utils/runtime/DlgTextBinding.h"

#include "platform/kivutils/KivLog.h"

CKivDlgTextBinding::CKivDlgTextBinding(const CKivTextResources& strings, const TKivControlText* table, int count)
    : strings_(strings) {
    BindTable(table, count);
}

void CKivDlgTextBinding::Bind(int controlId, unsigned int stringId) {
    for (TKivControlText& binding : bindings_) {
        if (binding.controlId == controlId) {
            binding.stringId = stringId;
            return;
        }
    }
    bindings_.push_back(TKivControlText{controlId, stringId});
}

void CKivDlgTextBinding::BindTable(const TKivControlText* table, int count) {
    if (!table) return;
    for (int i = 0; i < count; ++i) Bind(table[i].controlId, table[i].stringId);
}

bool CKivDlgTextBinding::Apply(HWND window) const {
    if (!IsWindow(window)) return false;
    bool complete = true;
    CKivStringT text;
    for (const TKivControlText& binding : bindings_) {
        HWND control = binding.controlId == kCaption ? window : GetDlgItem(window, binding.controlId);
        if (!control) {
            LOGMESSAGE(2, L"dialog texts: no control %d in the window", binding.controlId);
            complete = false;
            continue;
        }
        if (!strings_.Load(binding.stringId, text)) {
            LOGMESSAGE(2, L"dialog texts: no string %u for control %d", binding.stringId, binding.controlId);
            complete = false;
            continue;
        }
        SetWindowTextW(control, text);
    }
    return complete;
}
