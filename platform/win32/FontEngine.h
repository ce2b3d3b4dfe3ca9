// The typefaces behind fonts: finding the DejaVu files, shaping text into positioned
// glyphs and rendering a glyph's coverage at any position and angle. FreeType renders,
// HarfBuzz shapes (kerning, ligatures and combining marks come from the font itself).
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/win32/Gdi.h"

namespace kiv_win32::detail {

// A glyph of shaped text: its index in the face, its pen position along the baseline in
// 1/64 pixel, and the character it starts from.
struct PlacedGlyph {
    unsigned index;
    std::int64_t x64;
    std::int64_t y64;  // upwards, as the face measures
    unsigned cluster;
};

struct ShapedText {
    std::vector<PlacedGlyph> glyphs;
    std::int64_t advance64 = 0;
};

// The coverage of one rendered glyph: 0..255 per pixel, or 0/255 for crisp text.
struct GlyphImage {
    int left = 0;  // from the integer pen position to the first column
    int top = 0;   // from the integer pen position up to the first row
    int width = 0;
    int rows = 0;
    std::vector<std::uint8_t> coverage;
};

class FontFace {
public:
    ~FontFace();
    FontFace(const FontFace&) = delete;
    FontFace& operator=(const FontFace&) = delete;

    // Null when no DejaVu file is found or it cannot be read.
    static std::shared_ptr<FontFace> Load(const LOGFONTW& font);

    ShapedText Shape(const wchar_t* text, std::size_t count);
    // Renders a glyph whose pen position is (x, y) pixels on a y-down surface, turned by
    // the font's escapement.
    bool Render(unsigned glyph, double x, double y, bool antialiased, GlyphImage& out, int& originX, int& originY);

    int ascent = 0;
    int descent = 0;
    int emPixels = 0;
    int averageWidth = 0;
    int maxWidth = 0;
    int underlinePosition = 0;   // below the baseline, pixels
    int lineThickness = 1;
    int strikeoutPosition = 0;   // above the baseline, pixels
    double angle = 0.0;          // radians, counter-clockwise
    bool fixedPitch = false;
    bool bold = false;

private:
    FontFace() = default;
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// One lock for every use of the font engine: faces share one engine instance.
std::mutex& FontLock();

// The full path of a font file by its name ("DejaVuSans.ttf"), or empty. Looks in
// KIV_FONT_DIR, the Debian location, then the usual font folders and their subfolders.
std::string FindFontFile(const std::string& name);

}  // namespace kiv_win32::detail
