// DrawTransparentImage and DrawOpaqueImage: one dispatch on the source's kind.
#include "utils/render/ImageBlits.h"

namespace {

// Runs `copy` from a device context that shows `source`: the source itself when it is
// one, else a memory device context with the bitmap selected for the copy's length.
template <typename Copy>
int withSourceDc(void* source, Copy copy) {
    const DWORD type = source != nullptr ? GetObjectType(static_cast<HGDIOBJ>(source)) : 0;
    if (type == OBJ_DC || type == OBJ_MEMDC) return copy(static_cast<HDC>(source));
    if (type != OBJ_BITMAP) return 0;
    HDC dc = CreateCompatibleDC(nullptr);
    if (dc == nullptr) return 0;
    HGDIOBJ previous = SelectObject(dc, static_cast<HGDIOBJ>(source));
    const int result = copy(dc);
    SelectObject(dc, previous);
    DeleteDC(dc);
    return result;
}

}  // namespace

int DrawTransparentImage(HDC dest, long x, long y, long width, long height, void* source, long xSrc, long ySrc,
                         long widthSrc, long heightSrc, COLORREF transparent) {
    return withSourceDc(source, [&](HDC from) {
        return static_cast<int>(
            TransparentImage(dest, x, y, width, height, from, xSrc, ySrc, widthSrc, heightSrc, transparent));
    });
}

int DrawOpaqueImage(HDC dest, long x, long y, long width, long height, void* source, long xSrc, long ySrc) {
    return withSourceDc(source, [&](HDC from) {
        return static_cast<int>(BitBlt(dest, static_cast<int>(x), static_cast<int>(y), static_cast<int>(width),
                                       static_cast<int>(height), from, static_cast<int>(xSrc),
                                       static_cast<int>(ySrc), SRCCOPY));
    });
}
