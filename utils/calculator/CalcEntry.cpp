// Typing a number: the rules that keep the typed text a readable value.
#include "utils/calculator/CalcEntry.h"

#include "utils/calculator/CalcMath.h"

namespace kiv_calc {
namespace {

// An exponent has at most two digits: beyond, every value is out of range anyway.
constexpr size_t kExponentDigits = 2;
// Zeros after "0." are not significant but still take room; they stop somewhere too.
constexpr size_t kPartChars = 48;

bool HasPoint(const std::string& s) { return s.find('.') != std::string::npos; }

// Minutes and seconds: their whole part is below 60, so at most two digits.
bool SexagesimalFits(const std::string& part) {
    const std::string whole = part.substr(0, part.find('.'));
    return whole.size() <= 2 && (whole.size() < 2 || whole[0] < '6');
}

}  // namespace

int CalcEntry::SignificantDigits() const {
    int count = 0;
    bool leading = true;
    for (const auto& part : parts_)
        for (char c : part) {
            if (c == '.') continue;
            if (c != '0') leading = false;
            if (!leading) ++count;
        }
    return count;
}

bool CalcEntry::Digit(int digit) {
    const char c = static_cast<char>('0' + digit);
    if (inExponent_) {
        if (exponent_ == "0") exponent_.clear();
        if (exponent_.size() >= kExponentDigits) return false;
        exponent_ += c;
        return true;
    }
    std::string& part = parts_[part_];
    const int significant = SignificantDigits();
    if (significant >= kCalcMaxEntryDigits || part.size() >= kPartChars) return false;
    std::string typed = part == "0" ? std::string(1, c) : part + c;
    if (part_ > 0 && !SexagesimalFits(typed)) return false;
    part = std::move(typed);
    return true;
}

bool CalcEntry::Point() {
    if (inExponent_) return false;
    std::string& part = parts_[part_];
    if (HasPoint(part)) return false;
    part += part.empty() ? "0." : ".";
    return true;
}

bool CalcEntry::Sign() {
    if (inExponent_) exponentNegative_ = !exponentNegative_;
    else negative_ = !negative_;
    return true;
}

bool CalcEntry::Exponent() {
    if (inExponent_ || part_ > 0) return false;
    if (parts_[0].empty()) parts_[0].push_back('1');  // EE on nothing typed starts at 1E
    inExponent_ = true;
    return true;
}

// A fraction belongs to the last part only, so a part with a point closes the angle.
bool CalcEntry::DmsMark() {
    if (inExponent_ || part_ >= 2 || HasPoint(parts_[part_])) return false;
    if (parts_[part_].empty()) parts_[part_].push_back('0');
    ++part_;
    return true;
}

bool CalcEntry::Backspace() {
    if (inExponent_) {
        if (!exponent_.empty()) exponent_.pop_back();
        else {
            inExponent_ = false;
            exponentNegative_ = false;
        }
        return true;
    }
    std::string& part = parts_[part_];
    if (!part.empty()) {
        part.pop_back();
    } else if (part_ > 0) {
        --part_;
    } else {
        if (!negative_) return false;
        negative_ = false;
    }
    return true;
}

std::wstring CalcEntry::Text() const {
    std::wstring out = negative_ ? L"-" : L"";
    auto wide = [](const std::string& s) { return std::wstring(s.begin(), s.end()); };
    out += parts_[0].empty() ? L"0" : wide(parts_[0]);
    if (inExponent_) {
        out += L"E";
        if (exponentNegative_) out += L"-";
        out += wide(exponent_);
    }
    if (part_ >= 1) out += L"\u00B0" + wide(parts_[1]);
    if (part_ >= 2) out += L"'" + wide(parts_[2]) + (parts_[2].empty() ? L"" : L"\"");
    return out;
}

Outcome CalcEntry::Value() const {
    auto number = [](const std::string& s, Decimal& v) { return ParseDecimal(s.empty() || s == "." ? "0" : s, v); };
    Decimal v;
    if (part_ == 0) {
        std::string text = parts_[0];
        if (!exponent_.empty()) text += (exponentNegative_ ? "e-" : "e") + exponent_;
        if (!number(text, v)) return Outcome{Decimal(0), eCalcDomain};
    } else {
        Decimal degrees, minutes, seconds;
        if (!number(parts_[0], degrees) || !number(parts_[1], minutes) || !number(parts_[2], seconds))
            return Outcome{Decimal(0), eCalcDomain};
        v = FromDmsParts(degrees, minutes, seconds);
    }
    return InRange(negative_ ? -v : v);
}

}  // namespace kiv_calc
