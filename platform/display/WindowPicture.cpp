// Composing a top-level window's picture out of the surfaces of its window tree through
// the GDI functions: each surface is read through its window's device context.
#include "platform/display/WindowPicture.h"

#include <algorithm>
#include <cstring>

namespace kiv_display {

namespace {

RECT Intersect(const RECT& a, const RECT& b) {
    return RECT{std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                std::min(a.bottom, b.bottom)};
}

bool IsEmpty(const RECT& r) { return r.right <= r.left || r.bottom <= r.top; }

// Lays the visible children of `parent` (whose area on the picture is `clip`, in the
// top-level window's client coordinates) over the picture, and their children over them.
void LayChildren(HDC picture, HWND top, HWND parent, const RECT& clip) {
    for (HWND child = GetWindow(parent, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        if (!(GetWindowLongW(child, GWL_STYLE) & WS_VISIBLE)) continue;
        RECT r{};
        GetWindowRect(child, &r);
        POINT origin{r.left, r.top};
        ScreenToClient(top, &origin);
        const RECT place{origin.x, origin.y, origin.x + (r.right - r.left), origin.y + (r.bottom - r.top)};
        const RECT shown = Intersect(place, clip);
        if (IsEmpty(shown)) continue;
        HDC source = GetDC(child);
        if (!source) continue;
        BitBlt(picture, shown.left, shown.top, shown.right - shown.left, shown.bottom - shown.top, source,
               shown.left - place.left, shown.top - place.top, SRCCOPY);
        ReleaseDC(child, source);
        LayChildren(picture, top, child, shown);
    }
}

}  // namespace

bool ComposeWindowPicture(HWND window, TWindowPicture& picture) {
    RECT client{};
    if (!IsWindow(window) || !GetClientRect(window, &client)) return false;
    const int width = std::max<LONG>(1, client.right), height = std::max<LONG>(1, client.bottom);
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;  // top-down, as the picture's rows go
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (!bitmap) return false;
    HDC memory = CreateCompatibleDC(nullptr);
    HGDIOBJ old = SelectObject(memory, bitmap);
    if (HDC own = GetDC(window)) {
        BitBlt(memory, 0, 0, width, height, own, 0, 0, SRCCOPY);
        ReleaseDC(window, own);
    }
    LayChildren(memory, window, window, RECT{0, 0, width, height});
    picture.width = width;
    picture.height = height;
    picture.pixels.resize(static_cast<size_t>(width) * static_cast<size_t>(height));
    std::memcpy(picture.pixels.data(), bits, picture.pixels.size() * sizeof(std::uint32_t));
    SelectObject(memory, old);
    DeleteDC(memory);
    DeleteObject(bitmap);
    return true;
}

void PaintWindowTree(HWND window) {
    if (!IsWindow(window)) return;
    SendMessageW(window, WM_PAINT, 0, 0);
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
        if (GetWindowLongW(child, GWL_STYLE) & WS_VISIBLE) PaintWindowTree(child);
}

}  // namespace kiv_display
