// The handheld's scientific calculator: an engine driven by keys, as the calculator
// dialogs drive it from their buttons and the controller's hardware keys. It computes in
// decimal (0.1 + 0.2 is 0.3) with 40 significant digits inside, shows values rounded to
// the display's width, and takes angles in degrees, grads or radians and as
// degrees-minutes-seconds. No key sequence throws or leaves the display undefined.
#pragma once

#include <memory>

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivString.h"
#include "utils/units/UnitTypes.h"

// The calculator's keys. The values are fixed so that a dialog's button table or a
// stored key macro keeps its meaning; a value that names no key is ignored by PressKey.
enum ECalcKey : int {
    eCalcKey0 = 0, eCalcKey1, eCalcKey2, eCalcKey3, eCalcKey4,
    eCalcKey5, eCalcKey6, eCalcKey7, eCalcKey8, eCalcKey9,
    eCalcKeyPoint = 10,     // decimal point
    eCalcKeySign = 11,      // +/-: of the number being typed, of its exponent, or of the value shown
    eCalcKeyExponent = 12,  // EE: the typed number continues with a power-of-ten exponent
    eCalcKeyDms = 13,       // °'": ends the degrees, then the minutes, of a typed angle (12 °'" 30 °'" 36)

    eCalcKeyAdd = 20, eCalcKeySubtract, eCalcKeyMultiply, eCalcKeyDivide,
    eCalcKeyPower = 24,     // y^x
    eCalcKeyRoot = 25,      // x-th root of y: y root x
    eCalcKeyOpenParen = 26, eCalcKeyCloseParen = 27,
    eCalcKeyEquals = 28,    // repeated, repeats the last operation with its last operand
    eCalcKeyPercent = 29,   // a + b% adds b percent of a; a × b% multiplies by b/100

    eCalcKeyClear = 30,       // C: everything but the memory, the angle mode and the width
    eCalcKeyClearEntry = 31,  // CE: the number being typed (or shown); pending operations stay
    eCalcKeyBackspace = 32,   // the last typed character

    eCalcKeyMemoryStore = 40, eCalcKeyMemoryRecall, eCalcKeyMemoryAdd, eCalcKeyMemoryClear,

    eCalcKeySquare = 50, eCalcKeySqrt, eCalcKeyReciprocal, eCalcKeyFactorial,
    eCalcKeyLog = 54, eCalcKeyLn, eCalcKeyTenPower, eCalcKeyExp,
    eCalcKeyPi = 58,
    eCalcKeyLastResult = 59,  // the last result kept in the global settings

    eCalcKeySin = 60, eCalcKeyCos, eCalcKeyTan, eCalcKeyAsin, eCalcKeyAcos, eCalcKeyAtan,

    eCalcKeyToDms = 70,    // ->DMS: shows the value (decimal degrees) as degrees, minutes, seconds; again: back
    eCalcKeyFromDms = 71,  // DMS->: a DMS view back to decimal; a plain value read as packed DDD.MMSSss

    eCalcKeyDegrees = 80, eCalcKeyGrads, eCalcKeyRadians,
};

enum ECalcAngleMode : int { eCalcDegrees = 0, eCalcGrads = 1, eCalcRadians = 2 };

// Why the display shows "Error". Only C or CE leaves the error.
enum ECalcError : int {
    eCalcNoError = 0,
    eCalcDivisionByZero = 1,  // x / 0, 1/x of 0, 0 to a negative power
    eCalcDomain = 2,          // √ or log of what has none, tan 90°, asin 2, n! of 2.5, 61' in DMS->
    eCalcOverflow = 3,        // a magnitude of 1E100 or more; smaller than 1E-99 becomes 0
};

// The display's width in significant digits: default, and the range SetDisplayDigits keeps to.
constexpr int kCalcDefaultDigits = 12;
constexpr int kCalcMinDigits = 1;
constexpr int kCalcMaxDigits = 34;
// How many significant digits a typed number may have (digits beyond are ignored).
constexpr int kCalcMaxEntryDigits = 34;
// How many parentheses may be open at once; a further "(" is ignored.
constexpr int kCalcMaxParens = 24;

class CCalculator : public SharedHeapObject {
public:
    // Starts showing the last result kept in the global settings (GetLastCalcValue), or 0.
    CCalculator();
    ~CCalculator();
    CCalculator(const CCalculator&) = delete;
    CCalculator& operator=(const CCalculator&) = delete;

    // Acts on one key as the calculator's button of that key does. Never throws.
    void PressKey(ECalcKey key);

    // What the display shows: the number being typed as typed ("12.50", "1.5E-3",
    // "12°30'36"), "Error", a DMS view (12°30'36"), or the value rounded to the width:
    // fixed notation without trailing zeros while it fits, else scientific ("1.5E-7").
    CKivStringT GetDisplay() const;

    bool IsError() const;
    ECalcError GetError() const;
    bool IsEntering() const;       // a number is being typed (backspace works)
    bool IsDmsView() const;        // the display shows the value as degrees, minutes, seconds
    bool HasMemory() const;        // the memory holds a value other than 0
    int GetOpenParens() const;     // parentheses opened and not yet closed
    bool HasPendingOperation() const;

    ECalcAngleMode GetAngleMode() const;
    void SetAngleMode(ECalcAngleMode mode);  // what the angle-mode keys do
    int GetDisplayDigits() const;
    void SetDisplayDigits(int digits);       // kept to kCalcMinDigits..kCalcMaxDigits

    // The value shown (or the number being typed), to 34 significant digits in text that
    // reads back exactly ("13", "0.3333333333333333333333333333333333", "1.5E-7"); empty
    // while in error.
    CKivStringT GetValueText() const;
    // The same value as the nearest double (0 while in error).
    double GetValue() const;
    // Types a number or an angle as if keyed: "12.5", "-1.5E-3", "12°30'36"", "12 30 36".
    // False (and nothing typed) when the text is neither.
    bool SetValueText(const wchar_t* text);

private:
    struct Engine;
    std::unique_ptr<Engine> engine_;
};

// The calculator's angle mode for a job's angle unit: grads and radians as they are,
// every other unit (DMS, packed DMS, mils) in degrees.
ECalcAngleMode CalcAngleModeFromUnits(kiv_df::ANGLES units);

// The key that a typed character stands for on a keyboard: digits, '.' and ',', + - * /,
// ( ), = and Enter, Backspace, %, ^. False for any other character.
bool CalcKeyFromChar(wchar_t ch, ECalcKey& key);
