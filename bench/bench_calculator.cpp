// The calculator on a 50-operation expression (the four operations, parentheses,
// squares, square roots, sines and a cosine in degrees), 10,000 evaluations, against
// the same expression computed in double in the same run. Ours presses the keys on
// the engine as the dialog does; a second run also reads the expression text first,
// as kivutil calc does.
#include <benchmark/benchmark.h>

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "utils/calculator/CalcExpression.h"
#include "utils/calculator/Calculator.h"

namespace {

// Each block is ten operations: (a + b) * c - d / e + sqrt f * sin g - h²; four blocks
// joined by three additions, then seven more: + (p - q) * r / s + cos t - u.
const double kValues[] = {12.345, 6.789,  2.5,   3.75,   1.25,  16.5,  30.5,  1.5,     //
                          101.25, 7.125,  0.75,  9.5,    2.375, 2.25,  44.75, 3.125,   //
                          0.005,  1234.5, 1.001, 17.25,  4.5,   81.0,  123.5, 0.875,   //
                          75.5,   24.5,   3.0,   100.01, 8.0,   0.36,  271.0, 12.0,    //
                          1000.0, 999.75, 4.25,  0.5,    60.0,  2.0};

std::string Text(double v) {
    std::string s = std::to_string(v);
    s.erase(s.find_last_not_of('0') + 1);
    if (s.back() == '.') s.pop_back();
    return s;
}

std::wstring Expression() {
    std::string e;
    const double* v = kValues;
    for (int block = 0; block < 4; ++block, v += 8) {
        if (block) e += " + ";
        e += "(" + Text(v[0]) + " + " + Text(v[1]) + ") * " + Text(v[2]) + " - " + Text(v[3]) + " / " + Text(v[4]) +
             " + sqrt " + Text(v[5]) + " * sin " + Text(v[6]) + " - " + Text(v[7]) + "²";
    }
    e += " + (" + Text(v[0]) + " - " + Text(v[1]) + ") * " + Text(v[2]) + " / " + Text(v[3]) + " + cos " +
         Text(v[4]) + " - " + Text(v[5]);
    std::wstring wide;
    for (size_t i = 0; i < e.size(); ++i) {
        if (e.compare(i, 2, "²") == 0) {
            wide += L'\u00B2';
            ++i;
        } else {
            wide += static_cast<wchar_t>(e[i]);
        }
    }
    return wide;
}

std::vector<ECalcKey> Keys() {
    std::vector<ECalcKey> keys;
    TCalcExpressionError error;
    CalcExpressionToKeys(Expression().c_str(), keys, error);
    return keys;
}

int Operations(const std::vector<ECalcKey>& keys) {
    int n = 0;
    for (ECalcKey k : keys)
        if ((k >= eCalcKeyAdd && k <= eCalcKeyRoot) || (k >= eCalcKeySquare && k <= eCalcKeyAtan)) ++n;
    return n;
}

double Degrees(double d) { return d * std::numbers::pi / 180; }

double InDouble(const double* in) {
    double r = 0;
    const double* v = in;
    for (int block = 0; block < 4; ++block, v += 8)
        r += (v[0] + v[1]) * v[2] - v[3] / v[4] + std::sqrt(v[5]) * std::sin(Degrees(v[6])) - v[7] * v[7];
    return r + (v[0] - v[1]) * v[2] / v[3] + std::cos(Degrees(v[4])) - v[5];
}

void BM_Calculator_Keys(benchmark::State& state) {
    const std::vector<ECalcKey> keys = Keys();
    CCalculator calc;
    for (auto _ : state) {
        calc.PressKey(eCalcKeyClear);
        for (ECalcKey k : keys) calc.PressKey(k);
        CKivStringT shown = calc.GetDisplay();
        benchmark::DoNotOptimize(shown);
    }
    state.counters["operations"] = Operations(keys);
    const std::wstring value = calc.GetValueText().str();
    state.SetLabel(std::string(value.begin(), value.end()));
}
BENCHMARK(BM_Calculator_Keys)->Iterations(10000)->Unit(benchmark::kMicrosecond);

void BM_Calculator_Text(benchmark::State& state) {
    const std::wstring text = Expression();
    CCalculator calc;
    std::vector<ECalcKey> keys;
    for (auto _ : state) {
        TCalcExpressionError error;
        CalcExpressionToKeys(text.c_str(), keys, error);
        calc.PressKey(eCalcKeyClear);
        for (ECalcKey k : keys) calc.PressKey(k);
        CKivStringT shown = calc.GetDisplay();
        benchmark::DoNotOptimize(shown);
    }
}
BENCHMARK(BM_Calculator_Text)->Iterations(10000)->Unit(benchmark::kMicrosecond);

void BM_Baseline_Double(benchmark::State& state) {
    double in[std::size(kValues)];
    for (size_t i = 0; i < std::size(kValues); ++i) in[i] = kValues[i];
    double r = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(in);
        r = InDouble(in);
        benchmark::DoNotOptimize(r);
    }
    state.SetLabel(std::to_string(r));
}
BENCHMARK(BM_Baseline_Double)->Iterations(10000)->Unit(benchmark::kMicrosecond);

}  // namespace
