// Value text against the C library on the same values in one run: FromMetersStrEx
// against snprintf("%.3f"), StringToLinearValEx against strtod.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "platform/kivutils/KivFormats.h"
#include "utils/units/UnitConvertEx.h"

namespace {

const std::vector<double>& Values() {
    static const std::vector<double> values = [] {
        std::mt19937_64 rng(42);
        std::uniform_real_distribution<double> d(-5000.0, 5000.0);
        std::vector<double> v(4096);
        for (auto& x : v) x = d(rng);
        return v;
    }();
    return values;
}

const std::vector<std::string>& Texts() {
    static const std::vector<std::string> texts = [] {
        std::vector<std::string> t;
        char buffer[64];
        for (double v : Values()) {
            std::snprintf(buffer, sizeof buffer, "%.3f", v);
            t.emplace_back(buffer);
        }
        return t;
    }();
    return texts;
}

const std::vector<CKivStringT>& WideTexts() {
    static const std::vector<CKivStringT> texts = [] {
        std::vector<CKivStringT> t;
        for (const auto& s : Texts()) t.emplace_back(s.c_str());
        return t;
    }();
    return texts;
}

void BM_FromMetersStrEx(benchmark::State& state) {
    const auto& values = Values();
    size_t i = 0;
    for (auto _ : state) {
        kiv_df::UNITS units = kiv_df::eMeters;
        CKivStringT text = FromMetersStrEx(values[i++ & 4095], eDecDigits3, units, false);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_FromMetersStrEx);

void BM_FromMetersStrEx_USFeetAdaptive(benchmark::State& state) {
    const auto& values = Values();
    size_t i = 0;
    for (auto _ : state) {
        kiv_df::UNITS units = kiv_df::eUSFeet;
        CKivStringT text = FromMetersStrEx(values[i++ & 4095], eDecDigits3, units, true);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_FromMetersStrEx_USFeetAdaptive);

void BM_Baseline_snprintf(benchmark::State& state) {
    const auto& values = Values();
    size_t i = 0;
    char buffer[64];
    for (auto _ : state) {
        std::snprintf(buffer, sizeof buffer, "%.3f", values[i++ & 4095]);
        benchmark::DoNotOptimize(buffer);
    }
}
BENCHMARK(BM_Baseline_snprintf);

void BM_StringToLinearValEx(benchmark::State& state) {
    const auto& texts = WideTexts();
    size_t i = 0;
    for (auto _ : state) {
        double v;
        bool ok = StringToLinearValEx(texts[i++ & 4095], v, kiv_df::eMeters);
        benchmark::DoNotOptimize(ok);
        benchmark::DoNotOptimize(v);
    }
}
BENCHMARK(BM_StringToLinearValEx);

void BM_Baseline_strtod(benchmark::State& state) {
    const auto& texts = Texts();
    size_t i = 0;
    for (auto _ : state) {
        double v = std::strtod(texts[i++ & 4095].c_str(), nullptr);
        benchmark::DoNotOptimize(v);
    }
}
BENCHMARK(BM_Baseline_strtod);

}  // namespace
