// Appending 100,000 elements to a history document, against writing the same bytes with
// one write system call per element, in one run.
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/host/TextCodec.h"
#include "platform/kivutils/KivString.h"
#include "utils/settings/XMLWriter.h"

namespace {

constexpr int kElements = 100000;

std::string BenchFile(const char* name) {
    const auto dir = std::filesystem::temp_directory_path() / "kiv_bench_history";
    std::filesystem::create_directories(dir);
    return (dir / name).string();
}

void BM_HistoryAppend(benchmark::State& state) {
    const std::string file = BenchFile("history.xml");
    std::vector<CKivStringT> texts;
    for (int i = 0; i < kElements; ++i) texts.emplace_back(L"P" + std::to_wstring(i));
    for (auto _ : state) {
        std::filesystem::remove(file);
        CXMLWriter writer;
        bool created = false;
        if (!writer.Open(CKivStringT(file.c_str()), created)) state.SkipWithError("open failed");
        for (const CKivStringT& text : texts) writer.WriteElementString(L"Point", text);
        writer.WriteCheckSum();
        writer.WriteEndElement();
        writer.Close();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kElements);
}

void BM_OneWritePerElementBaseline(benchmark::State& state) {
    const std::string file = BenchFile("baseline.xml");
    std::vector<std::string> lines;
    for (int i = 0; i < kElements; ++i)
        lines.push_back(kiv_text::ToUtf16Le(L" <Point>P" + std::to_wstring(i) + L"</Point>\r\n"));
    for (auto _ : state) {
        std::filesystem::remove(file);  // as the history run starts from no file
        const int fd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (fd < 0) state.SkipWithError("open failed");
        for (const std::string& line : lines)
            if (::write(fd, line.data(), line.size()) != static_cast<ssize_t>(line.size())) state.SkipWithError("write failed");
        ::close(fd);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kElements);
}

}  // namespace

BENCHMARK(BM_HistoryAppend)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OneWritePerElementBaseline)->Unit(benchmark::kMillisecond);
