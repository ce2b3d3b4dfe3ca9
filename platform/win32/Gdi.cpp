// Device contexts, bitmaps, pens, brushes and stock objects over the one handle table.
#include "platform/win32/Gdi.h"

#include <cstring>
#include <mutex>

#include "platform/win32/GdiObjects.h"
#include "platform/win32/GdiText.h"
#include "platform/win32/WindowHooks.h"
#include "platform/win32/Windows.h"

using namespace kiv_win32::detail;

namespace {

template <class H, class T>
H Add(std::shared_ptr<T> object) {
    return reinterpret_cast<H>(kiv_win32::AddHandle(std::move(object)));
}

std::shared_ptr<PenObject> MakePen(UINT style, int width, COLORREF colour) {
    auto p = std::make_shared<PenObject>();
    p->pen = LOGPEN{style, POINT{width < 0 ? 0 : width, 0}, colour & 0xFFFFFF};
    return p;
}

std::shared_ptr<BrushObject> MakeBrush(UINT style, COLORREF colour) {
    auto b = std::make_shared<BrushObject>();
    b->brush = LOGBRUSH{style, colour & 0xFFFFFF, 0};
    return b;
}

// Stock objects live for the whole process; their handles never change.
struct StockObjects {
    HGDIOBJ objects[DEFAULT_GUI_FONT + 1] = {};
    HGDIOBJ monochromeBitmap = nullptr;
    HGDIOBJ systemBrushes[COLOR_GRADIENTINACTIVECAPTION + 1] = {};
    std::shared_ptr<Surface> screen;
};

template <class T>
HGDIOBJ AddStock(std::shared_ptr<T> object) {
    object->stock = true;
    return kiv_win32::AddHandle(std::move(object));
}

StockObjects& Stock() {
    static StockObjects* stock = [] {
        auto* s = new StockObjects;
        const COLORREF greys[] = {RGB(255, 255, 255), RGB(192, 192, 192), RGB(128, 128, 128), RGB(64, 64, 64),
                                  RGB(0, 0, 0)};
        for (int i = WHITE_BRUSH; i <= BLACK_BRUSH; ++i) s->objects[i] = AddStock(MakeBrush(BS_SOLID, greys[i]));
        s->objects[NULL_BRUSH] = AddStock(MakeBrush(BS_NULL, 0));
        s->objects[WHITE_PEN] = AddStock(MakePen(PS_SOLID, 0, RGB(255, 255, 255)));
        s->objects[BLACK_PEN] = AddStock(MakePen(PS_SOLID, 0, RGB(0, 0, 0)));
        s->objects[NULL_PEN] = AddStock(MakePen(PS_NULL, 0, 0));
        for (int f : {OEM_FIXED_FONT, ANSI_FIXED_FONT, ANSI_VAR_FONT, SYSTEM_FONT, DEVICE_DEFAULT_FONT,
                      SYSTEM_FIXED_FONT, DEFAULT_GUI_FONT}) {
            auto font = std::make_shared<FontObject>();
            font->font = kiv_win32::DefaultFont(f == OEM_FIXED_FONT || f == ANSI_FIXED_FONT || f == SYSTEM_FIXED_FONT);
            s->objects[f] = AddStock(font);
        }
        auto mono = std::make_shared<BitmapObject>();
        mono->surface = MakeSurface(1, 1, 1, true);
        mono->surface->monochromeDevice = true;
        s->monochromeBitmap = AddStock(mono);
        for (int i = 0; i <= COLOR_GRADIENTINACTIVECAPTION; ++i)
            s->systemBrushes[i] = AddStock(MakeBrush(BS_SOLID, SystemColour(i)));
        // The screen of a handheld without a display: drawing on it is kept, not shown.
        s->screen = MakeSurface(640, 480, 32, true);
        return s;
    }();
    return *stock;
}

std::shared_ptr<DeviceContext> NewDC(bool memory) {
    StockObjects& s = Stock();
    auto dc = std::make_shared<DeviceContext>();
    dc->memory = memory;
    dc->penHandle = s.objects[BLACK_PEN];
    dc->pen = FindGdi<PenObject>(dc->penHandle);
    dc->brushHandle = s.objects[WHITE_BRUSH];
    dc->brush = FindGdi<BrushObject>(dc->brushHandle);
    dc->fontHandle = s.objects[SYSTEM_FONT];
    dc->font = FindGdi<FontObject>(dc->fontHandle);
    if (memory) {
        dc->bitmapHandle = s.monochromeBitmap;
        dc->bitmap = FindGdi<BitmapObject>(dc->bitmapHandle);
    }
    return dc;
}

void ReleaseSelections(DeviceContext& dc) {
    if (dc.bitmap && !dc.bitmap->stock) dc.bitmap->selected = false;
    dc.bitmap.reset();
}

HBITMAP AddBitmap(std::shared_ptr<Surface> surface, bool dib) {
    if (!surface) return nullptr;
    auto b = std::make_shared<BitmapObject>();
    b->surface = std::move(surface);
    b->dibSection = dib;
    return Add<HBITMAP>(b);
}

}  // namespace

// ---- device contexts ----------------------------------------------------------------------------

HDC CreateCompatibleDC(HDC dc) {
    if (dc && !FindDC(dc)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    return Add<HDC>(NewDC(true));
}

BOOL DeleteDC(HDC dc) {
    auto d = FindDC(dc);
    if (!d) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    kiv_win32::RemoveHandle(dc);
    ReleaseSelections(*d);
    return TRUE;
}

HDC GetDC(HWND window) {
    auto dc = NewDC(false);
    if (window) {
        dc->windowSurface = WindowSurface(window);
        if (!dc->windowSurface) return nullptr;
    } else {
        dc->windowSurface = Stock().screen;
    }
    dc->window = window;
    return Add<HDC>(dc);
}

// The DC alone says which window it belongs to: the system releases it whatever window
// the caller names.
int ReleaseDC(HWND, HDC dc) {
    auto d = FindDC(dc);
    if (!d || d->memory) return 0;
    kiv_win32::RemoveHandle(dc);
    if (d->window) kiv_win32::detail::NotifyWindowChange(d->window, kiv_win32::WindowChange::Pixels);
    return 1;
}

HDC BeginPaint(HWND window, LPPAINTSTRUCT paint) {
    if (!paint) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    *paint = PAINTSTRUCT{};
    if (!IsWindow(window)) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return nullptr;
    }
    GetClientRect(window, &paint->rcPaint);
    paint->hdc = GetDC(window);
    return paint->hdc;
}

BOOL EndPaint(HWND window, const PAINTSTRUCT* paint) {
    if (paint && paint->hdc) ReleaseDC(window, paint->hdc);
    return TRUE;
}

BOOL ValidateRect(HWND window, const RECT*) { return IsWindow(window); }

HWND WindowFromDC(HDC dc) {
    auto d = FindDC(dc);
    return d ? d->window : nullptr;
}

// ---- objects ------------------------------------------------------------------------------------

HBITMAP CreateDIBSection(HDC, const BITMAPINFO* info, UINT usage, void** bits, HANDLE section, DWORD) {
    if (bits) *bits = nullptr;
    if (!info || usage != DIB_RGB_COLORS || section || info->bmiHeader.biSize < sizeof(BITMAPINFOHEADER) ||
        info->bmiHeader.biPlanes != 1 ||
        (info->bmiHeader.biCompression != BI_RGB &&
         !(info->bmiHeader.biCompression == BI_BITFIELDS && info->bmiHeader.biBitCount == 32))) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const BITMAPINFOHEADER& h = info->bmiHeader;
    const bool topDown = h.biHeight < 0;
    const LONG height = topDown ? -h.biHeight : h.biHeight;
    auto surface = MakeSurface(h.biWidth, height, h.biBitCount, topDown);
    if (!surface) return nullptr;
    if (h.biBitCount <= 8) {
        const DWORD full = 1u << h.biBitCount;
        const DWORD used = h.biClrUsed == 0 || h.biClrUsed > full ? full : h.biClrUsed;
        // The colour table follows the header, whose size the caller gave.
        const auto* table = reinterpret_cast<const RGBQUAD*>(reinterpret_cast<const BYTE*>(info) + h.biSize);
        surface->palette.assign(table, table + used);
    }
    if (bits) *bits = surface->bits;
    return AddBitmap(std::move(surface), true);
}

HBITMAP CreateCompatibleBitmap(HDC dc, int width, int height) {
    auto d = FindDC(dc);
    if (!d) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    // A bitmap with no pixels is the one-pixel monochrome bitmap, as the system hands out.
    const bool monochrome = (d->memory && d->Target().bitCount == 1) || width == 0 || height == 0;
    if (width == 0 || height == 0) width = height = 1;
    auto surface = MakeSurface(width, height, monochrome ? 1 : 32, true);
    if (surface) surface->monochromeDevice = monochrome;
    return AddBitmap(std::move(surface), false);
}

HBITMAP CreateBitmap(int width, int height, UINT planes, UINT bitsPerPixel, const void* bits) {
    if (planes != 1 || (bitsPerPixel != 1 && bitsPerPixel != 32)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    auto surface = MakeSurface(width, height, static_cast<int>(bitsPerPixel), true);
    if (!surface) return nullptr;
    surface->monochromeDevice = bitsPerPixel == 1;
    if (bits) {
        // The caller's rows are padded to whole 16-bit words.
        const int rowBytes = ((width * static_cast<int>(bitsPerPixel) + 15) / 16) * 2;
        for (int y = 0; y < height; ++y)
            std::memcpy(surface->Row(y), static_cast<const BYTE*>(bits) + static_cast<std::ptrdiff_t>(y) * rowBytes,
                        rowBytes);
    }
    return AddBitmap(std::move(surface), false);
}

HPEN CreatePen(int style, int width, COLORREF colour) {
    if ((style & PS_STYLE_MASK) > PS_INSIDEFRAME) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return Add<HPEN>(MakePen(static_cast<UINT>(style), width, colour));
}

HPEN CreatePenIndirect(const LOGPEN* pen) {
    if (!pen) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return CreatePen(static_cast<int>(pen->lopnStyle), pen->lopnWidth.x, pen->lopnColor);
}

HBRUSH CreateSolidBrush(COLORREF colour) { return Add<HBRUSH>(MakeBrush(BS_SOLID, colour)); }

HBRUSH CreateBrushIndirect(const LOGBRUSH* brush) {
    if (!brush || (brush->lbStyle != BS_SOLID && brush->lbStyle != BS_NULL)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return Add<HBRUSH>(MakeBrush(brush->lbStyle, brush->lbColor));
}

HGDIOBJ GetStockObject(int object) {
    if (object < 0 || object > DEFAULT_GUI_FONT) return nullptr;
    return Stock().objects[object];
}

HBRUSH GetSysColorBrush(int index) {
    if (index < 0 || index > COLOR_GRADIENTINACTIVECAPTION) return nullptr;
    return static_cast<HBRUSH>(Stock().systemBrushes[index]);
}

HGDIOBJ SelectObject(HDC dc, HGDIOBJ object) {
    auto d = FindDC(dc);
    auto o = FindGdi<GdiObject>(object);
    if (!d || !o) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    auto swap = [&](HGDIOBJ& handle, auto& slot) {
        using T = typename std::remove_reference_t<decltype(slot)>::element_type;
        HGDIOBJ previous = handle;
        handle = object;
        slot = std::static_pointer_cast<T>(o);
        return previous;
    };
    switch (o->ObjectType()) {
        case OBJ_PEN: return swap(d->penHandle, d->pen);
        case OBJ_BRUSH: return swap(d->brushHandle, d->brush);
        case OBJ_FONT: return swap(d->fontHandle, d->font);
        case OBJ_BITMAP: {
            auto b = std::static_pointer_cast<BitmapObject>(o);
            if (!d->memory || (b->selected && b != d->bitmap)) {
                SetLastError(ERROR_INVALID_PARAMETER);
                return nullptr;
            }
            if (d->bitmap && !d->bitmap->stock) d->bitmap->selected = false;
            if (!b->stock) b->selected = true;
            return swap(d->bitmapHandle, d->bitmap);
        }
        default: SetLastError(ERROR_INVALID_PARAMETER); return nullptr;
    }
}

HGDIOBJ GetCurrentObject(HDC dc, UINT type) {
    auto d = FindDC(dc);
    if (!d) return nullptr;
    switch (type) {
        case OBJ_PEN: return d->penHandle;
        case OBJ_BRUSH: return d->brushHandle;
        case OBJ_FONT: return d->fontHandle;
        case OBJ_BITMAP: return d->bitmapHandle;
        default: return nullptr;
    }
}

BOOL DeleteObject(HGDIOBJ object) {
    auto o = FindGdi<GdiObject>(object);
    if (!o) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (o->ObjectType() == OBJ_MEMDC) return DeleteDC(static_cast<HDC>(object));
    if (o->ObjectType() == OBJ_DC) return ReleaseDC(nullptr, static_cast<HDC>(object)) == 1;
    if (o->stock) return TRUE;
    // A selected object, a bitmap too, loses its handle now; the device context keeps
    // what it holds until something else is selected in its place.
    kiv_win32::RemoveHandle(object);
    return TRUE;
}

DWORD GetObjectType(HGDIOBJ object) {
    auto o = FindGdi<GdiObject>(object);
    if (!o) {
        SetLastError(ERROR_INVALID_HANDLE);
        return 0;
    }
    return o->ObjectType();
}

int GetObjectW(HGDIOBJ object, int size, LPVOID buffer) {
    auto o = FindGdi<GdiObject>(object);
    if (!o) {
        SetLastError(ERROR_INVALID_HANDLE);
        return 0;
    }
    return o->Describe(size, buffer);
}

// ---- device context state -----------------------------------------------------------------------

namespace {

template <class T, class V>
T Exchange(HDC dc, T DeviceContext::*field, V value, T failure) {
    auto d = FindDC(dc);
    if (!d) {
        SetLastError(ERROR_INVALID_HANDLE);
        return failure;
    }
    T previous = (*d).*field;
    (*d).*field = static_cast<T>(value);
    return previous;
}

template <class T>
T Read(HDC dc, T DeviceContext::*field, T failure) {
    auto d = FindDC(dc);
    return d ? (*d).*field : failure;
}

}  // namespace

COLORREF SetTextColor(HDC dc, COLORREF c) { return Exchange(dc, &DeviceContext::textColour, c & 0xFFFFFF, CLR_INVALID); }
COLORREF GetTextColor(HDC dc) { return Read(dc, &DeviceContext::textColour, CLR_INVALID); }
COLORREF SetBkColor(HDC dc, COLORREF c) { return Exchange(dc, &DeviceContext::bkColour, c & 0xFFFFFF, CLR_INVALID); }
COLORREF GetBkColor(HDC dc) { return Read(dc, &DeviceContext::bkColour, CLR_INVALID); }

int SetBkMode(HDC dc, int mode) {
    if (mode != TRANSPARENT && mode != OPAQUE) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    return Exchange(dc, &DeviceContext::bkMode, mode, 0);
}
int GetBkMode(HDC dc) { return Read(dc, &DeviceContext::bkMode, 0); }

DWORD GetSysColor(int index) { return SystemColour(index); }
