// kivutil calc: expressions evaluated by the handheld's calculator engine, one
// expression from the command line or one per line of standard input (a small REPL
// that also works in pipes). Bad text gives one line saying where and why.
#include <unistd.h>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "platform/host/TextCodec.h"
#include "tools/kivutil/Command.h"
#include "tools/kivutil/DialogView.h"
#include "utils/calculator/CalcExpression.h"
#include "utils/calculator/Calculator.h"

namespace {

struct CalcOptions {
    std::vector<std::string> words;  // the expression, possibly unquoted: kivutil calc 2 + 3
    std::string angle = "deg";
    int digits = kCalcDefaultDigits;
    bool given = false;
    bool dialog = false;
    bool scientific = false;
    std::string output = "calc.png";
};

// Lines beyond this are refused rather than held.
constexpr size_t kMaxLine = 65536;

const char* ErrorText(ECalcError e) {
    switch (e) {
        case eCalcDivisionByZero: return "division by zero";
        case eCalcDomain: return "outside the function's domain";
        case eCalcOverflow: return "result beyond 1E100";
        default: return "error";
    }
}

enum class Outcome { kOk, kBad, kFailed };

// Evaluates one expression; `where` names it in messages ("" or "line 3, ").
Outcome Evaluate(CCalculator& calc, const std::string& text, const std::string& where) {
    const std::wstring wide = kiv_text::FromUtf8(text);
    std::vector<ECalcKey> keys;
    TCalcExpressionError error;
    if (!CalcExpressionToKeys(wide.c_str(), keys, error)) {
        kivutil::BadInput(where + "column " + std::to_string(error.column) + " of \"" + text +
                          "\": " + kiv_text::ToUtf8(error.reason.view()));
        return Outcome::kBad;
    }
    calc.PressKey(eCalcKeyClear);
    for (ECalcKey k : keys) calc.PressKey(k);
    std::cout << kiv_text::ToUtf8(calc.GetDisplay().view()) << std::endl;
    if (calc.IsError()) {
        std::cerr << "kivutil: " << where << "\"" << text << "\": " << ErrorText(calc.GetError()) << "\n";
        return Outcome::kFailed;
    }
    return Outcome::kOk;
}

// Reads one line of at most kMaxLine characters; false at the end of input.
bool ReadLine(std::istream& in, std::string& line, bool& tooLong) {
    line.clear();
    tooLong = false;
    int c;
    bool any = false;
    while ((c = in.get()) != EOF) {
        any = true;
        if (c == '\n') break;
        if (line.size() < kMaxLine) line += static_cast<char>(c);
        else tooLong = true;
    }
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return any;
}

int RunCalc(const CalcOptions& o) {
    ECalcAngleMode mode;
    if (o.angle == "deg") mode = eCalcDegrees;
    else if (o.angle == "grad") mode = eCalcGrads;
    else if (o.angle == "rad") mode = eCalcRadians;
    else return kivutil::BadInput("unknown angle mode \"" + o.angle + "\"; accepted: deg, grad, rad");
    if (o.digits < kCalcMinDigits || o.digits > kCalcMaxDigits)
        return kivutil::BadInput("--digits must be " + std::to_string(kCalcMinDigits) + " to " +
                                 std::to_string(kCalcMaxDigits));
    if (o.dialog) {
        std::string expression;
        for (const auto& w : o.words) expression += (expression.empty() ? "" : " ") + w;
        return kivutil::ShowCalculatorDialog(expression, mode, o.digits, o.scientific, o.output);
    }
    CCalculator calc;
    calc.SetAngleMode(mode);
    calc.SetDisplayDigits(o.digits);
    if (o.given) {
        std::string expression;
        for (const auto& w : o.words) expression += (expression.empty() ? "" : " ") + w;
        switch (Evaluate(calc, expression, "")) {
            case Outcome::kOk: return kivutil::kExitOk;
            case Outcome::kBad: return kivutil::kExitBadInput;
            case Outcome::kFailed: return kivutil::kExitFailed;
        }
    }
    const bool prompt = isatty(STDIN_FILENO);
    bool bad = false, failed = false;
    std::string line;
    bool tooLong = false;
    for (int number = 1;; ++number) {
        if (prompt) std::cerr << "calc> " << std::flush;
        if (!ReadLine(std::cin, line, tooLong)) break;
        const std::string where = "line " + std::to_string(number) + ", ";
        if (tooLong) {
            bad = true;
            kivutil::BadInput(where + "longer than " + std::to_string(kMaxLine) + " characters; not evaluated");
            continue;
        }
        if (line.find_first_not_of(" \t") == std::string::npos) continue;
        const Outcome r = Evaluate(calc, line, where);
        bad = bad || r == Outcome::kBad;
        failed = failed || r == Outcome::kFailed;
    }
    return bad ? kivutil::kExitBadInput : failed ? kivutil::kExitFailed : kivutil::kExitOk;
}

kivutil::Registration calc(15, [](CLI::App& app, std::function<int()>& run) {
    auto o = std::make_shared<CalcOptions>();
    auto* sub = app.add_subcommand("calc", "Evaluate expressions with the calculator (without one: lines from stdin)");
    sub->add_option("expression", o->words,
                    "e.g. \"2+3*4\", \"sin 30\", \"12°30'36\\\" + 0:29:24\", \"todms 12.51\" (grammar: docs/calculator.md)");
    sub->add_option("--angle", o->angle, "angle mode: deg, grad, rad");
    sub->add_option("--digits", o->digits, "display width in significant digits, 1 to 34 (default 12)");
    sub->add_flag("--dialog", o->dialog, "show the calculator dialog after the expression's keys and save it as a picture");
    sub->add_flag("--sci", o->scientific, "with --dialog: the scientific calculator");
    sub->add_option("-o,--output", o->output, "with --dialog: the picture file (default calc.png)");
    sub->callback([&run, o, sub] {
        o->given = sub->count("expression") > 0;
        run = [o] { return RunCalc(*o); };
    });
});

}  // namespace
