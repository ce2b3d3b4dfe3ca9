// Folding and restoring the history documents' running checksum.
#include "utils/settings/HistoryCheckSum.h"

namespace kiv_history {

namespace {

constexpr std::u16string_view kOpenTag = u"<CheckSum>";

int HexDigit(char16_t c) {
    if (c >= u'0' && c <= u'9') return c - u'0';
    if (c >= u'a' && c <= u'f') return c - u'a' + 10;
    if (c >= u'A' && c <= u'F') return c - u'A' + 10;
    return -1;
}

bool IsScanfSpace(char16_t c) { return c == u' ' || (c >= u'\t' && c <= u'\r'); }

}  // namespace

std::uint32_t FoldCheckSum(std::u16string_view units, std::uint32_t sum, int& lane) {
    for (char16_t c : units) {
        sum ^= static_cast<std::uint32_t>(c & 0xFF) << (8 * lane);
        lane = (lane + 1) & 3;
    }
    return sum;
}

bool ParseHexLikeScanf(std::u16string_view text, std::uint32_t& value) {
    size_t i = 0;
    while (i < text.size() && IsScanfSpace(text[i])) ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) negative = text[i++] == u'-';
    if (i + 2 < text.size() && text[i] == u'0' && (text[i + 1] == u'x' || text[i + 1] == u'X') &&
        HexDigit(text[i + 2]) >= 0)
        i += 2;
    std::uint32_t v = 0;
    size_t digits = 0;
    for (; i < text.size() && HexDigit(text[i]) >= 0; ++i, ++digits) v = (v << 4) | static_cast<std::uint32_t>(HexDigit(text[i]));
    if (digits == 0) return false;
    value = negative ? 0u - v : v;
    return true;
}

RestoredCheckSum RestoreFromWindow(std::u16string_view window, std::int64_t windowBytePos) {
    RestoredCheckSum result;
    if (window.size() != static_cast<size_t>(kRestoreWindow) || windowBytePos < 0) return result;
    if (window.find(kOpenTag) == std::u16string_view::npos) return result;
    // Deliberate: the number is taken at index 10 whatever the element's place in the
    // window, so only a checksum written with exactly eight digits restores cleanly.
    std::uint32_t stored = 0;
    if (!ParseHexLikeScanf(window.substr(kOpenTag.size(), 8), stored)) return result;
    // Deliberate: the lane comes from the window's byte offset, not its character count.
    result.lane = static_cast<int>(windowBytePos % 4);
    result.sum = FoldCheckSum(window, stored, result.lane);
    result.ok = true;
    return result;
}

}  // namespace kiv_history
