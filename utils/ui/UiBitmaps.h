// The title bar's bitmap resources, drawn by the library at load time so that they are
// crisp at the screen's size: OK, Close, Cancel, Settings, distance meter, Check and
// Menu (13540 to 13546), and the alpha-key indicator's two states by name.
#pragma once

#include "platform/win32/Win32.h"

constexpr UINT IDB_TBAR_OK = 13540;
constexpr UINT IDB_TBAR_CLOSE = 13541;
constexpr UINT IDB_TBAR_CANCEL = 13542;
constexpr UINT IDB_TBAR_SETTINGS = 13543;
constexpr UINT IDB_TBAR_EDM = 13544;
constexpr UINT IDB_TBAR_CHECK = 13545;
constexpr UINT IDB_TBAR_MENU = 13546;

// The side of every title-bar bitmap, in pixels.
constexpr int kTitlebarBitmapSize = 24;
// The title bar's background, which the empty indicator bitmap shows.
constexpr COLORREF kTitlebarColour = RGB(22, 64, 112);

namespace kiv_ui {
// A new 32-bit bitmap of the resource, owned by the caller; null for an unknown one.
HBITMAP LoadUiBitmap(UINT id);
// "IDB_ALPHAKEY" and "IDB_TITLEBAR_EMPTY"; null for any other name.
HBITMAP LoadUiBitmap(LPCWSTR name);
}  // namespace kiv_ui
