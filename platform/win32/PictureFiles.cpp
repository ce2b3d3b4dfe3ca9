// PNG through libpng's simplified interface on the Linux host; on Windows, written by
// our own encoder and read through WIC. BMP read and written here, every field of a file
// checked against the file's real size before it is used.
#include "platform/win32/PictureFiles.h"

#include <algorithm>
#include <cstring>
#include <cwctype>
#include <vector>

#include "platform/win32/WholeFile.h"

#ifdef _WIN32
#include <objbase.h>
#include <wincodec.h>

#include "platform/win32/PngWriter.h"

namespace {
constexpr int kMaxSurfaceSide = 32768;
constexpr std::int64_t kMaxSurfacePixels = 1 << 27;

// The pixels of a bitmap, read through GetDIBits, top row first.
struct Surface {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;  // 0x00RRGGBB
    COLORREF GetColour(int x, int y) const {
        const std::uint32_t p = pixels[static_cast<std::size_t>(y) * width + x];
        return RGB((p >> 16) & 0xFF, (p >> 8) & 0xFF, p & 0xFF);
    }
};
}  // namespace
#else
#include <png.h>

#include "platform/win32/GdiObjects.h"

using kiv_win32::detail::kMaxSurfacePixels;
using kiv_win32::detail::kMaxSurfaceSide;
using kiv_win32::detail::Surface;
#endif

namespace kiv_host {
namespace {

// The largest picture file we read: a 32-bit picture of the largest size we hold, and room.
constexpr std::size_t kMaxPictureFile = static_cast<std::size_t>(kMaxSurfacePixels) * 4 + (1 << 20);

void Put16(std::string& out, unsigned v) {
    out += static_cast<char>(v & 0xFF);
    out += static_cast<char>((v >> 8) & 0xFF);
}
void Put32(std::string& out, std::uint32_t v) {
    Put16(out, v & 0xFFFF);
    Put16(out, v >> 16);
}
std::uint32_t Get16(const std::uint8_t* p) { return p[0] | (p[1] << 8); }
std::uint32_t Get32(const std::uint8_t* p) { return p[0] | (p[1] << 8) | (p[2] << 16) | (std::uint32_t(p[3]) << 24); }

bool EncodeSurface(const Surface& s, PictureFormat format, std::string& bytes) {
    bytes.clear();
    if (format == PictureFormat::Bmp) {
        const std::uint32_t stride = ((static_cast<std::uint32_t>(s.width) * 24 + 31) / 32) * 4;
        const std::uint32_t image = stride * static_cast<std::uint32_t>(s.height);
        bytes.reserve(54 + image);
        bytes += "BM";
        Put32(bytes, 54 + image);
        Put32(bytes, 0);
        Put32(bytes, 54);
        Put32(bytes, 40);
        Put32(bytes, static_cast<std::uint32_t>(s.width));
        Put32(bytes, static_cast<std::uint32_t>(s.height));
        Put16(bytes, 1);
        Put16(bytes, 24);
        Put32(bytes, 0);
        Put32(bytes, image);
        Put32(bytes, 2835);  // 72 dots per inch
        Put32(bytes, 2835);
        Put32(bytes, 0);
        Put32(bytes, 0);
        std::string row(stride, '\0');
        for (int y = s.height - 1; y >= 0; --y) {
            for (int x = 0; x < s.width; ++x) {
                const COLORREF c = s.GetColour(x, y);
                row[3 * x] = static_cast<char>(GetBValue(c));
                row[3 * x + 1] = static_cast<char>(GetGValue(c));
                row[3 * x + 2] = static_cast<char>(GetRValue(c));
            }
            bytes += row;
        }
        return true;
    }
    std::vector<std::uint8_t> rgb(static_cast<std::size_t>(s.width) * s.height * 3);
    for (int y = 0; y < s.height; ++y)
        for (int x = 0; x < s.width; ++x) {
            const COLORREF c = s.GetColour(x, y);
            std::uint8_t* p = &rgb[(static_cast<std::size_t>(y) * s.width + x) * 3];
            p[0] = GetRValue(c);
            p[1] = GetGValue(c);
            p[2] = GetBValue(c);
        }
#ifdef _WIN32
    bytes = EncodePngRgb(s.width, s.height, rgb.data());
    return true;
#else
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(s.width);
    image.height = static_cast<png_uint_32>(s.height);
    image.format = PNG_FORMAT_RGB;
    png_alloc_size_t size = 0;
    if (!png_image_write_to_memory(&image, nullptr, &size, 0, rgb.data(), 0, nullptr)) return false;
    bytes.resize(size);
    if (!png_image_write_to_memory(&image, bytes.data(), &size, 0, rgb.data(), 0, nullptr)) {
        bytes.clear();
        return false;
    }
    bytes.resize(size);
    return true;
#endif
}

bool Save(const Surface* s, const wchar_t* path, PictureFormat format) {
    std::string bytes;
    if (!s || !path || !EncodeSurface(*s, format, bytes)) return false;
    return kiv_win32::ReplaceWholeFile(path, bytes);
}

// A new 32-bit bottom-up DIB section and its pixels.
HBITMAP NewPicture(int width, int height, std::uint32_t*& pixels, std::ptrdiff_t& pitch) {
    if (width <= 0 || height <= 0 || width > kMaxSurfaceSide || height > kMaxSurfaceSide ||
        static_cast<std::int64_t>(width) * height > kMaxSurfacePixels)
        return nullptr;
    BITMAPINFO info{};
    info.bmiHeader = BITMAPINFOHEADER{sizeof(BITMAPINFOHEADER), width, height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (!bitmap) return nullptr;
    // Row 0 of the picture is the last row in memory.
    pixels = static_cast<std::uint32_t*>(bits) + static_cast<std::ptrdiff_t>(height - 1) * width;
    pitch = -width;
    return bitmap;
}

#ifdef _WIN32

// WIC's PNG decoder converts any kind of PNG to 32-bit BGRA; transparency is laid over
// white here, as the Linux host's reader does.
HBITMAP DecodePng(const std::uint8_t* data, std::size_t size) {
    if (size > 0xFFFFFFFFu) return nullptr;
    const HRESULT init = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    HBITMAP bitmap = nullptr;
    IWICImagingFactory* factory = nullptr;
    IWICStream* stream = nullptr;
    IWICBitmapDecoder* decoder = nullptr;
    IWICBitmapFrameDecode* frame = nullptr;
    IWICFormatConverter* converter = nullptr;
    UINT width = 0, height = 0;
    std::vector<std::uint32_t> bgra;
    if (SUCCEEDED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                                   reinterpret_cast<void**>(&factory))) &&
        SUCCEEDED(factory->CreateStream(&stream)) &&
        SUCCEEDED(stream->InitializeFromMemory(const_cast<BYTE*>(data), static_cast<DWORD>(size))) &&
        SUCCEEDED(factory->CreateDecoderFromStream(stream, nullptr, WICDecodeMetadataCacheOnDemand, &decoder)) &&
        SUCCEEDED(decoder->GetFrame(0, &frame)) && SUCCEEDED(frame->GetSize(&width, &height)) && width > 0 &&
        height > 0 && width <= kMaxSurfaceSide && height <= kMaxSurfaceSide &&
        static_cast<std::int64_t>(width) * height <= kMaxSurfacePixels &&
        SUCCEEDED(factory->CreateFormatConverter(&converter)) &&
        SUCCEEDED(converter->Initialize(frame, GUID_WICPixelFormat32bppBGRA, WICBitmapDitherTypeNone, nullptr, 0.0,
                                        WICBitmapPaletteTypeCustom))) {
        bgra.resize(static_cast<std::size_t>(width) * height);
        if (FAILED(converter->CopyPixels(nullptr, width * 4, static_cast<UINT>(bgra.size() * 4),
                                         reinterpret_cast<BYTE*>(bgra.data()))))
            bgra.clear();
    }
    if (converter) converter->Release();
    if (frame) frame->Release();
    if (decoder) decoder->Release();
    if (stream) stream->Release();
    if (factory) factory->Release();
    if (SUCCEEDED(init)) CoUninitialize();
    if (bgra.empty()) return nullptr;

    std::uint32_t* pixels = nullptr;
    std::ptrdiff_t pitch = 0;
    bitmap = NewPicture(static_cast<int>(width), static_cast<int>(height), pixels, pitch);
    if (!bitmap) return nullptr;
    const std::uint32_t* p = bgra.data();
    for (UINT y = 0; y < height; ++y, pixels += pitch)
        for (UINT x = 0; x < width; ++x, ++p) {
            const std::uint32_t alpha = *p >> 24;
            auto over = [alpha](std::uint32_t c) { return (c * alpha + 255 * (255 - alpha) + 127) / 255; };
            pixels[x] = over(*p & 0xFF) | (over((*p >> 8) & 0xFF) << 8) | (over((*p >> 16) & 0xFF) << 16);
        }
    return bitmap;
}

#else

HBITMAP DecodePng(const std::uint8_t* data, std::size_t size) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, data, size)) return nullptr;
    // Deflate never expands data more than 1032 times, and a row holds at least one
    // filter byte and a bit per pixel: a size the file's bytes cannot fill is a lie, and
    // is refused before anything the size of the picture is allocated.
    const std::uint64_t leastRaw = std::uint64_t(image.height) * (1 + (std::uint64_t(image.width) + 7) / 8);
    if (image.width == 0 || image.height == 0 || image.width > kMaxSurfaceSide || image.height > kMaxSurfaceSide ||
        static_cast<std::int64_t>(image.width) * image.height > kMaxSurfacePixels || leastRaw > 1100 * std::uint64_t(size)) {
        png_image_free(&image);
        return nullptr;
    }
    image.format = PNG_FORMAT_BGR;
    std::vector<png_byte> bgr(PNG_IMAGE_SIZE(image));
    png_color white{255, 255, 255};
    if (!png_image_finish_read(&image, &white, bgr.data(), 0, nullptr)) {
        png_image_free(&image);
        return nullptr;
    }
    std::uint32_t* pixels = nullptr;
    std::ptrdiff_t pitch = 0;
    HBITMAP bitmap = NewPicture(static_cast<int>(image.width), static_cast<int>(image.height), pixels, pitch);
    if (!bitmap) return nullptr;
    const png_byte* p = bgr.data();
    for (png_uint_32 y = 0; y < image.height; ++y, pixels += pitch)
        for (png_uint_32 x = 0; x < image.width; ++x, p += 3) pixels[x] = p[0] | (p[1] << 8) | (p[2] << 16);
    return bitmap;
}

#endif

// One channel of a bit-field pixel, scaled to 0..255.
struct Channel {
    std::uint32_t mask = 0;
    int shift = 0;
    std::uint32_t max = 0;
    explicit Channel(std::uint32_t m) : mask(m) {
        if (!m) return;
        while (!((m >> shift) & 1)) ++shift;
        max = m >> shift;
    }
    std::uint32_t operator()(std::uint32_t v) const {
        return max ? static_cast<std::uint32_t>((static_cast<std::uint64_t>((v & mask) >> shift) * 255 + max / 2) / max) : 0;
    }
};

HBITMAP DecodeBmp(const std::uint8_t* data, std::size_t size) {
    if (size < 14 + 12 || data[0] != 'B' || data[1] != 'M') return nullptr;
    const std::uint64_t pixelsAt = Get32(data + 10);
    const std::uint32_t headerSize = Get32(data + 14);
    if (headerSize != 12 && headerSize < 40) return nullptr;
    if (14 + static_cast<std::uint64_t>(headerSize) > size) return nullptr;
    const std::uint8_t* h = data + 14;
    const bool core = headerSize == 12;
    const std::int64_t width = core ? Get16(h + 4) : static_cast<std::int32_t>(Get32(h + 4));
    std::int64_t height = core ? Get16(h + 6) : static_cast<std::int32_t>(Get32(h + 8));
    const unsigned planes = Get16(h + (core ? 8 : 12));
    const unsigned bitCount = Get16(h + (core ? 10 : 14));
    const std::uint32_t compression = core ? BI_RGB : Get32(h + 16);
    const bool topDown = height < 0;
    if (topDown) height = -height;
    if (planes != 1 || width <= 0 || height <= 0 || width > kMaxSurfaceSide || height > kMaxSurfaceSide ||
        width * height > kMaxSurfacePixels)
        return nullptr;
    if (bitCount != 1 && bitCount != 4 && bitCount != 8 && bitCount != 16 && bitCount != 24 && bitCount != 32)
        return nullptr;
    const bool fields = compression == BI_BITFIELDS;
    if (!(compression == BI_RGB || (fields && (bitCount == 16 || bitCount == 32)))) return nullptr;

    // Colour masks: in the header from version 3 on, else just after it.
    std::uint64_t tableAt = 14 + static_cast<std::uint64_t>(headerSize);
    std::uint32_t masks[3] = {0x7C00, 0x03E0, 0x001F};
    if (bitCount == 32) masks[0] = 0xFF0000, masks[1] = 0xFF00, masks[2] = 0xFF;
    if (fields) {
        const std::uint8_t* m = h + 40;
        if (headerSize < 52) {
            if (tableAt + 12 > size) return nullptr;
            m = data + tableAt;
            tableAt += 12;
        }
        for (int i = 0; i < 3; ++i) masks[i] = Get32(m + 4 * i);
    }
    const Channel red(masks[0]), green(masks[1]), blue(masks[2]);

    std::vector<std::uint32_t> palette;
    if (bitCount <= 8) {
        const std::uint32_t full = 1u << bitCount;
        std::uint32_t used = core ? full : Get32(h + 32);
        if (used == 0) used = full;
        if (used > full) return nullptr;
        const unsigned entry = core ? 3 : 4;
        if (tableAt + static_cast<std::uint64_t>(used) * entry > size) return nullptr;
        for (std::uint32_t i = 0; i < used; ++i) {
            const std::uint8_t* q = data + tableAt + static_cast<std::uint64_t>(i) * entry;
            palette.push_back(q[0] | (q[1] << 8) | (q[2] << 16));
        }
        palette.resize(full, 0);  // indices past the table show black
    }
    const std::uint64_t stride = ((static_cast<std::uint64_t>(width) * bitCount + 31) / 32) * 4;
    if (pixelsAt > size || stride * static_cast<std::uint64_t>(height) > size - pixelsAt) return nullptr;

    std::uint32_t* pixels = nullptr;
    std::ptrdiff_t pitch = 0;
    HBITMAP bitmap = NewPicture(static_cast<int>(width), static_cast<int>(height), pixels, pitch);
    if (!bitmap) return nullptr;
    for (std::int64_t y = 0; y < height; ++y, pixels += pitch) {
        const std::uint8_t* row = data + pixelsAt + stride * static_cast<std::uint64_t>(topDown ? y : height - 1 - y);
        for (std::int64_t x = 0; x < width; ++x) {
            std::uint32_t v = 0;
            switch (bitCount) {
                case 1: v = palette[(row[x >> 3] >> (7 - (x & 7))) & 1]; break;
                case 4: v = palette[(row[x >> 1] >> ((x & 1) ? 0 : 4)) & 0xF]; break;
                case 8: v = palette[row[x]]; break;
                case 24: v = row[3 * x] | (row[3 * x + 1] << 8) | (row[3 * x + 2] << 16); break;
                case 16: {
                    const std::uint32_t p = Get16(row + 2 * x);
                    v = (red(p) << 16) | (green(p) << 8) | blue(p);
                    break;
                }
                default: {
                    const std::uint32_t p = Get32(row + 4 * x);
                    v = (red(p) << 16) | (green(p) << 8) | blue(p);
                }
            }
            pixels[x] = v;
        }
    }
    return bitmap;
}

}  // namespace

PictureFormat PictureFormatOf(const wchar_t* path) {
    std::wstring name(path ? path : L"");
    if (name.size() >= 4) {
        std::wstring suffix = name.substr(name.size() - 4);
        for (auto& c : suffix) c = static_cast<wchar_t>(std::towlower(c));
        if (suffix == L".bmp") return PictureFormat::Bmp;
    }
    return PictureFormat::Png;
}

#ifdef _WIN32

namespace {

bool ReadBitmap(HBITMAP bitmap, Surface& s) {
    BITMAP info{};
    if (!bitmap || !GetObjectW(bitmap, sizeof info, &info) || info.bmWidth <= 0 || info.bmHeight <= 0) return false;
    s.width = info.bmWidth;
    s.height = info.bmHeight;
    s.pixels.assign(static_cast<std::size_t>(s.width) * s.height, 0);
    BITMAPINFO header{};
    header.bmiHeader = BITMAPINFOHEADER{sizeof(BITMAPINFOHEADER), s.width, -s.height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    HDC screen = GetDC(nullptr);
    const int rows = GetDIBits(screen, bitmap, 0, static_cast<UINT>(s.height), s.pixels.data(), &header, DIB_RGB_COLORS);
    ReleaseDC(nullptr, screen);
    return rows == s.height;
}

bool ReadDC(HDC dc, Surface& s) { return ReadBitmap(static_cast<HBITMAP>(GetCurrentObject(dc, OBJ_BITMAP)), s); }

// A window's picture: its client area painted now and copied out of its device context.
bool ReadWindow(HWND window, Surface& s) {
    RECT r{};
    if (!IsWindow(window) || !GetClientRect(window, &r) || r.right <= 0 || r.bottom <= 0) return false;
    HDC dc = GetDC(window);
    HDC memory = CreateCompatibleDC(dc);
    HBITMAP bitmap = CreateCompatibleBitmap(dc, r.right, r.bottom);
    HGDIOBJ old = SelectObject(memory, bitmap);
    const bool copied = PrintWindow(window, memory, PW_CLIENTONLY) || BitBlt(memory, 0, 0, r.right, r.bottom, dc, 0, 0, SRCCOPY);
    SelectObject(memory, old);
    const bool ok = copied && ReadBitmap(bitmap, s);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(window, dc);
    return ok;
}

}  // namespace

bool SavePicture(HDC dc, const wchar_t* path, PictureFormat format) {
    Surface s;
    return ReadDC(dc, s) && Save(&s, path, format);
}

bool SavePicture(HBITMAP bitmap, const wchar_t* path, PictureFormat format) {
    Surface s;
    return ReadBitmap(bitmap, s) && Save(&s, path, format);
}

bool SavePicture(HWND window, const wchar_t* path, PictureFormat format) {
    Surface s;
    return ReadWindow(window, s) && Save(&s, path, format);
}

bool EncodePicture(HBITMAP bitmap, PictureFormat format, std::string& bytes) {
    Surface s;
    return ReadBitmap(bitmap, s) && EncodeSurface(s, format, bytes);
}

#else

bool SavePicture(HDC dc, const wchar_t* path, PictureFormat format) {
    auto d = kiv_win32::detail::FindDC(dc);
    return d && Save(&d->Target(), path, format);
}

bool SavePicture(HBITMAP bitmap, const wchar_t* path, PictureFormat format) {
    auto b = kiv_win32::detail::FindGdi<kiv_win32::detail::BitmapObject>(bitmap);
    return b && Save(b->surface.get(), path, format);
}

bool SavePicture(HWND window, const wchar_t* path, PictureFormat format) {
    auto s = kiv_win32::detail::WindowSurface(window);
    return s && Save(s.get(), path, format);
}

bool EncodePicture(HBITMAP bitmap, PictureFormat format, std::string& bytes) {
    auto b = kiv_win32::detail::FindGdi<kiv_win32::detail::BitmapObject>(bitmap);
    return b && EncodeSurface(*b->surface, format, bytes);
}

#endif

HBITMAP LoadPicture(const wchar_t* path) {
    std::string bytes;
    if (!path || !kiv_win32::ReadWholeFile(path, bytes, kMaxPictureFile)) return nullptr;
    return DecodePicture(bytes.data(), bytes.size());
}

HBITMAP DecodePicture(const void* bytes, std::size_t size) {
    const auto* data = static_cast<const std::uint8_t*>(bytes);
    if (!data) return nullptr;
    if (size >= 8 && std::memcmp(data, "\x89PNG\r\n\x1a\n", 8) == 0) return DecodePng(data, size);
    return DecodeBmp(data, size);
}

}  // namespace kiv_host
