// Key sequences and expression text from outside: whatever is pressed or typed, the
// calculator neither crashes nor throws, and always shows a defined, bounded display.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "platform/host/TextCodec.h"
#include "utils/calculator/CalcExpression.h"
#include "utils/calculator/Calculator.h"

namespace {

// The display is "Error", a number, typed text or a DMS view: never empty, never longer
// than a typed number with its exponent and marks, never a NaN or an infinity.
void CheckDisplay(const CCalculator& calc) {
    const CKivStringT shown = calc.GetDisplay();
    if (shown.IsEmpty() || shown.GetLength() > 160) std::abort();
    if (shown.Find(L"nan") >= 0 || shown.Find(L"inf") >= 0) std::abort();
    if (calc.IsError() != (shown == CKivStringT(L"Error"))) std::abort();
    if (calc.GetOpenParens() < 0 || calc.GetOpenParens() > kCalcMaxParens) std::abort();
    if (!calc.IsError() && calc.GetValueText().IsEmpty() && !calc.IsEntering()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // Every byte is one key (values that name no key included), the first sets the width.
    CCalculator calc;
    if (size > 0) calc.SetDisplayDigits(data[0] % 40);
    for (size_t i = 1; i < size; ++i) {
        calc.PressKey(static_cast<ECalcKey>(data[i] % 96));
        CheckDisplay(calc);
    }

    // The same bytes as expression text: refused with a column inside the text, or keys.
    const std::wstring text = kiv_text::FromUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
    std::vector<ECalcKey> keys;
    TCalcExpressionError error;
    if (CalcExpressionToKeys(text.c_str(), keys, error)) {
        calc.PressKey(eCalcKeyClear);
        for (ECalcKey k : keys) calc.PressKey(k);
        CheckDisplay(calc);
    } else if (error.column < 1 || error.column > static_cast<int>(text.size()) + 1 || error.reason.IsEmpty()) {
        std::abort();
    }
    calc.SetValueText(text.c_str());
    CheckDisplay(calc);
    return 0;
}
