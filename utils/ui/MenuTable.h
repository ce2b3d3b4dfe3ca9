// Menus from menu-string tables: a screen lists its menu as a static table of entries
// (a command with its text and identifier, a separator, the start and the end of a
// sub-menu), and the table becomes the title bar's drop-down menu, its texts translated.
#pragma once

#include "platform/kivutils/KivString.h"
#include "utils/ui/Titlebar.h"

class CDlgBase;

enum EMenuStringKind : int {
    eMenuCommand = 0,
    eMenuSeparator = 1,
    eMenuPopup = 2,  // the entries up to its eMenuPopupEnd form its sub-menu
    eMenuPopupEnd = 3,
};

struct TMenuString {
    EMenuStringKind kind;
    LPCWSTR text;
    UINT id;
};

namespace kiv_ui {

// Builds the menu of the table's `count` entries. False, with an empty menu and the
// entry at fault in `badEntry`, for a table whose sub-menus do not close (or close one
// too many), a command without text or identifier, or an empty sub-menu.
bool BuildMenuFromTable(const TMenuString* table, int count, CTitlebarMenu& menu, int* badEntry = nullptr);

// Replaces the dialog's title-bar menu with the table's (after the dialog initialised,
// which adds Help); false and the menu unchanged for a bad table.
bool LoadMenuTable(CDlgBase& dialog, const TMenuString* table, int count);

template <int N>
bool LoadMenuTable(CDlgBase& dialog, const TMenuString (&table)[N]) {
    return LoadMenuTable(dialog, table, N);
}

}  // namespace kiv_ui
