// History verification: one pass over the UTF-16 code units, carrying the running
// checksum under every hypothesis of where the writer was reopened; each CheckSum
// element keeps the hypotheses whose value it holds and fails the document if none.
#include "utils/settings/HistoryVerifier.h"

#include <algorithm>
#include <cwchar>

#include "utils/settings/HistoryCheckSum.h"

namespace kiv_history {

namespace {

constexpr std::u16string_view kOpen = u"<CheckSum>";
constexpr std::u16string_view kClose = u"</CheckSum>";
constexpr std::u16string_view kRootEnd = u"</NurvoJobHistory>";
constexpr std::u16string_view kCrLf = u"\r\n";

struct Hypothesis {
    std::uint32_t sum;
    int lane;
    EHistoryBasis basis;
};

std::u16string DecodeUnits(std::string_view bytes) {
    std::u16string units(bytes.size() / 2, u'\0');
    for (size_t i = 0; i < units.size(); ++i)
        units[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                         (static_cast<unsigned char>(bytes[2 * i + 1]) << 8));
    return units;
}

std::wstring Hex(std::uint32_t v) {
    wchar_t text[16];
    std::swprintf(text, 16, L"%X", v);
    return text;
}

class Verifier {
public:
    explicit Verifier(std::u16string units) : units_(std::move(units)) {}

    THistoryVerdict Run(bool oddTail) {
        size_t pos = 1;  // the byte-order mark is not part of the checksum
        while (pos < units_.size()) {
            const size_t at = units_.find(kOpen, pos);
            Fold(pos, at == std::u16string::npos ? units_.size() : at);
            if (at == std::u16string::npos) break;
            if (!CheckElement(at, pos)) return verdict_;
        }
        if (oddTail) return Fail(line_, L"the document is torn: it ends in half a character");
        if (!EndsWithRootEndTag())
            return Fail(line_, L"the document is torn: it does not end with the end tag of NurvoJobHistory");
        verdict_.ok = true;
        return verdict_;
    }

private:
    void Fold(size_t from, size_t to) {
        const std::u16string_view span(units_.data() + from, to - from);
        for (Hypothesis& h : hyps_) h.sum = FoldCheckSum(span, h.sum, h.lane);
        line_ += static_cast<int>(std::count(span.begin(), span.end(), u'\n'));
    }

    // Checks the element that begins at `at` and leaves `pos` after it (and its CR LF).
    bool CheckElement(size_t at, size_t& pos) {
        const std::u16string_view rest(units_.data() + at, units_.size() - at);
        size_t digits = 0;
        while (digits < 8 && kOpen.size() + digits < rest.size() && IsHex(rest[kOpen.size() + digits])) ++digits;
        const size_t closeAt = kOpen.size() + digits;
        if (rest.substr(closeAt, kClose.size()) != kClose) {
            const bool truncated = rest.size() < closeAt + kClose.size();
            Fail(line_, truncated ? L"the document is torn inside a CheckSum element"
                                  : L"a CheckSum element does not hold one to eight hexadecimal digits");
            return false;
        }
        if (digits == 0) {
            Fail(line_, L"a CheckSum element does not hold one to eight hexadecimal digits");
            return false;
        }
        std::uint32_t stored = 0;
        ParseHexLikeScanf(rest.substr(kOpen.size(), digits), stored);
        const EHistoryBasis* basis = nullptr;
        std::wstring expected;
        for (const Hypothesis& h : hyps_) {
            if (h.sum == stored && !basis) basis = &h.basis;
            expected += (expected.empty() ? L"" : L" or ") + Hex(h.sum);
        }
        if (!basis) {
            Fail(line_, L"CheckSum " + Hex(stored) + L" does not match the running checksum " + expected);
            return false;
        }
        verdict_.checks.push_back(THistoryCheck{});
        verdict_.checks.back().line = line_;
        verdict_.checks.back().stored = stored;
        verdict_.checks.back().basis = *basis;
        std::erase_if(hyps_, [&](const Hypothesis& h) { return h.sum != stored; });

        size_t end = at + closeAt + kClose.size();
        if (std::u16string_view(units_).substr(end, 2) == kCrLf) end += 2;
        Fold(at, end);
        pos = end;
        AddReopenHypothesis(end);
        return true;
    }

    // More content after a CheckSum element may come from a writer that was closed
    // there and reopened: it restores from the 31 units before the old end tag, or
    // starts from zero when that fails.
    void AddReopenHypothesis(size_t end) {
        const std::u16string_view after = std::u16string_view(units_).substr(end);
        if (after.empty() || after == kRootEnd || (after.substr(0, kRootEnd.size()) == kRootEnd &&
                                                    after.substr(kRootEnd.size()) == kCrLf))
            return;
        Hypothesis reopened{0, 0, eRestarted};
        if (end >= static_cast<size_t>(kRestoreWindow)) {
            const size_t start = end - static_cast<size_t>(kRestoreWindow);
            const RestoredCheckSum r = RestoreFromWindow(std::u16string_view(units_).substr(start, kRestoreWindow),
                                                         static_cast<std::int64_t>(start) * 2);
            if (r.ok) reopened = Hypothesis{r.sum, r.lane, eRestored};
        }
        for (const Hypothesis& h : hyps_)
            if (h.sum == reopened.sum && h.lane == reopened.lane) return;
        hyps_.push_back(reopened);
    }

    bool EndsWithRootEndTag() const {
        std::u16string_view all(units_);
        if (all.size() >= kCrLf.size() && all.substr(all.size() - kCrLf.size()) == kCrLf)
            all.remove_suffix(kCrLf.size());
        return all.size() >= kRootEnd.size() + 1 && all.substr(all.size() - kRootEnd.size()) == kRootEnd;
    }

    static bool IsHex(char16_t c) {
        return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
    }

    THistoryVerdict Fail(int line, std::wstring problem) {
        verdict_.ok = false;
        verdict_.failLine = line;
        verdict_.problem = std::move(problem);
        return verdict_;
    }

    std::u16string units_;
    std::vector<Hypothesis> hyps_{{0, 0, eRunning}};
    int line_ = 1;
    THistoryVerdict verdict_;
};

}  // namespace

THistoryVerdict VerifyHistory(std::string_view bytes) {
    THistoryVerdict verdict;
    if (bytes.size() < 2 || static_cast<unsigned char>(bytes[0]) != 0xFF || static_cast<unsigned char>(bytes[1]) != 0xFE) {
        verdict.failLine = 1;
        verdict.problem = L"not a history document: it does not begin with the UTF-16LE byte-order mark FF FE";
        return verdict;
    }
    return Verifier(DecodeUnits(bytes)).Run(bytes.size() % 2 != 0);
}

}  // namespace kiv_history
