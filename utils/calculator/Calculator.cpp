// The calculator's key handling: typed numbers, pending operations by precedence inside
// parenthesis frames, repeated equals, memory, the DMS view and the error state. Every
// key is handled inside one guard, so nothing a key does can throw past PressKey.
#include "utils/calculator/Calculator.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "utils/calculator/CalcEntry.h"
#include "utils/calculator/CalcExpression.h"
#include "utils/calculator/CalcMath.h"
#include "utils/settings/SettingsStore.h"
#include "utils/units/UnitText.h"

using kiv_calc::BinaryOp;
using kiv_calc::CalcEntry;
using kiv_calc::Decimal;
using kiv_calc::Outcome;

namespace {

int Precedence(BinaryOp op) {
    switch (op) {
        case BinaryOp::kAdd:
        case BinaryOp::kSubtract: return 1;
        case BinaryOp::kMultiply:
        case BinaryOp::kDivide: return 2;
        default: return 3;
    }
}

std::string Narrow(const CKivStringT& text) {
    std::string out;
    for (wchar_t c : text.view()) {
        if (c <= 0 || c >= 128) return std::string();
        out += static_cast<char>(c);
    }
    return out;
}

// The most decimals of a second a DMS view shows; trailing zeros are dropped.
constexpr int kDmsDecimals = 4;

}  // namespace

struct CCalculator::Engine {
    struct Pending {
        Decimal left;
        BinaryOp op;
    };

    Decimal x;                  // the value shown when no number is being typed
    CalcEntry entry;
    bool entering = false;
    bool operandReady = true;   // false right after an operator: x is its left operand
    bool dmsView = false;
    bool lastWasEquals = false;
    ECalcError error = eCalcNoError;
    // One frame per open parenthesis (the first is the whole calculation); each holds
    // its pending operations in rising precedence, so at most one per level.
    std::vector<std::vector<Pending>> frames{1};
    bool repeatValid = false;   // the last operation, for repeated equals
    BinaryOp repeatOp = BinaryOp::kAdd;
    Decimal repeatOperand;
    Decimal memory;
    ECalcAngleMode mode = eCalcDegrees;
    int digits = kCalcDefaultDigits;

    void Clear() {
        x = 0;
        entry = CalcEntry();
        entering = false;
        operandReady = true;
        dmsView = false;
        error = eCalcNoError;
        frames.assign(1, {});
        repeatValid = false;
    }

    void Fail(ECalcError why) {
        Clear();
        error = why;
    }

    // Ends the typed number, which becomes the value; false when that failed.
    bool Finish() {
        if (!entering) return true;
        entering = false;
        const Outcome typed = entry.Value();
        if (typed.error) {
            Fail(typed.error);
            return false;
        }
        x = typed.value;
        operandReady = true;
        return true;
    }

    bool Set(const Outcome& o) {
        if (o.error) {
            Fail(o.error);
            return false;
        }
        x = o.value;
        operandReady = true;
        dmsView = false;
        return true;
    }

    void Show(const Decimal& v) {
        entering = false;
        Set(Outcome{v});
    }

    void StartEntry() {
        if (entering) return;
        entry = CalcEntry();
        entering = true;
        dmsView = false;
    }

    void Unary(Outcome (*f)(const Decimal&)) {
        if (Finish()) Set(f(x));
    }
    void Trig(Outcome (*f)(const Decimal&, ECalcAngleMode)) {
        if (Finish()) Set(f(x, mode));
    }

    bool ReduceOne() {
        auto& frame = frames.back();
        const Pending p = frame.back();
        frame.pop_back();
        repeatValid = true;
        repeatOp = p.op;
        repeatOperand = x;
        return Set(kiv_calc::Apply(p.left, p.op, x));
    }

    bool ReduceFrame() {
        while (!frames.back().empty())
            if (!ReduceOne()) return false;
        return true;
    }

    // An operator right after another operator (or a closing key right after one) has
    // no right operand: the dangling operator is withdrawn and its left operand returns.
    void WithdrawDangling() {
        auto& frame = frames.back();
        if (operandReady || frame.empty()) return;
        x = frame.back().left;
        frame.pop_back();
        operandReady = true;
    }

    void Operator(BinaryOp op) {
        if (!Finish()) return;
        WithdrawDangling();
        auto& frame = frames.back();
        while (!frame.empty() && Precedence(frame.back().op) >= Precedence(op))
            if (!ReduceOne()) return;
        frames.back().push_back({x, op});
        operandReady = false;
        dmsView = false;
    }

    void OpenParen() {
        if (static_cast<int>(frames.size()) > kCalcMaxParens) return;
        // A number typed just before "(" multiplies the group: 2(3+4) is 14.
        if (entering) Operator(BinaryOp::kMultiply);
        if (error) return;
        frames.emplace_back();
        operandReady = false;
    }

    void CloseParen() {
        if (frames.size() < 2 || !Finish()) return;
        WithdrawDangling();
        if (!ReduceFrame()) return;
        frames.pop_back();
        operandReady = true;
    }

    void Equals() {
        const bool repeat = lastWasEquals;
        if (!Finish()) return;
        WithdrawDangling();
        bool pending = false;
        for (const auto& f : frames) pending = pending || !f.empty();
        if (pending) {
            while (true) {
                if (!ReduceFrame()) return;
                if (frames.size() == 1) break;
                frames.pop_back();
            }
        } else if (repeat && repeatValid) {
            const Decimal operand = repeatOperand;
            if (!Set(kiv_calc::Apply(x, repeatOp, operand))) return;
        }
        operandReady = true;
        SetLastCalcValue(CKivStringT(kiv_calc::FormatFull(x, kiv_calc::kStoredDigits).c_str()));
    }

    // a + b% adds b percent of a; with any other pending operation, or none, b% is b/100.
    void Percent() {
        if (!Finish()) return;
        const auto& frame = frames.back();
        if (!frame.empty() && (frame.back().op == BinaryOp::kAdd || frame.back().op == BinaryOp::kSubtract))
            Set(kiv_calc::InRange(frame.back().left * x / 100));
        else
            Set(kiv_calc::InRange(x / 100));
    }

    void Sign() {
        // Right after an operator, +/- begins the next number with its sign.
        if (!entering && !operandReady) StartEntry();
        if (entering) entry.Sign();
        else if (x != 0) x = -x;
    }

    void ToDms() {
        if (!Finish()) return;
        dmsView = !dmsView;
        operandReady = true;
    }

    void FromDms() {
        if (dmsView) {
            dmsView = false;
            return;
        }
        const bool typedAsDms = entering && entry.IsDms();
        if (!Finish() || typedAsDms) return;
        Set(kiv_calc::FromPackedDms(x));
    }

    void MemoryAdd() {
        if (!Finish()) return;
        const Outcome sum = kiv_calc::InRange(memory + x);
        if (sum.error) Fail(sum.error);
        else memory = sum.value;
    }

    void RecallLast() {
        Decimal v;
        const Outcome last = kiv_calc::ParseDecimal(Narrow(GetLastCalcValue()), v) ? kiv_calc::InRange(v)
                                                                                   : Outcome{Decimal(0)};
        Show(last.error ? Decimal(0) : last.value);
    }

    void Press(ECalcKey key);
    CKivStringT DmsText() const;
};

void CCalculator::Engine::Press(ECalcKey key) {
    const bool wasEquals = lastWasEquals;
    lastWasEquals = false;
    switch (key) {
        case eCalcKeyClear: Clear(); return;
        case eCalcKeyClearEntry:
            if (error) {
                Clear();
                return;
            }
            entering = false;
            StartEntry();
            return;
        case eCalcKeyDegrees: mode = eCalcDegrees; return;
        case eCalcKeyGrads: mode = eCalcGrads; return;
        case eCalcKeyRadians: mode = eCalcRadians; return;
        default: break;
    }
    if (error) return;  // only clearing leaves an error
    if (key >= eCalcKey0 && key <= eCalcKey9) {
        StartEntry();
        entry.Digit(key - eCalcKey0);
        return;
    }
    switch (key) {
        case eCalcKeyPoint: StartEntry(); entry.Point(); break;
        case eCalcKeyExponent: StartEntry(); entry.Exponent(); break;
        case eCalcKeyDms: StartEntry(); entry.DmsMark(); break;
        case eCalcKeyBackspace: if (entering) entry.Backspace(); break;
        case eCalcKeySign: Sign(); break;
        case eCalcKeyAdd: Operator(BinaryOp::kAdd); break;
        case eCalcKeySubtract: Operator(BinaryOp::kSubtract); break;
        case eCalcKeyMultiply: Operator(BinaryOp::kMultiply); break;
        case eCalcKeyDivide: Operator(BinaryOp::kDivide); break;
        case eCalcKeyPower: Operator(BinaryOp::kPower); break;
        case eCalcKeyRoot: Operator(BinaryOp::kRoot); break;
        case eCalcKeyOpenParen: OpenParen(); break;
        case eCalcKeyCloseParen: CloseParen(); break;
        case eCalcKeyEquals:
            lastWasEquals = wasEquals;
            Equals();
            lastWasEquals = !error;
            break;
        case eCalcKeyPercent: Percent(); break;
        case eCalcKeyMemoryStore: if (Finish()) memory = x; break;
        case eCalcKeyMemoryRecall: Show(memory); break;
        case eCalcKeyMemoryAdd: MemoryAdd(); break;
        case eCalcKeyMemoryClear: memory = 0; break;
        case eCalcKeySquare: Unary(kiv_calc::Square); break;
        case eCalcKeySqrt: Unary(kiv_calc::SquareRoot); break;
        case eCalcKeyReciprocal: Unary(kiv_calc::Reciprocal); break;
        case eCalcKeyFactorial: Unary(kiv_calc::Factorial); break;
        case eCalcKeyLog: Unary(kiv_calc::Log10); break;
        case eCalcKeyLn: Unary(kiv_calc::NaturalLog); break;
        case eCalcKeyTenPower: Unary(kiv_calc::TenPower); break;
        case eCalcKeyExp: Unary(kiv_calc::ExpE); break;
        case eCalcKeyPi: Show(kiv_calc::Pi()); break;
        case eCalcKeyLastResult: RecallLast(); break;
        case eCalcKeySin: Trig(kiv_calc::Sin); break;
        case eCalcKeyCos: Trig(kiv_calc::Cos); break;
        case eCalcKeyTan: Trig(kiv_calc::Tan); break;
        case eCalcKeyAsin: Trig(kiv_calc::Asin); break;
        case eCalcKeyAcos: Trig(kiv_calc::Acos); break;
        case eCalcKeyAtan: Trig(kiv_calc::Atan); break;
        case eCalcKeyToDms: ToDms(); break;
        case eCalcKeyFromDms: FromDms(); break;
        default: break;  // not a key
    }
}

// The value as degrees, minutes and seconds through the angle text of the units, with
// as many decimals of a second as the width leaves (up to four), trailing zeros dropped.
// An angle whose whole degrees leave no room for minutes and seconds shows "#####".
CKivStringT CCalculator::Engine::DmsText() const {
    const double degrees = x.convert_to<double>();
    int wholeDigits = 1;
    for (double d = std::fabs(degrees); d >= 10 && wholeDigits < 400; d /= 10) ++wholeDigits;
    const int decimals = std::min(kDmsDecimals, digits - wholeDigits - 4);
    if (decimals < 0) return CKivStringT(L"#####");
    CKivStringT text;
    FromDispDegStr(text, degrees, kiv_df::eDMS, decimals);
    std::wstring s = text.str();
    const size_t point = s.find(L'.');
    if (point != std::wstring::npos && !s.empty() && s.back() == L'"') {
        size_t end = s.size() - 1;
        while (end > point + 1 && s[end - 1] == L'0') --end;
        if (end == point + 1) end = point;
        s.erase(end, s.size() - 1 - end);
    }
    return CKivStringT(std::move(s));
}

CCalculator::CCalculator() : engine_(new Engine) {
    try {
        engine_->RecallLast();
    } catch (...) {
        engine_->Clear();
    }
}

CCalculator::~CCalculator() = default;

void CCalculator::PressKey(ECalcKey key) {
    try {
        engine_->Press(key);
    } catch (...) {
        // Only allocation can throw here; the calculator then starts over in error.
        engine_->Fail(eCalcOverflow);
    }
}

CKivStringT CCalculator::GetDisplay() const {
    try {
        if (engine_->error) return CKivStringT(L"Error");
        if (engine_->entering) return CKivStringT(engine_->entry.Text());
        if (engine_->dmsView) return engine_->DmsText();
        return CKivStringT(kiv_calc::FormatDisplay(engine_->x, engine_->digits).c_str());
    } catch (...) {
        return CKivStringT(L"Error");
    }
}

bool CCalculator::IsError() const { return engine_->error != eCalcNoError; }
ECalcError CCalculator::GetError() const { return engine_->error; }
bool CCalculator::IsEntering() const { return engine_->entering; }
bool CCalculator::IsDmsView() const { return engine_->dmsView && !engine_->entering && !engine_->error; }
bool CCalculator::HasMemory() const { return engine_->memory != 0; }
int CCalculator::GetOpenParens() const { return static_cast<int>(engine_->frames.size()) - 1; }

bool CCalculator::HasPendingOperation() const {
    for (const auto& f : engine_->frames)
        if (!f.empty()) return true;
    return false;
}

ECalcAngleMode CCalculator::GetAngleMode() const { return engine_->mode; }

void CCalculator::SetAngleMode(ECalcAngleMode mode) {
    if (mode == eCalcDegrees || mode == eCalcGrads || mode == eCalcRadians) engine_->mode = mode;
}

int CCalculator::GetDisplayDigits() const { return engine_->digits; }

void CCalculator::SetDisplayDigits(int digits) {
    engine_->digits = std::clamp(digits, kCalcMinDigits, kCalcMaxDigits);
}

CKivStringT CCalculator::GetValueText() const {
    try {
        if (engine_->error) return CKivStringT();
        if (engine_->entering) {
            const Outcome typed = engine_->entry.Value();
            return typed.error ? CKivStringT() : CKivStringT(kiv_calc::FormatFull(typed.value).c_str());
        }
        return CKivStringT(kiv_calc::FormatFull(engine_->x).c_str());
    } catch (...) {
        return CKivStringT();
    }
}

double CCalculator::GetValue() const {
    if (engine_->error) return 0;
    if (engine_->entering) {
        const Outcome typed = engine_->entry.Value();
        return typed.error ? 0 : typed.value.convert_to<double>();
    }
    return engine_->x.convert_to<double>();
}

bool CCalculator::SetValueText(const wchar_t* text) {
    std::vector<ECalcKey> keys;
    if (!text || !CalcLiteralToKeys(text, keys)) return false;
    // The literal is typed as a new number: whatever was being typed goes.
    PressKey(eCalcKeyClearEntry);
    for (ECalcKey k : keys) PressKey(k);
    return true;
}

ECalcAngleMode CalcAngleModeFromUnits(kiv_df::ANGLES units) {
    switch (units) {
        case kiv_df::eGrads: return eCalcGrads;
        case kiv_df::eRadians: return eCalcRadians;
        default: return eCalcDegrees;
    }
}

bool CalcKeyFromChar(wchar_t ch, ECalcKey& key) {
    if (ch >= L'0' && ch <= L'9') {
        key = static_cast<ECalcKey>(eCalcKey0 + (ch - L'0'));
        return true;
    }
    static const std::pair<wchar_t, ECalcKey> table[] = {
        {L'.', eCalcKeyPoint}, {L',', eCalcKeyPoint}, {L'+', eCalcKeyAdd}, {L'-', eCalcKeySubtract},
        {L'*', eCalcKeyMultiply}, {L'/', eCalcKeyDivide}, {L'(', eCalcKeyOpenParen}, {L')', eCalcKeyCloseParen},
        {L'=', eCalcKeyEquals}, {L'\r', eCalcKeyEquals}, {L'\n', eCalcKeyEquals}, {L'\b', eCalcKeyBackspace},
        {L'%', eCalcKeyPercent}, {L'^', eCalcKeyPower}};
    for (const auto& [c, k] : table)
        if (c == ch) {
            key = k;
            return true;
        }
    return false;
}
