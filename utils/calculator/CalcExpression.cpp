// A recursive-descent reader of calculator expressions that emits keys as it goes.
// Precedence is the engine's own (+ - below × ÷ below ^ root), so binary operators are
// emitted in reading order; only what the keys cannot express in that order is wrapped
// in parentheses: a negated power (-2^2 is -(2^2)) and the right side of a power that
// is itself a power (2^3^2 is 2^(3^2)).
#include "utils/calculator/CalcExpression.h"

#include <cwctype>
#include <string>
#include <string_view>

namespace {

struct Token {
    ECalcKey key;
    size_t at;  // where in the text the key comes from
};
using Tokens = std::vector<Token>;

// Deeper than this, the text is refused before the reader's own recursion grows.
constexpr int kMaxDepth = 200;

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }
bool IsLetter(wchar_t c) { return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z'); }
bool IsDegreeMark(wchar_t c) { return c == L'\u00B0' || c == L'\u00BA'; }
bool IsMinuteMark(wchar_t c) { return c == L'\'' || c == L'\u2032' || c == L'\u2019'; }
bool IsSecondMark(wchar_t c) { return c == L'"' || c == L'\u2033' || c == L'\u201D'; }

struct Function {
    const wchar_t* name;
    ECalcKey key;
};
const Function kFunctions[] = {
    {L"sin", eCalcKeySin},     {L"cos", eCalcKeyCos},       {L"tan", eCalcKeyTan},
    {L"asin", eCalcKeyAsin},   {L"acos", eCalcKeyAcos},     {L"atan", eCalcKeyAtan},
    {L"log", eCalcKeyLog},     {L"ln", eCalcKeyLn},         {L"exp", eCalcKeyExp},
    {L"pow10", eCalcKeyTenPower}, {L"sqrt", eCalcKeySqrt},  {L"sq", eCalcKeySquare},
    {L"recip", eCalcKeyReciprocal}, {L"todms", eCalcKeyToDms}, {L"fromdms", eCalcKeyFromDms},
};
const wchar_t* const kNames = L"sin cos tan asin acos atan log ln exp pow10 sqrt sq recip todms fromdms, pi, ans";

class Reader {
public:
    explicit Reader(std::wstring_view text) : s_(text) {}

    bool Expression(Tokens& out) {
        if (Peek() == 0) return Fail(0, L"the expression is empty; type for example 2+3*4");
        bool compound = false;
        if (!Sum(out, compound)) return false;
        const wchar_t c = Peek();
        if (c == L')') return Fail(pos_, L"')' has no matching '('");
        if (c != 0) return Fail(pos_, L"expected an operator or the end here");
        out.push_back({eCalcKeyEquals, s_.size()});
        return CheckParens(out);
    }

    // A signed number or angle and nothing else.
    bool Literal(Tokens& out) {
        bool negative = false;
        if (Peek() == L'-' || Peek() == L'+') negative = s_[pos_++] == L'-';
        Peek();
        if (pos_ >= s_.size() || !(IsDigit(s_[pos_]) || s_[pos_] == L'.')) return Fail(pos_, L"not a number");
        if (!Number(out)) return false;
        if (Peek() != 0) return Fail(pos_, L"not a number");
        if (negative) out.push_back({eCalcKeySign, 0});
        return true;
    }

    size_t errorAt() const { return errorAt_; }
    const std::wstring& why() const { return why_; }

private:
    bool Fail(size_t at, const wchar_t* why) {
        if (why_.empty()) {
            errorAt_ = at;
            why_ = why;
        }
        return false;
    }

    wchar_t Peek() {
        while (pos_ < s_.size() && (s_[pos_] == L' ' || s_[pos_] == L'\t')) ++pos_;
        return pos_ < s_.size() ? s_[pos_] : 0;
    }

    // Depth of the reader's recursion, guarded on entry to the recursive rules.
    struct Nest {
        explicit Nest(int& d) : depth(++d) {}
        ~Nest() { --depth; }
        int& depth;
    };

    static void Wrap(Tokens& out, const Tokens& inner, size_t at) {
        out.push_back({eCalcKeyOpenParen, at});
        out.insert(out.end(), inner.begin(), inner.end());
        out.push_back({eCalcKeyCloseParen, at});
    }

    bool Sum(Tokens& out, bool& compound) {
        if (!Product(out, compound)) return false;
        for (wchar_t c = Peek(); c == L'+' || c == L'-' || c == L'\u2212'; c = Peek()) {
            out.push_back({c == L'+' ? eCalcKeyAdd : eCalcKeySubtract, pos_++});
            bool right = false;
            if (!Product(out, right)) return false;
            compound = true;
        }
        return true;
    }

    bool Product(Tokens& out, bool& compound) {
        if (!Signed(out, compound)) return false;
        for (wchar_t c = Peek(); c == L'*' || c == L'/' || c == L'\u00D7' || c == L'\u00F7'; c = Peek()) {
            out.push_back({c == L'*' || c == L'\u00D7' ? eCalcKeyMultiply : eCalcKeyDivide, pos_++});
            bool right = false;
            if (!Signed(out, right)) return false;
            compound = true;
        }
        return true;
    }

    // A unary minus applies to its whole operand, after it is evaluated.
    bool Signed(Tokens& out, bool& compound) {
        Nest nest(depth_);
        if (depth_ > kMaxDepth) return Fail(pos_, L"the expression is nested too deeply");
        const wchar_t c = Peek();
        if (c != L'-' && c != L'+' && c != L'\u2212') return Power(out, compound);
        const size_t at = pos_++;
        Tokens inner;
        bool innerCompound = false;
        if (!Signed(inner, innerCompound)) return false;
        if (c == L'+') {
            out.insert(out.end(), inner.begin(), inner.end());
            compound = innerCompound;
            return true;
        }
        if (innerCompound) Wrap(out, inner, at);
        else out.insert(out.end(), inner.begin(), inner.end());
        out.push_back({eCalcKeySign, at});
        compound = false;
        return true;
    }

    bool Power(Tokens& out, bool& compound) {
        if (!Postfix(out)) return false;
        compound = false;
        ECalcKey op;
        const wchar_t c = Peek();
        if (c == L'^') op = eCalcKeyPower;
        else if (NameAhead() == L"root") op = eCalcKeyRoot;
        else return true;
        const size_t at = pos_;
        pos_ += op == eCalcKeyPower ? 1 : 4;
        out.push_back({op, at});
        Tokens right;
        bool rightCompound = false;
        if (!Signed(right, rightCompound)) return false;
        if (rightCompound) Wrap(out, right, at);
        else out.insert(out.end(), right.begin(), right.end());
        compound = true;
        return true;
    }

    bool Postfix(Tokens& out) {
        if (!Primary(out)) return false;
        for (wchar_t c = Peek();; c = Peek()) {
            if (c == L'!') out.push_back({eCalcKeyFactorial, pos_});
            else if (c == L'%') out.push_back({eCalcKeyPercent, pos_});
            else if (c == L'\u00B2') out.push_back({eCalcKeySquare, pos_});
            else return true;
            ++pos_;
        }
    }

    std::wstring NameAhead() {
        Peek();
        std::wstring name;
        for (size_t i = pos_; i < s_.size() && (IsLetter(s_[i]) || (i > pos_ && IsDigit(s_[i]))); ++i)
            name += static_cast<wchar_t>(std::towlower(static_cast<wint_t>(s_[i])));
        return name;
    }

    bool Primary(Tokens& out) {
        Nest nest(depth_);
        if (depth_ > kMaxDepth) return Fail(pos_, L"the expression is nested too deeply");
        const wchar_t c = Peek();
        const size_t at = pos_;
        if (IsDigit(c) || c == L'.') return Number(out);
        if (c == L'(') {
            ++pos_;
            out.push_back({eCalcKeyOpenParen, at});
            bool compound = false;
            if (!Sum(out, compound)) return false;
            if (Peek() != L')') return Fail(pos_, L"')' is missing here");
            out.push_back({eCalcKeyCloseParen, pos_++});
            return true;
        }
        if (c == L'\u03C0') {
            ++pos_;
            out.push_back({eCalcKeyPi, at});
            return true;
        }
        if (c == L'\u221A') {
            ++pos_;
            return Apply(out, eCalcKeySqrt, at);
        }
        const std::wstring name = NameAhead();
        if (name.empty()) {
            if (c == 0) return Fail(pos_, L"the expression ends where a number, a name or '(' is expected");
            return Fail(pos_, L"expected a number, a name or '(' here");
        }
        pos_ += name.size();
        if (name == L"pi") {
            out.push_back({eCalcKeyPi, at});
            return true;
        }
        if (name == L"ans") {
            out.push_back({eCalcKeyLastResult, at});
            return true;
        }
        for (const auto& f : kFunctions)
            if (name == f.name) return Apply(out, f.key, at);
        unknown_ = L"unknown name \"" + name + L"\"; known: " + kNames;
        return Fail(at, unknown_.c_str());
    }

    // A function takes the signed primary after it, with its postfix operators: sin 30,
    // sin(30+1), sqrt -4, sin 3!.
    bool Apply(Tokens& out, ECalcKey function, size_t at) {
        Nest nest(depth_);
        if (depth_ > kMaxDepth) return Fail(pos_, L"the expression is nested too deeply");
        const wchar_t c = Peek();
        if (c == L'-' || c == L'+' || c == L'\u2212') {
            ++pos_;
            if (!Apply(out, eCalcKeySign, at)) return false;  // the operand, negated
            if (c == L'+') out.pop_back();
        } else if (!Postfix(out)) {
            return false;
        }
        out.push_back({function, at});
        return true;
    }

    bool NumberPart(Tokens& out, bool& point, int& significant) {
        point = false;
        int digits = 0;
        for (; pos_ < s_.size(); ++pos_) {
            const wchar_t c = s_[pos_];
            if (IsDigit(c)) {
                ++digits;
                if (significant > 0 || c != L'0') ++significant;
                out.push_back({static_cast<ECalcKey>(eCalcKey0 + (c - L'0')), pos_});
            } else if (c == L'.' && !point) {
                point = true;
                out.push_back({eCalcKeyPoint, pos_});
            } else {
                break;
            }
        }
        return digits > 0;
    }

    // Minutes or seconds: below 60, at most two whole digits.
    bool SexagesimalPart(Tokens& out, bool& point, int& significant, const wchar_t* what) {
        const size_t at = pos_;
        const size_t first = out.size();
        if (!NumberPart(out, point, significant)) return Fail(at, what);
        size_t whole = 0;
        std::wstring digits;
        for (size_t i = first; i < out.size() && out[i].key != eCalcKeyPoint; ++i, ++whole)
            digits += static_cast<wchar_t>(L'0' + out[i].key);
        if (whole > 2 || (whole == 2 && digits[0] >= L'6'))
            return Fail(at, L"minutes and seconds are below 60, with at most two whole digits");
        return true;
    }

    bool Number(Tokens& out) {
        const size_t start = pos_;
        int significant = 0;
        bool point = false;
        if (!NumberPart(out, point, significant)) return Fail(start, L"a number needs at least one digit");
        if (pos_ < s_.size() && (s_[pos_] == L'e' || s_[pos_] == L'E')) {
            size_t i = pos_ + 1;
            const bool negative = i < s_.size() && (s_[i] == L'-' || s_[i] == L'+') && s_[i++] == L'-';
            if (i < s_.size() && IsDigit(s_[i])) {
                out.push_back({eCalcKeyExponent, pos_});
                const size_t exponentAt = i;
                for (; i < s_.size() && IsDigit(s_[i]); ++i) {
                    if (i - exponentAt >= 2) return Fail(exponentAt, L"an exponent has at most two digits");
                    out.push_back({static_cast<ECalcKey>(eCalcKey0 + (s_[i] - L'0')), i});
                }
                if (negative) out.push_back({eCalcKeySign, exponentAt});
                pos_ = i;
            }
        } else if (pos_ < s_.size() && (IsDegreeMark(s_[pos_]) || s_[pos_] == L':')) {
            if (!Angle(out, point, significant)) return false;
        }
        if (significant > kCalcMaxEntryDigits) return Fail(start, L"a number has at most 34 significant digits");
        return true;
    }

    // 12°30'36.5", 12°30', 12°, 12.5° or 12:30:36.5; the fraction on the last part only.
    bool Angle(Tokens& out, bool point, int& significant) {
        const bool colons = s_[pos_] == L':';
        const size_t markAt = pos_++;
        if (point) {
            if (colons) return Fail(markAt, L"only the last part of an angle may have a fraction");
            return true;  // decimal degrees with a degree mark
        }
        out.push_back({eCalcKeyDms, markAt});
        if (!colons && !(pos_ < s_.size() && IsDigit(s_[pos_]))) return true;
        if (!SexagesimalPart(out, point, significant, L"minutes are missing after ':'")) return false;
        if (!colons) {
            if (!(pos_ < s_.size() && IsMinuteMark(s_[pos_]))) return Fail(pos_, L"the minutes need their mark '");
            ++pos_;
        }
        const bool more = colons ? pos_ < s_.size() && s_[pos_] == L':' : pos_ < s_.size() && IsDigit(s_[pos_]);
        if (!more) return true;
        if (point) return Fail(pos_, L"only the last part of an angle may have a fraction");
        out.push_back({eCalcKeyDms, pos_});
        if (colons) ++pos_;
        if (!SexagesimalPart(out, point, significant, L"seconds are missing after ':'")) return false;
        if (!colons && pos_ < s_.size() && IsSecondMark(s_[pos_])) ++pos_;
        return true;
    }

    bool CheckParens(const Tokens& out) {
        int open = 0;
        for (const auto& t : out) {
            if (t.key == eCalcKeyOpenParen && ++open > kCalcMaxParens)
                return Fail(t.at, L"more than 24 parentheses open at once (a power of a power and a negated "
                                  L"power open one of their own)");
            if (t.key == eCalcKeyCloseParen) --open;
        }
        return true;
    }

    std::wstring_view s_;
    size_t pos_ = 0;
    int depth_ = 0;
    size_t errorAt_ = 0;
    std::wstring why_;
    std::wstring unknown_;
};

void ToKeys(const Tokens& tokens, std::vector<ECalcKey>& keys) {
    keys.clear();
    keys.reserve(tokens.size());
    for (const auto& t : tokens) keys.push_back(t.key);
}

}  // namespace

bool CalcExpressionToKeys(const wchar_t* text, std::vector<ECalcKey>& keys, TCalcExpressionError& error) {
    try {
        Reader reader(text ? std::wstring_view(text) : std::wstring_view());
        Tokens tokens;
        if (!reader.Expression(tokens)) {
            error.column = static_cast<int>(reader.errorAt()) + 1;
            error.reason = CKivStringT(reader.why());
            return false;
        }
        ToKeys(tokens, keys);
        return true;
    } catch (...) {
        error.column = 1;
        error.reason = CKivStringT(L"the expression is too long");
        return false;
    }
}

bool CalcLiteralToKeys(const wchar_t* text, std::vector<ECalcKey>& keys) {
    try {
        std::wstring s(text ? text : L"");
        for (auto& c : s)
            if (c == L',') c = L'.';
        Reader reader(s);
        Tokens tokens;
        if (!reader.Literal(tokens)) return false;
        ToKeys(tokens, keys);
        return true;
    } catch (...) {
        return false;
    }
}
