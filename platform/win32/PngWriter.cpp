// PNG chunks around a zlib stream of stored blocks: no compression, so no deflate code,
// and still a file every reader accepts.
#include "platform/win32/PngWriter.h"

#include <algorithm>
#include <array>

namespace kiv_host {
namespace {

void PutBig32(std::string& out, std::uint32_t v) {
    for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>((v >> shift) & 0xFF);
}

void PutChunk(std::string& out, const char* type, const std::string& data) {
    PutBig32(out, static_cast<std::uint32_t>(data.size()));
    const std::size_t typeAt = out.size();
    out.append(type, 4);
    out += data;
    const auto* p = reinterpret_cast<const std::uint8_t*>(out.data() + typeAt);
    PutBig32(out, Crc32(p, 4 + data.size()));
}

std::uint32_t Adler32(const std::string& bytes) {
    std::uint32_t a = 1, b = 0;
    for (unsigned char c : bytes) {
        a = (a + c) % 65521;
        b = (b + a) % 65521;
    }
    return (b << 16) | a;
}

}  // namespace

std::uint32_t Crc32(const std::uint8_t* bytes, std::size_t size, std::uint32_t crc) {
    static const auto table = [] {
        std::array<std::uint32_t, 256> t{};
        for (std::uint32_t n = 0; n < 256; ++n) {
            std::uint32_t c = n;
            for (int k = 0; k < 8; ++k) c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            t[n] = c;
        }
        return t;
    }();
    crc = ~crc;
    for (std::size_t i = 0; i < size; ++i) crc = table[(crc ^ bytes[i]) & 0xFF] ^ (crc >> 8);
    return ~crc;
}

std::string EncodePngRgb(int width, int height, const std::uint8_t* rgb) {
    const std::size_t rowBytes = static_cast<std::size_t>(width) * 3;
    std::string raw;
    raw.reserve((rowBytes + 1) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        raw += '\0';  // filter type None
        raw.append(reinterpret_cast<const char*>(rgb) + rowBytes * static_cast<std::size_t>(y), rowBytes);
    }

    std::string zlib = "\x78\x01";
    std::size_t at = 0;
    do {
        const std::size_t block = std::min<std::size_t>(raw.size() - at, 65535);
        const bool last = at + block == raw.size();
        zlib += static_cast<char>(last ? 1 : 0);
        zlib += static_cast<char>(block & 0xFF);
        zlib += static_cast<char>(block >> 8);
        zlib += static_cast<char>(~block & 0xFF);
        zlib += static_cast<char>((~block >> 8) & 0xFF);
        zlib.append(raw, at, block);
        at += block;
    } while (at < raw.size());
    PutBig32(zlib, Adler32(raw));

    std::string header;
    PutBig32(header, static_cast<std::uint32_t>(width));
    PutBig32(header, static_cast<std::uint32_t>(height));
    header += "\x08\x02";  // 8 bits per channel, RGB
    header += std::string(3, '\0');  // deflate, adaptive filters, no interlace

    std::string png = "\x89PNG\r\n\x1a\n";
    PutChunk(png, "IHDR", header);
    PutChunk(png, "IDAT", zlib);
    PutChunk(png, "IEND", std::string());
    return png;
}

}  // namespace kiv_host
