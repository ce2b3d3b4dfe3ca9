// GDI objects and device contexts of the Win32 subset: memory and window device
// contexts, device-independent and compatible bitmaps, pens, brushes, stock objects and
// the system colours. Lines, shapes, blits and text have their own family headers.
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include "platform/win32/Win32Types.h"

// ---- structures -----------------------------------------------------------------------------

struct RGBQUAD {
    BYTE rgbBlue;
    BYTE rgbGreen;
    BYTE rgbRed;
    BYTE rgbReserved;
};

#pragma pack(push, 2)
struct BITMAPFILEHEADER {
    WORD bfType;
    DWORD bfSize;
    WORD bfReserved1;
    WORD bfReserved2;
    DWORD bfOffBits;
};
#pragma pack(pop)

struct BITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth;
    LONG biHeight;
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
};
using LPBITMAPINFOHEADER = BITMAPINFOHEADER*;

struct BITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
};
using LPBITMAPINFO = BITMAPINFO*;

struct BITMAP {
    LONG bmType;
    LONG bmWidth;
    LONG bmHeight;
    LONG bmWidthBytes;
    WORD bmPlanes;
    WORD bmBitsPixel;
    LPVOID bmBits;
};

struct DIBSECTION {
    BITMAP dsBm;
    BITMAPINFOHEADER dsBmih;
    DWORD dsBitfields[3];
    HANDLE dshSection;
    DWORD dsOffset;
};

struct LOGPEN {
    UINT lopnStyle;
    POINT lopnWidth;  // only x is used
    COLORREF lopnColor;
};

struct LOGBRUSH {
    UINT lbStyle;
    COLORREF lbColor;
    ULONG_PTR lbHatch;
};

constexpr int LF_FACESIZE = 32;
struct LOGFONTW {
    LONG lfHeight;
    LONG lfWidth;
    LONG lfEscapement;
    LONG lfOrientation;
    LONG lfWeight;
    BYTE lfItalic;
    BYTE lfUnderline;
    BYTE lfStrikeOut;
    BYTE lfCharSet;
    BYTE lfOutPrecision;
    BYTE lfClipPrecision;
    BYTE lfQuality;
    BYTE lfPitchAndFamily;
    WCHAR lfFaceName[LF_FACESIZE];
};

// ---- constants ---------------------------------------------------------------------------------

constexpr DWORD BI_RGB = 0;
constexpr DWORD BI_RLE8 = 1;
constexpr DWORD BI_RLE4 = 2;
constexpr DWORD BI_BITFIELDS = 3;
constexpr UINT DIB_RGB_COLORS = 0;
constexpr UINT DIB_PAL_COLORS = 1;

constexpr DWORD OBJ_PEN = 1;
constexpr DWORD OBJ_BRUSH = 2;
constexpr DWORD OBJ_DC = 3;
constexpr DWORD OBJ_PAL = 5;
constexpr DWORD OBJ_FONT = 6;
constexpr DWORD OBJ_BITMAP = 7;
constexpr DWORD OBJ_MEMDC = 10;

constexpr int PS_SOLID = 0;
constexpr int PS_DASH = 1;
constexpr int PS_DOT = 2;
constexpr int PS_DASHDOT = 3;
constexpr int PS_DASHDOTDOT = 4;
constexpr int PS_NULL = 5;
constexpr int PS_INSIDEFRAME = 6;
constexpr int PS_STYLE_MASK = 0x0000000F;

constexpr UINT BS_SOLID = 0;
constexpr UINT BS_NULL = 1;
constexpr UINT BS_HOLLOW = BS_NULL;

constexpr int WHITE_BRUSH = 0;
constexpr int LTGRAY_BRUSH = 1;
constexpr int GRAY_BRUSH = 2;
constexpr int DKGRAY_BRUSH = 3;
constexpr int BLACK_BRUSH = 4;
constexpr int NULL_BRUSH = 5;
constexpr int HOLLOW_BRUSH = NULL_BRUSH;
constexpr int WHITE_PEN = 6;
constexpr int BLACK_PEN = 7;
constexpr int NULL_PEN = 8;
constexpr int OEM_FIXED_FONT = 10;
constexpr int ANSI_FIXED_FONT = 11;
constexpr int ANSI_VAR_FONT = 12;
constexpr int SYSTEM_FONT = 13;
constexpr int DEVICE_DEFAULT_FONT = 14;
constexpr int SYSTEM_FIXED_FONT = 16;
constexpr int DEFAULT_GUI_FONT = 17;

constexpr int TRANSPARENT = 1;
constexpr int OPAQUE = 2;

constexpr COLORREF CLR_INVALID = 0xFFFFFFFF;
#define HGDI_ERROR (reinterpret_cast<HGDIOBJ>(static_cast<LONG_PTR>(-1)))

constexpr int COLOR_SCROLLBAR = 0;
constexpr int COLOR_BACKGROUND = 1;
constexpr int COLOR_ACTIVECAPTION = 2;
constexpr int COLOR_INACTIVECAPTION = 3;
constexpr int COLOR_MENU = 4;
constexpr int COLOR_WINDOW = 5;
constexpr int COLOR_WINDOWFRAME = 6;
constexpr int COLOR_MENUTEXT = 7;
constexpr int COLOR_WINDOWTEXT = 8;
constexpr int COLOR_CAPTIONTEXT = 9;
constexpr int COLOR_ACTIVEBORDER = 10;
constexpr int COLOR_INACTIVEBORDER = 11;
constexpr int COLOR_APPWORKSPACE = 12;
constexpr int COLOR_HIGHLIGHT = 13;
constexpr int COLOR_HIGHLIGHTTEXT = 14;
constexpr int COLOR_BTNFACE = 15;
constexpr int COLOR_BTNSHADOW = 16;
constexpr int COLOR_GRAYTEXT = 17;
constexpr int COLOR_BTNTEXT = 18;
constexpr int COLOR_INACTIVECAPTIONTEXT = 19;
constexpr int COLOR_BTNHIGHLIGHT = 20;
constexpr int COLOR_3DDKSHADOW = 21;
constexpr int COLOR_3DLIGHT = 22;
constexpr int COLOR_INFOTEXT = 23;
constexpr int COLOR_INFOBK = 24;
constexpr int COLOR_STATIC = 25;
constexpr int COLOR_STATICTEXT = 26;
constexpr int COLOR_GRADIENTACTIVECAPTION = 27;
constexpr int COLOR_GRADIENTINACTIVECAPTION = 28;

// ---- device contexts ----------------------------------------------------------------------------

// A memory device context starts with a 1x1 monochrome bitmap selected, as on the device.
HDC CreateCompatibleDC(HDC dc);
BOOL DeleteDC(HDC dc);
// A window's device context draws into the window's own 32-bit surface of its client
// size (made on first use, kept while the window lives, resized with the window), so a
// window without a display still holds its picture. A null window gives the screen's.
HDC GetDC(HWND window);
int ReleaseDC(HWND window, HDC dc);
HWND WindowFromDC(HDC dc);

// Painting in answer to WM_PAINT. The host keeps no update region and sends WM_PAINT only
// when asked, so BeginPaint gives the window's device context over its whole client area
// and EndPaint releases it; where the system keeps update regions, EndPaint is also what
// validates the window, so a WM_PAINT handler must paint between the two.
struct PAINTSTRUCT {
    HDC hdc;
    BOOL fErase;
    RECT rcPaint;
    BOOL fRestore;
    BOOL fIncUpdate;
    BYTE rgbReserved[32];
};
using LPPAINTSTRUCT = PAINTSTRUCT*;
HDC BeginPaint(HWND window, LPPAINTSTRUCT paint);
BOOL EndPaint(HWND window, const PAINTSTRUCT* paint);
// Marks the window's paint as done without painting; as with EndPaint, nothing is left
// to validate on the host. FALSE for what is no window.
BOOL ValidateRect(HWND window, const RECT* rect);

// ---- objects ------------------------------------------------------------------------------------

HBITMAP CreateDIBSection(HDC dc, const BITMAPINFO* info, UINT usage, void** bits, HANDLE section, DWORD offset);
// Same format as the bitmap selected into the device context: monochrome for a fresh
// memory device context, 32-bit otherwise.
HBITMAP CreateCompatibleBitmap(HDC dc, int width, int height);
HBITMAP CreateBitmap(int width, int height, UINT planes, UINT bitsPerPixel, const void* bits);
HPEN CreatePen(int style, int width, COLORREF colour);
HPEN CreatePenIndirect(const LOGPEN* pen);
HBRUSH CreateSolidBrush(COLORREF colour);
HBRUSH CreateBrushIndirect(const LOGBRUSH* brush);
HGDIOBJ GetStockObject(int object);
HBRUSH GetSysColorBrush(int index);
// A bitmap already selected into another device context cannot be selected (null).
HGDIOBJ SelectObject(HDC dc, HGDIOBJ object);
HGDIOBJ GetCurrentObject(HDC dc, UINT type);
// A bitmap still selected into a device context is not deleted (FALSE); a pen, brush or
// font still selected lives on until the device context lets go of it. Stock objects are
// never deleted.
BOOL DeleteObject(HGDIOBJ object);
DWORD GetObjectType(HGDIOBJ object);
// BITMAP or DIBSECTION for bitmaps, LOGPEN for pens, LOGBRUSH for brushes, LOGFONTW for
// fonts; a null buffer asks for the size.
int GetObjectW(HGDIOBJ object, int size, LPVOID buffer);
inline int GetObject(HGDIOBJ object, int size, LPVOID buffer) { return GetObjectW(object, size, buffer); }

// ---- device context state -----------------------------------------------------------------------

COLORREF SetTextColor(HDC dc, COLORREF colour);
COLORREF GetTextColor(HDC dc);
COLORREF SetBkColor(HDC dc, COLORREF colour);
COLORREF GetBkColor(HDC dc);
int SetBkMode(HDC dc, int mode);
int GetBkMode(HDC dc);

DWORD GetSysColor(int index);
#endif  // _WIN32
