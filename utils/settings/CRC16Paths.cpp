// Long-buffer CRC-16 paths. Folding: the message is a polynomial over GF(2) whose first
// byte holds the highest terms, and its CRC depends only on its remainder modulo the
// polynomial. Eight 128-bit accumulators each take every eighth 16-byte block; moving an
// accumulator A = H x^64 + L forward by D bits is H (x^(D+64) mod P) + L (x^D mod P),
// two carry-less multiplies, and leaves a 128-bit value with the same remainder. The
// last accumulator and the tail then go through the byte table, which finishes the
// reduction exactly as the byte loop would.
#include "utils/settings/CRC16Paths.h"

#include <cstdint>
#include <cstring>

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#include <immintrin.h>
#define KIV_CRC_X86_FOLDING 1
#endif

namespace kiv_crc_detail {
namespace {

constexpr unsigned kPolynomial = 0x1021;

constexpr std::uint16_t TableEntry(unsigned byte) {
    unsigned reg = byte << 8;
    for (int bit = 0; bit < 8; ++bit) reg = (reg & 0x8000) ? ((reg << 1) ^ kPolynomial) : (reg << 1);
    return static_cast<std::uint16_t>(reg);
}

// slices[k][i] is the register after byte i followed by k zero bytes, from a zero
// register; the register's contribution to eight bytes is then one lookup per byte.
struct SliceTables {
    std::uint16_t t[8][256];
};

constexpr SliceTables MakeSlices() {
    SliceTables s{};
    for (unsigned i = 0; i < 256; ++i) s.t[0][i] = TableEntry(i);
    for (int k = 1; k < 8; ++k)
        for (unsigned i = 0; i < 256; ++i) {
            const unsigned prev = s.t[k - 1][i];
            s.t[k][i] = static_cast<std::uint16_t>((prev << 8) ^ s.t[0][prev >> 8]);
        }
    return s;
}

constexpr SliceTables kSlices = MakeSlices();

unsigned ByteLoop(unsigned crc, const unsigned char* p, std::size_t n) {
    for (; n > 0; --n, ++p) crc = (kSlices.t[0][(*p ^ (crc >> 8)) & 0xFF] ^ (crc << 8)) & 0xFFFF;
    return crc;
}

#ifdef KIV_CRC_X86_FOLDING

// x^power mod P, P = x^16 + 1021 hex.
constexpr std::uint64_t XPowerModP(unsigned power) {
    std::uint32_t r = 1;
    for (unsigned i = 0; i < power; ++i) {
        r <<= 1;
        if (r & 0x10000) r ^= 0x10000 | kPolynomial;
    }
    return r;
}

#define KIV_FOLD_TARGET __attribute__((target("pclmul,ssse3")))

// The 16 bytes at p as one 128-bit polynomial, the first byte in the highest bits.
KIV_FOLD_TARGET inline __m128i LoadBlock(const unsigned char* p) {
    const __m128i reverse = _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)), reverse);
}

// acc x^D, reduced to 128 bits with the same remainder; k holds {x^D, x^(D+64)} mod P.
KIV_FOLD_TARGET inline __m128i Fold(__m128i acc, __m128i k) {
    return _mm_xor_si128(_mm_clmulepi64_si128(acc, k, 0x11), _mm_clmulepi64_si128(acc, k, 0x00));
}

KIV_FOLD_TARGET unsigned short FoldX86(unsigned short crc, const unsigned char* p, std::size_t n) {
    if (n < 128) return static_cast<unsigned short>(ByteLoop(crc, p, n));
    const __m128i k1024 = _mm_set_epi64x(static_cast<long long>(XPowerModP(1024 + 64)),
                                         static_cast<long long>(XPowerModP(1024)));
    const __m128i k128 = _mm_set_epi64x(static_cast<long long>(XPowerModP(128 + 64)),
                                        static_cast<long long>(XPowerModP(128)));
    __m128i a[8];
    for (int i = 0; i < 8; ++i) a[i] = LoadBlock(p + 16 * i);
    // A start value is the same as those 16 bits added to the first two bytes.
    a[0] = _mm_xor_si128(a[0], _mm_set_epi64x(static_cast<long long>(std::uint64_t{crc} << 48), 0));
    p += 128;
    n -= 128;
    for (; n >= 128; p += 128, n -= 128) {
        for (int i = 0; i < 8; ++i) a[i] = _mm_xor_si128(Fold(a[i], k1024), LoadBlock(p + 16 * i));
    }
    __m128i acc = a[0];
    for (int i = 1; i < 8; ++i) acc = _mm_xor_si128(Fold(acc, k128), a[i]);
    for (; n >= 16; p += 16, n -= 16) acc = _mm_xor_si128(Fold(acc, k128), LoadBlock(p));
    // The accumulator as message bytes again, first byte first, then the tail.
    unsigned char folded[16];
    const __m128i reverse = _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(folded), _mm_shuffle_epi8(acc, reverse));
    return static_cast<unsigned short>(ByteLoop(ByteLoop(0, folded, 16), p, n));
}

#endif

}  // namespace

unsigned short SlicedCrc16(unsigned short crc, const unsigned char* p, std::size_t length) {
    const auto& t = kSlices.t;
    unsigned reg = crc;
    for (std::size_t blocks = length / 8; blocks > 0; --blocks, p += 8) {
        reg = t[7][p[0] ^ (reg >> 8)] ^ t[6][p[1] ^ (reg & 0xFF)] ^ t[5][p[2]] ^ t[4][p[3]] ^ t[3][p[4]] ^
              t[2][p[5]] ^ t[1][p[6]] ^ t[0][p[7]];
    }
    return static_cast<unsigned short>(ByteLoop(reg, p, length % 8));
}

bool FoldingAvailable() {
#ifdef KIV_CRC_X86_FOLDING
    static const bool available = __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("ssse3");
    return available;
#else
    return false;
#endif
}

unsigned short FoldedCrc16(unsigned short crc, const unsigned char* data, std::size_t length) {
#ifdef KIV_CRC_X86_FOLDING
    if (FoldingAvailable()) return FoldX86(crc, data, length);
#endif
    return SlicedCrc16(crc, data, length);
}

const unsigned short* StandardTable() { return kSlices.t[0]; }

}  // namespace kiv_crc_detail
