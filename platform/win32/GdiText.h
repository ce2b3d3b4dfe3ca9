// Fonts and text of the Win32 subset, drawn with real outlines: the DejaVu families,
// anti-aliased on 24- and 32-bit surfaces and crisp on 1- and 8-bit ones. A face name
// with "Mono" or "Courier" picks the monospaced family, "Serif" or "Times" the serif
// one, anything else the sans family; weight 600 and up is bold, lfItalic oblique.
#pragma once

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else

#include "platform/win32/Gdi.h"

constexpr LONG FW_DONTCARE = 0;
constexpr LONG FW_THIN = 100;
constexpr LONG FW_LIGHT = 300;
constexpr LONG FW_NORMAL = 400;
constexpr LONG FW_MEDIUM = 500;
constexpr LONG FW_SEMIBOLD = 600;
constexpr LONG FW_BOLD = 700;
constexpr LONG FW_HEAVY = 900;
constexpr BYTE DEFAULT_CHARSET = 1;
constexpr BYTE ANTIALIASED_QUALITY = 4;
constexpr BYTE NONANTIALIASED_QUALITY = 3;
constexpr BYTE CLEARTYPE_QUALITY = 5;

constexpr UINT TA_NOUPDATECP = 0;
constexpr UINT TA_UPDATECP = 1;
constexpr UINT TA_LEFT = 0;
constexpr UINT TA_RIGHT = 2;
constexpr UINT TA_CENTER = 6;
constexpr UINT TA_TOP = 0;
constexpr UINT TA_BOTTOM = 8;
constexpr UINT TA_BASELINE = 24;

constexpr UINT ETO_OPAQUE = 0x0002;
constexpr UINT ETO_CLIPPED = 0x0004;

constexpr UINT DT_TOP = 0x00000000;
constexpr UINT DT_LEFT = 0x00000000;
constexpr UINT DT_CENTER = 0x00000001;
constexpr UINT DT_RIGHT = 0x00000002;
constexpr UINT DT_VCENTER = 0x00000004;
constexpr UINT DT_BOTTOM = 0x00000008;
constexpr UINT DT_WORDBREAK = 0x00000010;
constexpr UINT DT_SINGLELINE = 0x00000020;
constexpr UINT DT_EXPANDTABS = 0x00000040;
constexpr UINT DT_NOCLIP = 0x00000100;
constexpr UINT DT_CALCRECT = 0x00000400;
constexpr UINT DT_NOPREFIX = 0x00000800;

struct TEXTMETRICW {
    LONG tmHeight;
    LONG tmAscent;
    LONG tmDescent;
    LONG tmInternalLeading;
    LONG tmExternalLeading;
    LONG tmAveCharWidth;
    LONG tmMaxCharWidth;
    LONG tmWeight;
    LONG tmOverhang;
    LONG tmDigitizedAspectX;
    LONG tmDigitizedAspectY;
    WCHAR tmFirstChar;
    WCHAR tmLastChar;
    WCHAR tmDefaultChar;
    WCHAR tmBreakChar;
    BYTE tmItalic;
    BYTE tmUnderlined;
    BYTE tmStruckOut;
    BYTE tmPitchAndFamily;
    BYTE tmCharSet;
};

// A negative lfHeight is the em size in pixels, a positive one the cell height (ascent
// plus descent), 0 a cell of 16 pixels. lfEscapement turns the text, in tenths of a
// degree counter-clockwise, about its reference point.
HFONT CreateFontIndirectW(const LOGFONTW* font);
inline HFONT CreateFontIndirect(const LOGFONTW* font) { return CreateFontIndirectW(font); }

UINT SetTextAlign(HDC dc, UINT align);
UINT GetTextAlign(HDC dc);

// `rect` is filled with the background colour under ETO_OPAQUE and clips the text under
// ETO_CLIPPED; `dx`, when given, sets the advance after each character.
BOOL ExtTextOutW(HDC dc, int x, int y, UINT options, const RECT* rect, LPCWSTR text, UINT count, const INT* dx);
BOOL TextOutW(HDC dc, int x, int y, LPCWSTR text, int count);
// A count of -1 means a null-terminated text. Returns the height of the text drawn;
// DT_CALCRECT only measures, setting the rectangle's right and bottom. DT_VCENTER and
// DT_BOTTOM apply to DT_SINGLELINE text. Without DT_NOPREFIX "&x" shows x and "&&" an &.
int DrawTextW(HDC dc, LPCWSTR text, int count, LPRECT rect, UINT format);
// The advance width of the text and the font's cell height.
BOOL GetTextExtentPoint32W(HDC dc, LPCWSTR text, int count, SIZE* size);
BOOL GetTextMetricsW(HDC dc, TEXTMETRICW* metrics);

namespace kiv_win32 {
// The LOGFONTW of the stock fonts: DejaVu Sans (or Sans Mono) with a 16-pixel cell.
LOGFONTW DefaultFont(bool fixedPitch);
}  // namespace kiv_win32
#endif  // _WIN32
