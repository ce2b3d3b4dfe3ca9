// Loading a settings file of 10,000 values in 100 groups and reading every value by
// name, against pugixml only parsing the same file, in one run.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include <pugixml.hpp>

#include "platform/host/Host.h"
#include "platform/kivutils/KivString.h"
#include "platform/kivutils/XmlParser.h"
#include "utils/settings/XmlConfigStorage.h"

namespace {

// Both sides read a 600 KB file into a buffer on every run. Left alone, glibc serves such
// buffers by mmap at some times and from the heap at others (its threshold moves with
// what was freed before), so the page faults of a fresh mapping would land on whichever
// side runs first. Serving them from the heap throughout makes the two comparable.
const int kStableHeap = [] {
    mallopt(M_MMAP_THRESHOLD, 64 << 20);
    mallopt(M_TRIM_THRESHOLD, 128 << 20);
    return 0;
}();

constexpr int kGroups = 100;
constexpr int kValuesPerGroup = 100;

const std::string& SettingsFile() {
    static const std::string path = [] {
        const auto dir = std::filesystem::temp_directory_path() / "kiv_bench_settings";
        std::filesystem::create_directories(dir);
        const std::string file = (dir / "settings.xml").string();
        std::ofstream out(file, std::ios::binary);
        out << "<?xml version=\"1.0\"?>\r\n<kiv_config>\r\n";
        for (int g = 0; g < kGroups; ++g) {
            out << "<group name=\"Group" << g << "\">\r\n";
            for (int v = 0; v < kValuesPerGroup; ++v)
                out << "<value name=\"Value" << v << "\" type=\"int\">" << g * kValuesPerGroup + v << "</value>\r\n";
            out << "</group>\r\n";
        }
        out << "</kiv_config>\r\n";
        return file;
    }();
    return path;
}

void BM_LoadAndReadEveryValue(benchmark::State& state) {
    const CKivStringT path(SettingsFile().c_str());
    std::vector<CKivStringT> groupNames, valueNames;
    for (int g = 0; g < kGroups; ++g) groupNames.emplace_back(L"Group" + std::to_wstring(g));
    for (int v = 0; v < kValuesPerGroup; ++v) valueNames.emplace_back(L"Value" + std::to_wstring(v));
    for (auto _ : state) {
        CXmlConfigStorage storage(path);
        long long sum = 0;
        for (const CKivStringT& g : groupNames) {
            CConfigGroup& group = storage.GetGroup(g);
            for (const CKivStringT& v : valueNames) sum += group.GetIntegerValue(v, 0);
        }
        if (sum != 49995000LL) state.SkipWithError("wrong sum");
        benchmark::DoNotOptimize(sum);
    }
}

void BM_PugixmlParseOnlyBaseline(benchmark::State& state) {
    for (auto _ : state) {
        pugi::xml_document doc;
        const auto result = doc.load_file(SettingsFile().c_str());
        if (!result) state.SkipWithError("pugixml failed");
        benchmark::DoNotOptimize(doc);
    }
}

// The platform tokenizer alone over the same file: the floor under the loader.
void BM_PlatformTokenizerOnly(benchmark::State& state) {
    const CKivStringT path(SettingsFile().c_str());
    for (auto _ : state) {
        CXmlParser* parser = nullptr;
        if (CXmlParser::Initialize(path, parser) != 0) state.SkipWithError("parser failed");
        CKivStringT tag, attributes, content;
        int tokens = 0;
        while (parser->ReadToken(tag, attributes, content)) ++tokens;
        CXmlParser::Destroy(parser);
        benchmark::DoNotOptimize(tokens);
    }
}

}  // namespace

BENCHMARK(BM_PlatformTokenizerOnly)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadAndReadEveryValue)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PugixmlParseOnlyBaseline)->Unit(benchmark::kMillisecond);
