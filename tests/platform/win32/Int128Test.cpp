// The two-halves 128-bit integer that steps segments where the compiler has no 128-bit
// type: products past 64 bits, division truncating towards zero, signs and ordering.
#include "platform/win32/Int128.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>

using kiv_win32::detail::Int128;

namespace {

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();

}  // namespace

TEST(Int128, ProductsPastSixtyFourBitsDivideBackExactly) {
    // The scan converter's worst case: 2 * n * offset with n and offset near 2^32.
    const std::int64_t n = (std::int64_t{1} << 32) - 1;
    const Int128 product = Int128(2) * n * n;
    EXPECT_EQ(static_cast<std::int64_t>(product / (Int128(2) * n)), n);
    EXPECT_EQ(static_cast<std::int64_t>((product - 1) / n), 2 * n - 1);
    EXPECT_EQ(static_cast<std::int64_t>(-product / (Int128(2) * n)), -n);
    EXPECT_EQ(static_cast<std::int64_t>(Int128(kMax) * kMax / kMax), kMax);
    EXPECT_EQ(static_cast<std::int64_t>(Int128(kMin) * kMin / kMin), kMin);
    EXPECT_GT(Int128(kMax) * 2, Int128(kMax));
    EXPECT_LT(Int128(kMin) * 2, Int128(kMin));
}

TEST(Int128, DivisionTruncatesTowardsZeroLikeBuiltInIntegers) {
    for (std::int64_t a : {7, -7, 6, -6, 0}) {
        for (std::int64_t b : {2, -2, 3, -3, 7}) {
            EXPECT_EQ(static_cast<std::int64_t>(Int128(a) / b), a / b) << a << " / " << b;
        }
    }
}

TEST(Int128, OrdersBySignFirstThenMagnitude) {
    EXPECT_LT(Int128(-1), Int128(0));
    EXPECT_LT(Int128(kMin) * 4, Int128(-1));
    EXPECT_GT(Int128(1) * (std::int64_t{1} << 62) * 4, Int128(kMax));
    EXPECT_EQ(Int128(5) - 7, Int128(-2));
    EXPECT_EQ(-Int128(0), Int128(0));
    EXPECT_EQ(Int128(-1) + 1, Int128(0));  // the carry runs through the high half
}

#ifdef __SIZEOF_INT128__
TEST(Int128, AgreesWithTheCompilersOwnType) {
    std::mt19937_64 random(17);
    // Equal low halves, and equal high halves read through an exact division.
    const auto same = [](Int128 ours, __int128 theirs) {
        const Int128 twoTo64 = Int128(std::int64_t{1} << 32) * (std::int64_t{1} << 32);
        const auto low = static_cast<std::int64_t>(ours);
        return low == static_cast<std::int64_t>(theirs) &&
               static_cast<std::int64_t>((ours - low) / twoTo64) ==
                   static_cast<std::int64_t>((theirs - low) / (static_cast<__int128>(1) << 64));
    };
    for (int i = 0; i < 20000; ++i) {
        // Operands of every size up to 64 bits, so products and quotients span 128.
        const auto a = static_cast<std::int64_t>(random()) >> (random() % 64);
        const auto b = static_cast<std::int64_t>(random()) >> (random() % 64);
        const auto c = static_cast<std::int64_t>(random()) >> (random() % 64);
        const __int128 product = static_cast<__int128>(a) * b;
        ASSERT_TRUE(same(Int128(a) * b, product)) << a << " * " << b;
        ASSERT_TRUE(same(Int128(a) * b + c, product + c)) << a << " * " << b << " + " << c;
        ASSERT_TRUE(same(Int128(a) * b - c, product - c)) << a << " * " << b << " - " << c;
        if (c != 0) {
            ASSERT_TRUE(same(Int128(a) * b / c, product / c)) << a << " * " << b << " / " << c;
            ASSERT_EQ(Int128(a) * b < Int128(c) * c, product < static_cast<__int128>(c) * c);
        }
    }
}
#endif
