// Fonts and text drawing over the font engine.
#include "platform/win32/GdiText.h"

#include <algorithm>
#include <cmath>
#include <cwchar>
#include <string>

#include "platform/win32/FontEngine.h"
#include "platform/win32/GdiRaster.h"

using namespace kiv_win32::detail;

namespace kiv_win32 {

LOGFONTW DefaultFont(bool fixedPitch) {
    LOGFONTW f{};
    f.lfHeight = 16;
    f.lfWeight = FW_NORMAL;
    f.lfCharSet = DEFAULT_CHARSET;
    std::wcsncpy(f.lfFaceName, fixedPitch ? L"DejaVu Sans Mono" : L"DejaVu Sans", LF_FACESIZE - 1);
    return f;
}

}  // namespace kiv_win32

HFONT CreateFontIndirectW(const LOGFONTW* font) {
    if (!font) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    auto f = std::make_shared<FontObject>();
    f->font = *font;
    f->font.lfFaceName[LF_FACESIZE - 1] = L'\0';
    return reinterpret_cast<HFONT>(kiv_win32::AddHandle(f));
}

UINT SetTextAlign(HDC dc, UINT align) {
    auto d = FindDC(dc);
    if (!d) return 0xFFFFFFFF;  // GDI_ERROR
    const UINT previous = d->textAlign;
    d->textAlign = align;
    return previous;
}

UINT GetTextAlign(HDC dc) {
    auto d = FindDC(dc);
    return d ? d->textAlign : 0xFFFFFFFF;
}

namespace {

std::shared_ptr<FontFace> FaceOf(DeviceContext& d) {
    static std::mutex lock;
    if (!d.font) return nullptr;
    std::lock_guard g(lock);
    if (!d.font->face) d.font->face = FontFace::Load(d.font->font);
    return d.font->face;
}

struct Clip {
    int x0, y0, x1, y1;
};

Clip SurfaceClip(const Surface& s, const RECT* rect) {
    Clip c{0, 0, s.width, s.height};
    if (rect) c = Clip{std::max<int>(0, rect->left), std::max<int>(0, rect->top), std::min<int>(s.width, rect->right),
                       std::min<int>(s.height, rect->bottom)};
    return c;
}

// Lays coverage over the surface in the text colour: blended on 24- and 32-bit
// surfaces, all or nothing on the others.
void PaintCoverage(Surface& s, const GlyphImage& g, int x0, int y0, COLORREF colour, const Clip& clip) {
    const std::uint32_t native = s.Native(colour);
    const int r = GetRValue(colour), gr = GetGValue(colour), b = GetBValue(colour);
    for (int row = 0; row < g.rows; ++row) {
        const int y = y0 + row;
        if (y < clip.y0 || y >= clip.y1) continue;
        for (int col = 0; col < g.width; ++col) {
            const int x = x0 + col;
            if (x < clip.x0 || x >= clip.x1) continue;
            const int a = g.coverage[static_cast<std::size_t>(row) * g.width + col];
            if (a == 0) continue;
            if (s.bitCount < 24) {
                if (a >= 128) s.PutNative(x, y, native);
                continue;
            }
            if (a == 255) {
                s.PutNative(x, y, native);
                continue;
            }
            const COLORREF under = s.GetColour(x, y);
            auto mix = [a](int top, int bottom) { return static_cast<BYTE>(bottom + ((top - bottom) * a + 127) / 255); };
            s.PutColour(x, y, RGB(mix(r, GetRValue(under)), mix(gr, GetGValue(under)), mix(b, GetBValue(under))));
        }
    }
}

// Shaped text with per-character advances imposed, as ExtTextOutW's dx asks.
void ApplyAdvances(ShapedText& text, const INT* dx, UINT count) {
    std::vector<std::int64_t> start(count + 1, 0);
    for (UINT i = 0; i < count; ++i) start[i + 1] = start[i] + std::int64_t(dx[i]) * 64;
    for (PlacedGlyph& g : text.glyphs) g.x64 = start[std::min<UINT>(g.cluster, count)];
    text.advance64 = start[count];
}

// Draws shaped text whose baseline starts at (x, y) and runs along the face's angle.
void DrawShaped(DeviceContext& d, FontFace& face, const ShapedText& text, double x, double y, const Clip& clip) {
    Surface& s = d.Target();
    const double c = std::cos(face.angle), sn = std::sin(face.angle);
    const bool antialiased = s.bitCount >= 24 && d.font->font.lfQuality != NONANTIALIASED_QUALITY;
    const double width = text.advance64 / 64.0;
    if (d.bkMode == OPAQUE) {
        // The cell behind the text: from the ascent above the baseline to the descent below.
        const double a = face.ascent, b = face.descent;
        if (face.angle == 0.0) {
            const int x0 = std::max(clip.x0, static_cast<int>(std::lround(x)));
            const int x1 = std::min(clip.x1, static_cast<int>(std::lround(x + width)));
            const std::uint32_t back = s.Native(d.bkColour);
            for (int row = std::max(clip.y0, static_cast<int>(std::lround(y - a)));
                 row < std::min(clip.y1, static_cast<int>(std::lround(y + b))); ++row)
                s.FillSpan(row, x0, x1, back);
        } else {
            auto at = [&](double u, double v) { return PointD{x + u * c + v * sn, y - u * sn + v * c}; };
            FillPolygon(s, {at(0, -a), at(width, -a), at(width, b), at(0, b)}, s.Native(d.bkColour), true);
        }
    }
    GlyphImage image;
    for (const PlacedGlyph& g : text.glyphs) {
        const double u = g.x64 / 64.0, v = -g.y64 / 64.0;
        int ox = 0, oy = 0;
        if (!face.Render(g.index, x + u * c + v * sn, y - u * sn + v * c, antialiased, image, ox, oy)) continue;
        PaintCoverage(s, image, ox + image.left, oy - image.top, d.textColour, clip);
    }
    if ((d.font->font.lfUnderline || d.font->font.lfStrikeOut) && face.angle == 0.0) {
        GlyphImage bar;
        bar.width = static_cast<int>(std::lround(width));
        bar.rows = face.lineThickness;
        bar.coverage.assign(static_cast<std::size_t>(bar.width) * bar.rows, 255);
        const int left = static_cast<int>(std::lround(x)), base = static_cast<int>(std::lround(y));
        if (d.font->font.lfUnderline) PaintCoverage(s, bar, left, base + face.underlinePosition, d.textColour, clip);
        if (d.font->font.lfStrikeOut) PaintCoverage(s, bar, left, base - face.strikeoutPosition, d.textColour, clip);
    }
}

std::size_t Length(LPCWSTR text, int count) { return !text ? 0 : count < 0 ? std::wcslen(text) : static_cast<std::size_t>(count); }

}  // namespace

BOOL ExtTextOutW(HDC dc, int x, int y, UINT options, const RECT* rect, LPCWSTR text, UINT count, const INT* dx) {
    auto d = FindDC(dc);
    if (!d) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    Surface& s = d->Target();
    if ((options & ETO_OPAQUE) && rect) {
        const Clip box = SurfaceClip(s, rect);
        const std::uint32_t back = s.Native(d->bkColour);
        for (int row = box.y0; row < box.y1; ++row) s.FillSpan(row, box.x0, box.x1, back);
    }
    if (!text || count == 0) return TRUE;
    auto face = FaceOf(*d);
    if (!face) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return FALSE;
    }
    ShapedText shaped = face->Shape(text, count);
    if (dx) ApplyAdvances(shaped, dx, count);
    const double width = shaped.advance64 / 64.0;
    const bool fromPosition = (d->textAlign & TA_UPDATECP) != 0;
    const double rx = fromPosition ? d->position.x : x, ry = fromPosition ? d->position.y : y;
    double along = 0, down = 0;
    switch (d->textAlign & 6) {
        case TA_CENTER: along = -width / 2; break;
        case TA_RIGHT: along = -width; break;
        default: break;
    }
    switch (d->textAlign & 24) {
        case TA_BASELINE: break;
        case TA_BOTTOM: down = -face->descent; break;
        default: down = face->ascent; break;
    }
    const double c = std::cos(face->angle), sn = std::sin(face->angle);
    const double bx = rx + along * c + down * sn, by = ry - along * sn + down * c;
    DrawShaped(*d, *face, shaped, bx, by, SurfaceClip(s, (options & ETO_CLIPPED) ? rect : nullptr));
    if (fromPosition) {
        d->position.x += static_cast<LONG>(std::lround(width * c));
        d->position.y -= static_cast<LONG>(std::lround(width * sn));
    }
    return TRUE;
}

BOOL TextOutW(HDC dc, int x, int y, LPCWSTR text, int count) {
    return ExtTextOutW(dc, x, y, 0, nullptr, text, static_cast<UINT>(std::max(0, count)), nullptr);
}

BOOL GetTextExtentPoint32W(HDC dc, LPCWSTR text, int count, SIZE* size) {
    auto d = FindDC(dc);
    if (!d || !size || count < 0 || (count > 0 && !text)) {
        SetLastError(d ? ERROR_INVALID_PARAMETER : ERROR_INVALID_HANDLE);
        return FALSE;
    }
    auto face = FaceOf(*d);
    if (!face) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return FALSE;
    }
    const ShapedText shaped = face->Shape(text, static_cast<std::size_t>(count));
    size->cx = static_cast<LONG>(std::lround(shaped.advance64 / 64.0));
    size->cy = face->ascent + face->descent;
    return TRUE;
}

BOOL GetTextMetricsW(HDC dc, TEXTMETRICW* metrics) {
    auto d = FindDC(dc);
    if (!d || !metrics) return FALSE;
    auto face = FaceOf(*d);
    if (!face) return FALSE;
    TEXTMETRICW m{};
    m.tmAscent = face->ascent;
    m.tmDescent = face->descent;
    m.tmHeight = face->ascent + face->descent;
    m.tmInternalLeading = std::max(0, m.tmHeight - face->emPixels);
    m.tmAveCharWidth = face->averageWidth;
    m.tmMaxCharWidth = face->maxWidth;
    m.tmWeight = face->bold ? FW_BOLD : FW_NORMAL;
    m.tmDigitizedAspectX = m.tmDigitizedAspectY = 96;
    m.tmFirstChar = L' ';
    m.tmLastChar = 0xFFFD;
    m.tmDefaultChar = L'?';
    m.tmBreakChar = L' ';
    m.tmItalic = d->font->font.lfItalic;
    m.tmUnderlined = d->font->font.lfUnderline;
    m.tmStruckOut = d->font->font.lfStrikeOut;
    // The low bit set means a variable pitch, as the device reports it.
    m.tmPitchAndFamily = face->fixedPitch ? 0 : 1;
    m.tmCharSet = d->font->font.lfCharSet;
    *metrics = m;
    return TRUE;
}

// ---- DrawTextW ----------------------------------------------------------------------------------

namespace {

// "&x" shows x, "&&" shows one &; a lone & at the end is dropped.
std::wstring StripPrefixes(const std::wstring& text) {
    std::wstring out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == L'&') {
            if (i + 1 < text.size()) out += text[++i];
            continue;
        }
        out += text[i];
    }
    return out;
}

std::wstring ExpandTabs(const std::wstring& line) {
    std::wstring out;
    for (wchar_t ch : line) {
        if (ch == L'\t')
            out.append(8 - out.size() % 8, L' ');
        else
            out += ch;
    }
    return out;
}

LONG Width(FontFace& face, const std::wstring& text) {
    return static_cast<LONG>(std::lround(face.Shape(text.data(), text.size()).advance64 / 64.0));
}

// Breaks a paragraph at spaces so that each line fits `width` where it can; a word
// wider than the width keeps a line of its own.
void Wrap(FontFace& face, const std::wstring& paragraph, LONG width, std::vector<std::wstring>& lines) {
    std::wstring line;
    std::size_t i = 0;
    while (i <= paragraph.size()) {
        std::size_t end = paragraph.find(L' ', i);
        if (end == std::wstring::npos) end = paragraph.size();
        const std::wstring word = paragraph.substr(i, end - i);
        const std::wstring candidate = line.empty() ? word : line + L' ' + word;
        if (!line.empty() && Width(face, candidate) > width) {
            lines.push_back(line);
            line = word;
        } else {
            line = candidate;
        }
        i = end + 1;
    }
    lines.push_back(line);
}

}  // namespace

int DrawTextW(HDC dc, LPCWSTR text, int count, LPRECT rect, UINT format) {
    auto d = FindDC(dc);
    if (!d || !rect) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    auto face = FaceOf(*d);
    if (!face) return 0;
    std::wstring all(text ? text : L"", Length(text, count));
    if (!(format & DT_NOPREFIX)) all = StripPrefixes(all);
    std::vector<std::wstring> lines;
    if (format & DT_SINGLELINE) {
        std::erase_if(all, [](wchar_t ch) { return ch == L'\r' || ch == L'\n'; });
        lines.push_back(all);
    } else {
        std::size_t start = 0;
        while (start <= all.size()) {
            std::size_t end = all.find_first_of(L"\r\n", start);
            if (end == std::wstring::npos) end = all.size();
            const std::wstring paragraph = all.substr(start, end - start);
            if (format & DT_WORDBREAK)
                Wrap(*face, paragraph, rect->right - rect->left, lines);
            else
                lines.push_back(paragraph);
            if (end < all.size() && all[end] == L'\r' && end + 1 < all.size() && all[end + 1] == L'\n') ++end;
            start = end + 1;
        }
    }
    if (format & DT_EXPANDTABS)
        for (auto& line : lines) line = ExpandTabs(line);
    const int lineHeight = face->ascent + face->descent;
    const int height = lineHeight * static_cast<int>(lines.size());
    if (format & DT_CALCRECT) {
        LONG widest = 0;
        for (const auto& line : lines) widest = std::max(widest, Width(*face, line));
        rect->right = rect->left + widest;
        rect->bottom = rect->top + height;
        return height;
    }
    int top = rect->top;
    if (format & DT_SINGLELINE) {
        if (format & DT_VCENTER) top = rect->top + (rect->bottom - rect->top - lineHeight) / 2;
        if (format & DT_BOTTOM) top = rect->bottom - lineHeight;
    }
    const Clip clip = SurfaceClip(d->Target(), (format & DT_NOCLIP) ? nullptr : rect);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const ShapedText shaped = face->Shape(lines[i].data(), lines[i].size());
        const double width = shaped.advance64 / 64.0;
        double x = rect->left;
        if (format & DT_CENTER) x = rect->left + std::floor((rect->right - rect->left - width) / 2);
        if (format & DT_RIGHT) x = rect->right - width;
        const double y = top + static_cast<double>(i) * lineHeight + face->ascent;
        DrawShaped(*d, *face, shaped, x, y, clip);
    }
    return top - rect->top + height;
}
