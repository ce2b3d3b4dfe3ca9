// CKivDlgTextBinding: which string of a string table each control of a dialog shows.
// Apply sets the texts of a window's children through SetWindowTextW, in the language
// loaded at that moment, so the same table serves every language and any window,
// headless or on screen.
#pragma once

#include <vector>

#include "platform/kivutils/Heap.h"
#include "platform/win32/Win32.h"
#include "utils/runtime/TextResources.h"

// One entry of a static binding table.
struct TKivControlText {
    int controlId;
    unsigned int stringId;
};

class CKivDlgTextBinding : public SharedHeapObject {
public:
    // The control identifier that names the window itself (its caption) rather than a child.
    static constexpr int kCaption = -1;

    // The string table must outlive the binding.
    explicit CKivDlgTextBinding(const CKivTextResources& strings) : strings_(strings) {}
    CKivDlgTextBinding(const CKivTextResources& strings, const TKivControlText* table, int count);

    // Binds a control to a string; binding the control again replaces its string.
    void Bind(int controlId, unsigned int stringId);
    void BindTable(const TKivControlText* table, int count);
    int GetCount() const { return static_cast<int>(bindings_.size()); }

    // Sets the text of every bound child of `window` (found by its control identifier
    // with GetDlgItem) and of the window itself for kCaption. Bindings are applied in
    // the order they were made. True when every binding found its control and its
    // string; the others are passed over, each named in the log (level 2).
    bool Apply(HWND window) const;

private:
    const CKivTextResources& strings_;
    std::vector<TKivControlText> bindings_;
};
