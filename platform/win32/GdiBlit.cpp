// Block transfers. Every copy is clipped to both surfaces first; pixels are converted
// through their colours when the two formats differ.
#include "platform/win32/GdiBlit.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "platform/win32/GdiObjects.h"

using namespace kiv_win32::detail;

namespace {

bool UsesSource(DWORD rop) {
    const unsigned code = (rop >> 16) & 0xFF;
    return ((code >> 2) & 0x33) != (code & 0x33);
}

// The ternary operation on 24-bit pixels: bit i of the code is the result for the
// pattern, source and destination bits (i >> 2, i >> 1, i) & 1.
std::uint32_t Rop3(unsigned code, std::uint32_t p, std::uint32_t s, std::uint32_t d) {
    std::uint32_t r = 0;
    for (unsigned i = 0; i < 8; ++i)
        if ((code >> i) & 1) r |= ((i & 4) ? p : ~p) & ((i & 2) ? s : ~s) & ((i & 1) ? d : ~d);
    return r & 0xFFFFFF;
}

// Reads source pixels as 0x00RRGGBB. A monochrome device bitmap shows its zero bits in
// the destination's text colour and its one bits in its background colour.
struct SourceReader {
    const Surface& s;
    std::uint32_t zero = 0, one = 0xFFFFFF;
    bool mapped = false;
    SourceReader(const Surface& source, const DeviceContext& dest) : s(source) {
        if (source.monochromeDevice && dest.Target().bitCount != 1) {
            mapped = true;
            zero = ToPixel(dest.textColour);
            one = ToPixel(dest.bkColour);
        }
    }
    std::uint32_t operator()(int x, int y) const {
        if (mapped) return s.GetNative(x, y) ? one : zero;
        return s.bitCount >= 24 ? s.GetNative(x, y) : ToPixel(s.GetColour(x, y));
    }
};

// Writes 0x00RRGGBB into the destination. A colour source going into a monochrome
// device bitmap turns its background colour white and everything else black.
struct DestWriter {
    Surface& s;
    bool mapped = false;
    std::uint32_t sourceBk = 0;
    std::uint32_t cachedPixel = 0xFFFFFFFF, cachedNative = 0;
    DestWriter(Surface& dest, const Surface* source, const DeviceContext* sourceDC) : s(dest) {
        if (dest.monochromeDevice && source && source->bitCount != 1) {
            mapped = true;
            sourceBk = sourceDC ? ToPixel(sourceDC->bkColour) : 0xFFFFFF;
        }
    }
    std::uint32_t NativeOf(std::uint32_t pixel) {
        if (s.bitCount >= 24) return pixel;
        if (pixel != cachedPixel) {
            cachedPixel = pixel;
            cachedNative = s.Native(FromPixel(pixel));
        }
        return cachedNative;
    }
    std::uint32_t Read(int x, int y) const { return s.bitCount >= 24 ? s.GetNative(x, y) : ToPixel(s.GetColour(x, y)); }
    void Write(int x, int y, std::uint32_t pixel, std::uint32_t sourcePixel) {
        if (mapped) {
            s.PutNative(x, y, sourcePixel == sourceBk ? 1 : 0);
            return;
        }
        s.PutNative(x, y, NativeOf(pixel));
    }
};

// Wide enough that no sum of two coordinates overflows.
struct Box {
    std::int64_t x, y, w, h;
};

// Clips a destination box and its source box together (both the same size), so that
// both stay on their surfaces. False when nothing is left.
bool ClipPair(Box& d, Box& src, const Surface& dest, const Surface* source) {
    auto clipAxis = [](std::int64_t& dp, std::int64_t& sp, std::int64_t& len, std::int64_t dLimit,
                       std::int64_t sLimit, bool hasSource) {
        if (dp < 0) {
            sp -= dp;
            len += dp;
            dp = 0;
        }
        if (hasSource && sp < 0) {
            dp -= sp;
            len += sp;
            sp = 0;
        }
        len = std::min(len, dLimit - dp);
        if (hasSource) len = std::min(len, sLimit - sp);
        return len > 0;
    };
    const bool has = source != nullptr;
    return clipAxis(d.x, src.x, d.w, dest.width, has ? source->width : 0, has) &&
           clipAxis(d.y, src.y, d.h, dest.height, has ? source->height : 0, has) && (src.w = d.w, src.h = d.h, true);
}

// Copies a block between surfaces of the same depth row by row, in an order that is
// safe when the two are the same surface and overlap.
void CopyRows(Surface& dest, const Surface& source, const Box& d, const Box& s) {
    const int bytesPerPixel = dest.bitCount / 8;
    const std::size_t bytes = static_cast<std::size_t>(d.w) * bytesPerPixel;
    const bool downwards = &dest == &source && d.y > s.y;
    for (std::int64_t i = 0; i < d.h; ++i) {
        const std::int64_t row = downwards ? d.h - 1 - i : i;
        std::memmove(dest.Row(static_cast<int>(d.y + row)) + static_cast<std::size_t>(d.x) * bytesPerPixel,
                     source.Row(static_cast<int>(s.y + row)) + static_cast<std::size_t>(s.x) * bytesPerPixel, bytes);
    }
}

// The block operation behind every transfer: destination box, source box (stretched
// to it by nearest pixel), raster operation or transparent colour.
struct Transfer {
    DeviceContext& dest;
    const Surface* source = nullptr;
    const DeviceContext* sourceDC = nullptr;
    Box d{}, s{};
    DWORD rop = SRCCOPY;
    bool keyed = false;
    std::uint32_t key = 0;

    BOOL Run() {
        Surface& target = dest.Target();
        if (d.w <= 0 || d.h <= 0) return TRUE;
        const bool sourceUsed = keyed || UsesSource(rop);
        if (sourceUsed && !source) {
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
        if (sourceUsed && (s.w <= 0 || s.h <= 0)) return TRUE;
        const bool stretched = sourceUsed && (s.w != d.w || s.h != d.h);
        if (stretched) return RunStretched(target);
        Box db = d, sb = s;
        if (!ClipPair(db, sb, target, sourceUsed ? source : nullptr)) return TRUE;
        const unsigned code = (rop >> 16) & 0xFF;
        const bool sameFormat = sourceUsed && source->bitCount == target.bitCount && target.bitCount >= 8 &&
                                !source->monochromeDevice && !target.monochromeDevice &&
                                (target.bitCount >= 24 || source->palette.size() == target.palette.size());
        if (!keyed && code == 0xCC && sameFormat &&
            (target.bitCount >= 24 || std::equal(source->palette.begin(), source->palette.end(), target.palette.begin(),
                                                 [](RGBQUAD a, RGBQUAD b) { return std::memcmp(&a, &b, 4) == 0; }))) {
            CopyRows(target, *source, db, sb);
            return TRUE;
        }
        if (!keyed && !sourceUsed && !UsesDest(code)) {
            std::uint32_t value = target.Native(FromPixel(Rop3(code, Pattern(), 0, 0)));
            // The two constant operations set the pixel's bits themselves: on a palette
            // surface that is the table's first entry and its last, whatever they hold.
            if (target.bitCount <= 8 && (code == 0x00 || code == 0xFF))
                value = code == 0 ? 0u : (1u << target.bitCount) - 1;
            for (int row = 0; row < db.h; ++row)
                target.FillSpan(static_cast<int>(db.y + row), static_cast<int>(db.x), static_cast<int>(db.x + db.w), value);
            return TRUE;
        }
        // Overlapping copies within one surface read from a snapshot of the source block.
        std::shared_ptr<Surface> snapshot;
        const Surface* from = source;
        if (sourceUsed && source == &target) {
            snapshot = MakeSurface(static_cast<int>(sb.w), static_cast<int>(sb.h), source->bitCount, true);
            if (!snapshot) return FALSE;
            snapshot->palette = source->palette;
            snapshot->monochromeDevice = source->monochromeDevice;
            CopyRows(*snapshot, *source, Box{0, 0, sb.w, sb.h}, sb);
            from = snapshot.get();
            sb.x = sb.y = 0;
        }
        PerPixel(target, from, db, [&](int x) { return static_cast<int>(x - db.x + sb.x); },
                 [&](int y) { return static_cast<int>(y - db.y + sb.y); });
        return TRUE;
    }

    static bool UsesDest(unsigned code) { return ((code >> 1) & 0x55) != (code & 0x55); }

    std::uint32_t Pattern() const {
        if (!dest.brush || dest.brush->Hollow()) return 0;
        return ToPixel(dest.brush->brush.lbColor);
    }

    template <class MapX, class MapY>
    void PerPixel(Surface& target, const Surface* from, const Box& db, MapX mapX, MapY mapY) {
        const unsigned code = (rop >> 16) & 0xFF;
        const std::uint32_t pattern = Pattern();
        DestWriter out(target, from, sourceDC);
        std::optional<SourceReader> in;
        if (from) in.emplace(*from, dest);
        for (int y = static_cast<int>(db.y); y < db.y + db.h; ++y) {
            const int sy = from ? mapY(y) : 0;
            for (int x = static_cast<int>(db.x); x < db.x + db.w; ++x) {
                const std::uint32_t sp = from ? (*in)(mapX(x), sy) : 0;
                if (keyed) {
                    if (sp != key) out.Write(x, y, sp, sp);
                    continue;
                }
                out.Write(x, y, Rop3(code, pattern, sp, out.Read(x, y)), sp);
            }
        }
    }

    BOOL RunStretched(Surface& target) {
        // Destination pixels whose source pixel falls off the source are left alone.
        const int x0 = static_cast<int>(std::max<std::int64_t>(0, d.x));
        const int x1 = static_cast<int>(std::min<std::int64_t>(target.width, d.x + d.w));
        const int y0 = static_cast<int>(std::max<std::int64_t>(0, d.y));
        const int y1 = static_cast<int>(std::min<std::int64_t>(target.height, d.y + d.h));
        if (x0 >= x1 || y0 >= y1) return TRUE;
        // Source coordinates, kept in range for the comparisons below.
        auto mapX = [&](int x) {
            return static_cast<int>(std::clamp<std::int64_t>(s.x + ((x - d.x) * s.w) / d.w, -1, source->width));
        };
        auto mapY = [&](int y) {
            return static_cast<int>(std::clamp<std::int64_t>(s.y + ((y - d.y) * s.h) / d.h, -1, source->height));
        };
        int cx0 = x0, cx1 = x1, cy0 = y0, cy1 = y1;
        while (cx0 < cx1 && mapX(cx0) < 0) ++cx0;
        while (cx1 > cx0 && mapX(cx1 - 1) >= source->width) --cx1;
        while (cy0 < cy1 && mapY(cy0) < 0) ++cy0;
        while (cy1 > cy0 && mapY(cy1 - 1) >= source->height) --cy1;
        if (cx0 >= cx1 || cy0 >= cy1) return TRUE;
        std::shared_ptr<Surface> snapshot;
        const Surface* from = source;
        if (source == &target) {
            snapshot = MakeSurface(source->width, source->height, source->bitCount, true);
            if (!snapshot) return FALSE;
            snapshot->palette = source->palette;
            snapshot->monochromeDevice = source->monochromeDevice;
            CopyRows(*snapshot, *source, Box{0, 0, source->width, source->height}, Box{0, 0, source->width, source->height});
            from = snapshot.get();
        }
        PerPixel(target, from, Box{cx0, cy0, cx1 - cx0, cy1 - cy0}, mapX, mapY);
        return TRUE;
    }
};

std::shared_ptr<DeviceContext> DC(HDC dc) {
    auto d = FindDC(dc);
    if (!d) SetLastError(ERROR_INVALID_HANDLE);
    return d;
}

// A source handle as the transparent copy takes it: a device context or a bitmap.
bool ResolveSource(HANDLE handle, Transfer& t, std::shared_ptr<void>& keepAlive) {
    if (auto dc = FindDC(static_cast<HDC>(handle))) {
        t.source = &dc->Target();
        t.sourceDC = dc.get();
        keepAlive = dc;
        return true;
    }
    if (auto bitmap = FindGdi<BitmapObject>(handle)) {
        t.source = bitmap->surface.get();
        keepAlive = bitmap;
        return true;
    }
    return false;
}

}  // namespace

BOOL StretchBlt(HDC dest, int x, int y, int width, int height, HDC source, int xSrc, int ySrc, int widthSrc,
                int heightSrc, DWORD rop) {
    auto d = DC(dest);
    if (!d) return FALSE;
    Transfer t{*d};
    std::shared_ptr<DeviceContext> s;
    if (UsesSource(rop)) {
        s = DC(source);
        if (!s) return FALSE;
        t.source = &s->Target();
        t.sourceDC = s.get();
    }
    t.d = Box{x, y, width, height};
    t.s = Box{xSrc, ySrc, widthSrc, heightSrc};
    t.rop = rop;
    return t.Run();
}

BOOL BitBlt(HDC dest, int x, int y, int width, int height, HDC source, int xSrc, int ySrc, DWORD rop) {
    return StretchBlt(dest, x, y, width, height, source, xSrc, ySrc, width, height, rop);
}

BOOL PatBlt(HDC dest, int x, int y, int width, int height, DWORD rop) {
    if (UsesSource(rop)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    return StretchBlt(dest, x, y, width, height, nullptr, 0, 0, width, height, rop);
}

BOOL ScrollDC(HDC dc, int dx, int dy, const RECT* scroll, const RECT* clip, HRGN updateRegion, LPRECT update) {
    auto d = DC(dc);
    if (!d || updateRegion) {
        if (d) SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    Surface& s = d->Target();
    const RECT whole{0, 0, s.width, s.height};
    auto intersect = [](RECT a, RECT b) {
        return RECT{std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                    std::min(a.bottom, b.bottom)};
    };
    auto empty = [](const RECT& r) { return r.right <= r.left || r.bottom <= r.top; };
    // A scroll of a whole surface or more uncovers everything; keep sums in range.
    dx = std::clamp(dx, -s.width - 1, s.width + 1);
    dy = std::clamp(dy, -s.height - 1, s.height + 1);
    const RECT from = intersect(scroll ? *scroll : whole, whole);
    const RECT limit = intersect(clip ? *clip : whole, whole);
    const RECT moved{from.left + dx, from.top + dy, from.right + dx, from.bottom + dy};
    const RECT to = intersect(moved, limit);
    if (!empty(to) && !empty(from) && (dx || dy)) {
        Transfer t{*d};
        t.source = &s;
        t.sourceDC = d.get();
        t.d = Box{to.left, to.top, to.right - to.left, to.bottom - to.top};
        t.s = Box{to.left - dx, to.top - dy, t.d.w, t.d.h};
        t.Run();
    }
    if (update) {
        // What of the base no moved pixel covers: the base minus a rectangle is at most
        // four bands; report their bounding box.
        const RECT base = clip ? limit : from;
        const RECT covered = intersect(moved, base);
        RECT box{0, 0, 0, 0};
        auto add = [&](RECT r) {
            if (empty(r)) return;
            box = empty(box) ? r
                             : RECT{std::min(box.left, r.left), std::min(box.top, r.top), std::max(box.right, r.right),
                                    std::max(box.bottom, r.bottom)};
        };
        if (empty(covered)) {
            add(base);
        } else {
            add(RECT{base.left, base.top, base.right, covered.top});
            add(RECT{base.left, covered.bottom, base.right, base.bottom});
            add(RECT{base.left, covered.top, covered.left, covered.bottom});
            add(RECT{covered.right, covered.top, base.right, covered.bottom});
        }
        *update = box;
    }
    return TRUE;
}

BOOL TransparentImage(HDC dest, LONG x, LONG y, LONG width, LONG height, HANDLE source, LONG xSrc, LONG ySrc,
                      LONG widthSrc, LONG heightSrc, COLORREF transparent) {
    auto d = DC(dest);
    if (!d) return FALSE;
    Transfer t{*d};
    std::shared_ptr<void> keepAlive;
    if (!ResolveSource(source, t, keepAlive)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    t.d = Box{x, y, width, height};
    t.s = Box{xSrc, ySrc, widthSrc, heightSrc};
    t.keyed = true;
    // Compared as the source stores it, so a palette source matches its own entry.
    t.key = t.source->bitCount >= 24 ? ToPixel(transparent & 0xFFFFFF)
                                     : ToPixel(t.source->ColourOf(t.source->Native(transparent & 0xFFFFFF)));
    return t.Run();
}

BOOL TransparentBlt(HDC dest, int x, int y, int width, int height, HDC source, int xSrc, int ySrc, int widthSrc,
                    int heightSrc, UINT transparent) {
    if (!FindDC(source)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    return TransparentImage(dest, x, y, width, height, source, xSrc, ySrc, widthSrc, heightSrc, transparent);
}
