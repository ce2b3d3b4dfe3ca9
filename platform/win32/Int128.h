// A signed 128-bit integer for compilers that have none (32-bit x86): two's complement
// over two 64-bit halves, with the operations the scan converter needs to step exactly
// along segments whose ends lie anywhere in the 32-bit coordinate space.
#pragma once

#include <compare>
#include <cstdint>

namespace kiv_win32::detail {

class Int128 {
public:
    constexpr Int128(std::int64_t value = 0)  // NOLINT: converts like a built-in integer
        : hi_(value < 0 ? ~std::uint64_t{0} : 0), lo_(static_cast<std::uint64_t>(value)) {}
    // The low 64 bits, as a narrowing cast of a built-in integer gives them.
    explicit constexpr operator std::int64_t() const { return static_cast<std::int64_t>(lo_); }

    friend constexpr Int128 operator+(Int128 a, Int128 b) {
        const std::uint64_t lo = a.lo_ + b.lo_;
        return Halves(a.hi_ + b.hi_ + (lo < a.lo_ ? 1 : 0), lo);
    }
    friend constexpr Int128 operator-(Int128 a) { return Halves(~a.hi_ + (a.lo_ == 0 ? 1 : 0), ~a.lo_ + 1); }
    friend constexpr Int128 operator-(Int128 a, Int128 b) { return a + -b; }
    // The low 128 bits of the product, which are the same for signed and unsigned factors.
    friend constexpr Int128 operator*(Int128 a, Int128 b) {
        Int128 product = MultiplyHalves(a.lo_, b.lo_);
        product.hi_ += a.hi_ * b.lo_ + a.lo_ * b.hi_;
        return product;
    }
    // Truncates towards zero, as built-in division does; the divisor must not be 0.
    friend constexpr Int128 operator/(Int128 a, Int128 b) {
        const Int128 quotient = DivideMagnitudes(a.Magnitude(), b.Magnitude());
        return a.Negative() != b.Negative() ? -quotient : quotient;
    }

    friend constexpr bool operator==(Int128 a, Int128 b) = default;
    friend constexpr std::strong_ordering operator<=>(Int128 a, Int128 b) {
        if (a.hi_ != b.hi_) return static_cast<std::int64_t>(a.hi_) <=> static_cast<std::int64_t>(b.hi_);
        return a.lo_ <=> b.lo_;
    }

private:
    static constexpr Int128 Halves(std::uint64_t hi, std::uint64_t lo) {
        Int128 r;
        r.hi_ = hi;
        r.lo_ = lo;
        return r;
    }
    constexpr bool Negative() const { return (hi_ >> 63) != 0; }
    // |value| as an unsigned pattern (the most negative value is its own magnitude).
    constexpr Int128 Magnitude() const { return Negative() ? -*this : *this; }

    static constexpr Int128 MultiplyHalves(std::uint64_t a, std::uint64_t b) {
        const std::uint64_t a0 = a & 0xFFFFFFFFu, a1 = a >> 32, b0 = b & 0xFFFFFFFFu, b1 = b >> 32;
        const std::uint64_t p00 = a0 * b0, p01 = a0 * b1, p10 = a1 * b0, p11 = a1 * b1;
        const std::uint64_t middle = (p00 >> 32) + (p01 & 0xFFFFFFFFu) + (p10 & 0xFFFFFFFFu);
        return Halves(p11 + (p01 >> 32) + (p10 >> 32) + (middle >> 32), (p00 & 0xFFFFFFFFu) | (middle << 32));
    }
    static constexpr bool UnsignedLess(Int128 a, Int128 b) { return a.hi_ != b.hi_ ? a.hi_ < b.hi_ : a.lo_ < b.lo_; }
    // Shift-and-subtract over unsigned patterns; a few divisions per segment, so bit by
    // bit is fast enough.
    static constexpr Int128 DivideMagnitudes(Int128 n, Int128 d) {
        Int128 quotient, remainder;
        for (int bit = 127; bit >= 0; --bit) {
            const std::uint64_t next = bit >= 64 ? (n.hi_ >> (bit - 64)) & 1 : (n.lo_ >> bit) & 1;
            remainder = Halves((remainder.hi_ << 1) | (remainder.lo_ >> 63), (remainder.lo_ << 1) | next);
            if (!UnsignedLess(remainder, d)) {
                remainder = remainder - d;
                if (bit >= 64) {
                    quotient.hi_ |= std::uint64_t{1} << (bit - 64);
                } else {
                    quotient.lo_ |= std::uint64_t{1} << bit;
                }
            }
        }
        return quotient;
    }

    std::uint64_t hi_;
    std::uint64_t lo_;
};

}  // namespace kiv_win32::detail
