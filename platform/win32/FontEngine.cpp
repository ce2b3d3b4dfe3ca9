// DejaVu typefaces through FreeType and HarfBuzz.
#include "platform/win32/FontEngine.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_TRUETYPE_TABLES_H
#include <hb-ft.h>
#include <hb.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cwctype>
#include <filesystem>
#include <map>
#include <system_error>

namespace kiv_win32::detail {

std::mutex& FontLock() {
    static std::mutex* lock = new std::mutex;
    return *lock;
}

namespace {

FT_Library Engine() {
    static FT_Library library = [] {
        FT_Library l = nullptr;
        if (FT_Init_FreeType(&l) != 0) l = nullptr;
        return l;
    }();
    return library;
}

std::string SearchFolder(const std::filesystem::path& folder, const std::string& name) {
    std::error_code e;
    if (std::filesystem::is_regular_file(folder / name, e)) return (folder / name).string();
    if (!std::filesystem::is_directory(folder, e)) return {};
    for (auto it = std::filesystem::recursive_directory_iterator(
             folder, std::filesystem::directory_options::skip_permission_denied, e);
         !e && it != std::filesystem::recursive_directory_iterator(); it.increment(e)) {
        if (it->path().filename() == name && it->is_regular_file(e)) return it->path().string();
    }
    return {};
}

// The file of a family, weight and slant: DejaVu names its styles by suffix.
std::string FileNameFor(const LOGFONTW& font) {
    std::wstring face(font.lfFaceName);
    for (auto& c : face) c = static_cast<wchar_t>(std::towlower(c));
    const bool mono = face.find(L"mono") != std::wstring::npos || face.find(L"courier") != std::wstring::npos ||
                      (font.lfPitchAndFamily & 3) == 1;
    const bool serif = !mono && ((face.find(L"serif") != std::wstring::npos && face.find(L"sans") == std::wstring::npos) ||
                                 face.find(L"times") != std::wstring::npos);
    const bool bold = font.lfWeight >= 600;
    const bool italic = font.lfItalic != 0;
    std::string name = mono ? "DejaVuSansMono" : serif ? "DejaVuSerif" : "DejaVuSans";
    const char* slant = serif ? "Italic" : "Oblique";
    if (bold && italic)
        name += std::string("-Bold") + slant;
    else if (bold)
        name += "-Bold";
    else if (italic)
        name += std::string("-") + slant;
    return name + ".ttf";
}

}  // namespace

std::string FindFontFile(const std::string& name) {
    static std::mutex lock;
    static std::map<std::string, std::string> found;
    std::lock_guard g(lock);
    if (auto it = found.find(name); it != found.end()) return it->second;
    std::vector<std::filesystem::path> folders;
    if (const char* dir = std::getenv("KIV_FONT_DIR")) folders.emplace_back(dir);
    folders.emplace_back("/usr/share/fonts/truetype/dejavu");
    if (const char* data = std::getenv("XDG_DATA_HOME")) folders.emplace_back(std::filesystem::path(data) / "fonts");
    if (const char* home = std::getenv("HOME")) {
        folders.emplace_back(std::filesystem::path(home) / ".local/share/fonts");
        folders.emplace_back(std::filesystem::path(home) / ".fonts");
    }
    folders.emplace_back("/usr/local/share/fonts");
    folders.emplace_back("/usr/share/fonts");
    std::string path;
    for (const auto& folder : folders)
        if (!(path = SearchFolder(folder, name)).empty()) break;
    found[name] = path;
    return path;
}

struct FontFace::Impl {
    FT_Face face = nullptr;
    hb_font_t* font = nullptr;
    hb_buffer_t* buffer = nullptr;
};

FontFace::~FontFace() {
    if (!impl_) return;
    std::lock_guard g(FontLock());
    if (impl_->buffer) hb_buffer_destroy(impl_->buffer);
    if (impl_->font) hb_font_destroy(impl_->font);
    if (impl_->face) FT_Done_Face(impl_->face);
}

std::shared_ptr<FontFace> FontFace::Load(const LOGFONTW& font) {
    std::string path = FindFontFile(FileNameFor(font));
    if (path.empty()) path = FindFontFile("DejaVuSans.ttf");  // a style missing falls back to the plain face
    std::lock_guard g(FontLock());
    FT_Library engine = Engine();
    if (path.empty() || !engine) return nullptr;
    std::shared_ptr<FontFace> f(new FontFace);
    f->impl_ = std::make_unique<Impl>();
    if (FT_New_Face(engine, path.c_str(), 0, &f->impl_->face) != 0) {
        f->impl_->face = nullptr;
        return nullptr;
    }
    FT_Face face = f->impl_->face;
    // A positive height is the cell (ascent plus descent), a negative one the em.
    const double cell = double(face->ascender) - face->descender;
    LONG height = font.lfHeight == 0 ? 16 : font.lfHeight;
    int em = height < 0 ? -height : static_cast<int>(std::lround(height * face->units_per_EM / cell));
    em = std::clamp(em, 1, 2048);
    if (FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(em)) != 0) return nullptr;
    f->emPixels = em;
    const FT_Size_Metrics& m = face->size->metrics;
    f->ascent = static_cast<int>((m.ascender + 63) / 64);
    f->descent = static_cast<int>((-m.descender + 63) / 64);
    const double scale = double(em) / face->units_per_EM;
    const auto* os2 = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
    f->averageWidth = os2 ? static_cast<int>(std::lround(os2->xAvgCharWidth * scale)) : em / 2;
    f->maxWidth = static_cast<int>(std::lround(double(face->max_advance_width) * scale));
    f->underlinePosition = std::max(1, static_cast<int>(std::lround(-face->underline_position * scale)));
    f->lineThickness = std::max(1, static_cast<int>(std::lround(face->underline_thickness * scale)));
    f->strikeoutPosition = os2 ? static_cast<int>(std::lround(os2->yStrikeoutPosition * scale)) : f->ascent / 3;
    f->fixedPitch = FT_IS_FIXED_WIDTH(face);
    f->bold = font.lfWeight >= 600;
    f->angle = font.lfEscapement / 10.0 * M_PI / 180.0;
    f->impl_->font = hb_ft_font_create_referenced(face);
    hb_ft_font_set_load_flags(f->impl_->font, FT_LOAD_DEFAULT | FT_LOAD_TARGET_LIGHT);
    f->impl_->buffer = hb_buffer_create();
    return f;
}

ShapedText FontFace::Shape(const wchar_t* text, std::size_t count) {
    ShapedText out;
    if (!text || count == 0) return out;
    std::lock_guard g(FontLock());
    hb_buffer_t* b = impl_->buffer;
    hb_buffer_reset(b);
    static_assert(sizeof(wchar_t) == 4, "the host's wide characters are UTF-32");
    hb_buffer_add_utf32(b, reinterpret_cast<const std::uint32_t*>(text), static_cast<int>(count), 0,
                        static_cast<int>(count));
    hb_buffer_guess_segment_properties(b);
    // Text runs left to right whatever the script: the device never shaped right-to-left.
    hb_buffer_set_direction(b, HB_DIRECTION_LTR);
    hb_shape(impl_->font, b, nullptr, 0);
    unsigned n = 0;
    const hb_glyph_info_t* info = hb_buffer_get_glyph_infos(b, &n);
    const hb_glyph_position_t* pos = hb_buffer_get_glyph_positions(b, &n);
    std::int64_t x = 0, y = 0;
    out.glyphs.reserve(n);
    for (unsigned i = 0; i < n; ++i) {
        out.glyphs.push_back(PlacedGlyph{info[i].codepoint, x + pos[i].x_offset, y + pos[i].y_offset, info[i].cluster});
        x += pos[i].x_advance;
        y += pos[i].y_advance;
    }
    out.advance64 = x;
    return out;
}

bool FontFace::Render(unsigned glyph, double x, double y, bool antialiased, GlyphImage& out, int& originX,
                      int& originY) {
    std::lock_guard g(FontLock());
    FT_Face face = impl_->face;
    originX = static_cast<int>(std::floor(x));
    originY = static_cast<int>(std::floor(y));
    FT_Vector delta{static_cast<FT_Pos>(std::lround((x - originX) * 64)),
                    static_cast<FT_Pos>(-std::lround((y - originY) * 64))};
    FT_Matrix turn{0x10000, 0, 0, 0x10000};
    if (angle != 0.0) {
        const double c = std::cos(angle), s = std::sin(angle);
        turn = FT_Matrix{static_cast<FT_Fixed>(std::lround(c * 0x10000)), static_cast<FT_Fixed>(std::lround(-s * 0x10000)),
                         static_cast<FT_Fixed>(std::lround(s * 0x10000)), static_cast<FT_Fixed>(std::lround(c * 0x10000))};
    }
    FT_Set_Transform(face, &turn, &delta);
    const FT_Int32 load = FT_LOAD_DEFAULT | FT_LOAD_NO_BITMAP | (antialiased ? FT_LOAD_TARGET_LIGHT : FT_LOAD_TARGET_MONO);
    const bool failed = FT_Load_Glyph(face, glyph, load) != 0 ||
                        FT_Render_Glyph(face->glyph, antialiased ? FT_RENDER_MODE_NORMAL : FT_RENDER_MODE_MONO) != 0;
    FT_Set_Transform(face, nullptr, nullptr);
    if (failed) return false;
    const FT_Bitmap& bm = face->glyph->bitmap;
    out.left = face->glyph->bitmap_left;
    out.top = face->glyph->bitmap_top;
    out.width = static_cast<int>(bm.width);
    out.rows = static_cast<int>(bm.rows);
    out.coverage.assign(static_cast<std::size_t>(out.width) * out.rows, 0);
    for (int r = 0; r < out.rows; ++r) {
        const unsigned char* row = bm.buffer + static_cast<std::ptrdiff_t>(r) * bm.pitch;
        for (int c = 0; c < out.width; ++c) {
            const bool mono = bm.pixel_mode == FT_PIXEL_MODE_MONO;
            out.coverage[static_cast<std::size_t>(r) * out.width + c] =
                mono ? (((row[c >> 3] >> (7 - (c & 7))) & 1) ? 255 : 0) : row[c];
        }
    }
    return true;
}

}  // namespace kiv_win32::detail
