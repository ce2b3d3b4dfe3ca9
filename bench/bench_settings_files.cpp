// The INI reader and the XML tokenizer against the work no reader can avoid, on the
// same bytes in one run: decoding the text and finding its line ends (INI), finding
// every '<' (XML). The ratio is the price of parsing.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <string>

#include "platform/host/TextCodec.h"
#include "platform/kivutils/IniFile.h"
#include "platform/kivutils/XmlParser.h"

namespace {

// Both sides build and drop megabytes of text per run. Left alone, glibc gives the top of
// the heap back to the system after one run and faults it in again during the next, on
// whichever side happens to free last; serving everything from the heap throughout
// keeps page faults out of both sides.
const int kStableHeap = [] {
    mallopt(M_MMAP_THRESHOLD, 64 << 20);
    mallopt(M_TRIM_THRESHOLD, 128 << 20);
    return 0;
}();

constexpr int kRecords = 10000;

const std::string& IniBytes() {
    static const std::string bytes = [] {
        std::wstring text;
        for (int s = 0; s < kRecords / 10; ++s) {
            text += L"[CHANNEL" + std::to_wstring(s) + L"]\r\n";
            for (int k = 0; k < 10; ++k)
                text += L"DataBlock" + std::to_wstring(k) + L"=0A1B2C3D4E5F" + std::to_wstring(s * k) + L"\r\n";
        }
        return "\xFF\xFE" + kiv_text::ToUtf16Le(text);
    }();
    return bytes;
}

const std::wstring& XmlText() {
    static const std::wstring text = [] {
        using B = CXmlParserBase;
        std::wstring t = L"<?xml version=\"1.0\"?>\r\n<kiv_config>\r\n";
        for (int g = 0; g < kRecords / 10; ++g) {
            t += (B::OpenTag(L"group", B::TagTypeFlag(2)) + B::FormAttrib(L"name", L"Stake", false) + L">\r\n").str();
            for (int v = 0; v < 10; ++v)
                t += (B::OpenTag(L"value", B::TagTypeFlag(2)) + B::FormAttrib(L"name", L"Tolerance", false) +
                      B::FormAttrib(L"type", L"dbl", false) + L">0.050000" + B::CloseTag(L"value", B::TagTypeFlag(3)))
                         .str();
            t += B::CloseTag(L"group", 2).str();
        }
        return t + B::CloseTag(L"kiv_config", 2).str();
    }();
    return text;
}

void IniParse(benchmark::State& state) {
    for (auto _ : state) {
        kiv_settings::CThreeTupleStore store;
        kiv_settings::ETextEncoding encoding;
        kiv_settings::parseSettingsIni(IniBytes(), store, encoding);
        benchmark::DoNotOptimize(store);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(IniBytes().size()));
}
BENCHMARK(IniParse);

void IniBaselineDecodeAndSplit(benchmark::State& state) {
    for (auto _ : state) {
        const std::wstring text = kiv_text::DecodeText(IniBytes());
        size_t lines = 0;
        for (size_t at = text.find(L'\n'); at != std::wstring::npos; at = text.find(L'\n', at + 1)) ++lines;
        benchmark::DoNotOptimize(lines);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(IniBytes().size()));
}
BENCHMARK(IniBaselineDecodeAndSplit);

void XmlTokenize(benchmark::State& state) {
    for (auto _ : state) {
        CXmlParser parser(XmlText());
        CKivStringT tag, attributes, content;
        size_t tokens = 0;
        while (parser.ReadToken(tag, attributes, content)) ++tokens;
        benchmark::DoNotOptimize(tokens);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(XmlText().size() * sizeof(wchar_t)));
}
BENCHMARK(XmlTokenize);

void XmlBaselineFindTags(benchmark::State& state) {
    for (auto _ : state) {
        const std::wstring copy = XmlText();  // the parser owns its text too
        size_t tags = 0;
        for (size_t at = copy.find(L'<'); at != std::wstring::npos; at = copy.find(L'<', at + 1)) ++tags;
        benchmark::DoNotOptimize(tags);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(XmlText().size() * sizeof(wchar_t)));
}
BENCHMARK(XmlBaselineFindTags);

}  // namespace
