// Vector images: in-place loading of a 10 MB image against a memcpy of the same bytes,
// and the quadtree build over 100,000 features against sorting as many coordinates.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

#include "utils/vector/Quadtree.h"
#include "utils/vector/VectorImageProducer.h"

namespace {

// A producer's image of points, lines and arcs on a square site, deterministic.
std::shared_ptr<VectorBlob> makeImage(int points, int lines, int arcs) {
    VectorImageProducer producer;
    const int dot = producer.addPointStyle(RGB(0, 0, 0));
    const int pen = producer.addLineStyle(RGB(0, 0, 0));
    std::uint64_t state = 12345;
    auto next = [&state] {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<double>(state >> 11) / static_cast<double>(1ull << 53) * 10000.0;
    };
    for (int i = 0; i < points; ++i) producer.addPoint({next(), next(), 0.0}, dot);
    for (int i = 0; i < lines; ++i) {
        const double x = next(), y = next();
        producer.addLine({x, y, 0.0}, {x + next() / 200, y + next() / 200, 0.0}, pen);
    }
    for (int i = 0; i < arcs; ++i) {
        const double x = next(), y = next();
        producer.addArc({x + 5, y, 0}, {x, y, 0}, {x, y + 5, 0}, false, pen);
    }
    return producer.build();
}

// The file bytes of a ~10 MB image, written once.
const std::string& tenMegabyteFile() {
    static const std::string bytes = [] {
        auto blob = makeImage(170000, 50000, 2000);
        const std::string path = "/tmp/kiv_bench_vector_" + std::to_string(::getpid()) + ".vec";
        {
            std::wstring wide(path.begin(), path.end());
            CEntityWriter writer(wide.c_str());
            blob->serialize(writer);
        }
        std::ifstream in(path, std::ios::binary);
        std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        std::remove(path.c_str());
        return content;
    }();
    return bytes;
}

void BM_DeserializeInPlace(benchmark::State& state) {
    const std::string& file = tenMegabyteFile();
    std::shared_ptr<unsigned char[]> image(new unsigned char[file.size()]);
    std::memcpy(image.get(), file.data(), file.size());
    for (auto _ : state) {
        VectorBlob blob;
        const bool ok = blob.deserialize(image, static_cast<int>(file.size()));
        benchmark::DoNotOptimize(ok);
        if (!ok) state.SkipWithError("the image did not load");
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * file.size()));
    state.counters["MB"] = static_cast<double>(file.size()) / 1e6;
}
BENCHMARK(BM_DeserializeInPlace)->Unit(benchmark::kMillisecond);

void BM_Baseline_MemcpyOfTheImage(benchmark::State& state) {
    const std::string& file = tenMegabyteFile();
    std::vector<unsigned char> target(file.size());
    for (auto _ : state) {
        std::memcpy(target.data(), file.data(), file.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * file.size()));
}
BENCHMARK(BM_Baseline_MemcpyOfTheImage)->Unit(benchmark::kMillisecond);

void BM_QuadtreeBuild100k(benchmark::State& state) {
    auto blob = makeImage(70000, 28000, 2000);
    for (auto _ : state) {
        auto tree = buildQuadtree(*blob);
        benchmark::DoNotOptimize(tree.get());
    }
    state.counters["features"] = 100000;
}
BENCHMARK(BM_QuadtreeBuild100k)->Unit(benchmark::kMillisecond);

void BM_Baseline_Sort100kCoordinates(benchmark::State& state) {
    auto blob = makeImage(70000, 28000, 2000);
    std::vector<double> xs;
    for (std::uint32_t i = 0; i < blob->getPointCount(); ++i) xs.push_back(blob->getPointsList()->getPosition(i).x);
    for (std::uint32_t i = 0; i < blob->getLineCount(); ++i) xs.push_back(blob->getLinesList()->getStart(i).x);
    for (std::uint32_t i = 0; i < blob->getArcCount(); ++i) xs.push_back(blob->getArcsList()->getStart(i).x);
    for (auto _ : state) {
        std::vector<double> sorted = xs;
        std::sort(sorted.begin(), sorted.end());
        benchmark::DoNotOptimize(sorted.data());
    }
}
BENCHMARK(BM_Baseline_Sort100kCoordinates)->Unit(benchmark::kMillisecond);

}  // namespace
