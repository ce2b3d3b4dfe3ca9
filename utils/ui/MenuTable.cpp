// Reading a menu-string table into the title bar's menu entries, sub-menus by recursion.
#include "utils/ui/MenuTable.h"

#include "platform/kivutils/Xlate.h"
#include "utils/ui/DlgBase.h"

namespace kiv_ui {

namespace {

// Reads entries from `at` into `into` until the end of the table or of the sub-menu;
// returns false at a bad entry, leaving `at` on it.
bool ReadEntries(const TMenuString* table, int count, int& at, std::vector<TTitlebarMenuItem>& into, int depth) {
    while (at < count) {
        const TMenuString& e = table[at];
        switch (e.kind) {
            case eMenuCommand: {
                if (!e.text || !*e.text || e.id == 0) return false;
                TTitlebarMenuItem m;
                m.text = Xlate(e.text);
                m.id = e.id;
                into.push_back(std::move(m));
                ++at;
                break;
            }
            case eMenuSeparator: {
                TTitlebarMenuItem m;
                m.separator = true;
                into.push_back(std::move(m));
                ++at;
                break;
            }
            case eMenuPopup: {
                if (!e.text || !*e.text) return false;
                const int start = at++;
                TTitlebarMenuItem m;
                m.text = Xlate(e.text);
                if (!ReadEntries(table, count, at, m.popup, depth + 1)) return false;
                if (at >= count || m.popup.empty()) {
                    at = start;
                    return false;
                }
                ++at;  // past its end
                into.push_back(std::move(m));
                break;
            }
            case eMenuPopupEnd: return depth > 0;
            default: return false;
        }
    }
    return depth == 0;
}

}  // namespace

bool BuildMenuFromTable(const TMenuString* table, int count, CTitlebarMenu& menu, int* badEntry) {
    menu.items.clear();
    int at = 0;
    if (!table && count > 0) count = 0;
    if (!ReadEntries(table, count, at, menu.items, 0) || at != count) {
        menu.items.clear();
        if (badEntry) *badEntry = at < count ? at : count - 1;
        return false;
    }
    return true;
}

bool LoadMenuTable(CDlgBase& dialog, const TMenuString* table, int count) {
    CTitlebarMenu menu;
    if (!BuildMenuFromTable(table, count, menu)) return false;
    dialog.RemoveAllMenuItems();
    for (const TTitlebarMenuItem& m : menu.items) {
        if (m.separator) dialog.AddSeparator();
        else if (!m.popup.empty()) {
            CTitlebarMenu popup;
            popup.items = m.popup;
            dialog.AddPopupMenuItem(m.text, popup);
        } else dialog.AddMenuItem(m.text, m.id);
    }
    return true;
}

}  // namespace kiv_ui
