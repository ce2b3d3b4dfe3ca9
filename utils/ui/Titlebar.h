// CTitlebar: the strip across the top of every dialog that replaces the system caption.
// Its items are addressed by one-letter names ("A" the menu button, "B" the title, "R"
// the alpha-key indicator, "Y" and "Z" the right-hand buttons): bitmap and text buttons,
// a title and plain bitmaps. The menu button opens a menu with popups, separators and
// check and enable states. The bar is a child window of its dialog, so that taps on it
// reach it; a tapped button sends its command to the dialog.
#pragma once

#include <memory>
#include <vector>

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivString.h"
#include "platform/mfc/Wnd.h"

// The bar's height in pixels; a dialog's controls start below it.
constexpr int kTitlebarHeight = 28;

// One entry of the title bar's menu; a popup holds its own entries.
struct TTitlebarMenuItem {
    CKivStringT text;
    UINT id = 0;
    bool separator = false;
    bool checked = false;
    bool enabled = true;
    std::vector<TTitlebarMenuItem> popup;
};

class CTitlebarMenu : public SharedHeapObject {
public:
    std::vector<TTitlebarMenuItem> items;
};

class CTitlebar : public SharedHeapObject {
public:
    CTitlebar();
    ~CTitlebar();
    CTitlebar(const CTitlebar&) = delete;
    CTitlebar& operator=(const CTitlebar&) = delete;

    // Items. A bitmap handed over belongs to the bar from then on. Adding a name that is
    // already there replaces that item. The flag of a bitmap button draws it pressed-in.
    void AddBitmapButton(LPCWSTR name, UINT id, HBITMAP bitmap, BOOL flag);
    void AddMenuButton(LPCWSTR name, UINT id, HBITMAP bitmap, HBITMAP pressed);
    void AddButton(LPCWSTR name, LPCWSTR text, UINT id);
    void AddTitle(LPCWSTR name);
    void AddBitmap(LPCWSTR name, HBITMAP bitmap);
    BOOL ChangeBitmap(LPCWSTR name, HBITMAP bitmap);
    BOOL ChangeTitle(LPCWSTR text);  // the text of the title item (the dialog's text at InitDialog)
    BOOL ChangeButtonText(LPCWSTR name, LPCWSTR text);
    BOOL HasItem(LPCWSTR name) const;
    // The command of an item, or 0; -1 when there is no such item.
    int GetItemCommand(LPCWSTR name) const;
    CKivStringT GetItemText(LPCWSTR name) const;
    // Item names from left to right once laid out.
    CKivStringT GetLayoutOrder() const;
    RECT GetItemRect(LPCWSTR name) const;

    // The menu. A position of -1 (or past the end) appends.
    void AddMenuItem(LPCWSTR text, UINT id, int position = -1);
    void AddPopupMenuItem(LPCWSTR text, const CTitlebarMenu& menu, int position = -1);
    void AddSeparator(int position = -1);
    BOOL RemoveMenuItem(int position);
    void RemoveAllMenuItems();
    BOOL CheckTbarMenuItem(UINT id, BOOL state);
    BOOL EnableTbarMenuItem(UINT id, BOOL state);
    const std::vector<TTitlebarMenuItem>& GetMenuItems() const { return menu_; }
    // Opens the menu under the named button; the chosen entry's command goes to the
    // dialog as WM_COMMAND. Up and Down move, Enter (or Right on a sub-menu's entry) opens
    // a sub-menu or chooses, Left and Escape go back to the menu above or close it.
    BOOL DisplayMenu(LPCWSTR name);
    HWND GetMenuWindow() const { return menuWindow_; }
    void CloseMenu();

    // Makes the bar's window across the top of the dialog, with this font for its texts.
    BOOL InitDialog(HWND dialog, HFONT font, int type);
    void Activate(UINT state);
    BOOL IsActive() const { return active_; }
    // Draws the bar at the top of the device context; a non-zero flag draws it as inactive.
    void Paint(HDC dc, int flag);
    void FinalizeChanges();
    HWND GetSafeHwnd() const { return window_; }

private:
    struct Item;
    Item* Find(LPCWSTR name);
    const Item* Find(LPCWSTR name) const;
    Item& Put(LPCWSTR name);
    void Repaint();
    static LRESULT CALLBACK BarProc(HWND w, UINT message, WPARAM wParam, LPARAM lParam);
    static LRESULT CALLBACK MenuProc(HWND w, UINT message, WPARAM wParam, LPARAM lParam);
    void PaintMenu();
    void ChooseMenuItem(int index);

    std::vector<std::unique_ptr<Item>> items_;
    std::vector<TTitlebarMenuItem> menu_;
    HWND dialog_ = nullptr;
    HWND window_ = nullptr;
    HWND menuWindow_ = nullptr;
    HWND focusBeforeMenu_ = nullptr;
    void ShowEntries(const std::vector<TTitlebarMenuItem>& entries);
    void BackOrClose();
    std::vector<const TTitlebarMenuItem*> shown_;  // the entries the open menu lists
    int menuCurrent_ = 0;
    // The menus above an open sub-menu, each with the entry that opened it.
    std::vector<std::pair<std::vector<const TTitlebarMenuItem*>, int>> parents_;
public:
    // What the open menu lists (null entries none), the current entry and the depth of
    // sub-menus, for screens that show or test where the user is.
    const std::vector<const TTitlebarMenuItem*>& GetShownMenuItems() const { return shown_; }
    int GetCurrentMenuItem() const { return menuCurrent_; }
    int GetMenuDepth() const { return static_cast<int>(parents_.size()); }
private:
    HFONT font_ = nullptr;
    bool active_ = true;
    int pressed_ = -1;
};
