// Vector images at full size, each against its baseline in the same run:
// - loading a 100 MB image in place against a memcpy of the same bytes, both cold: every
//   byte either side touches is flushed from every cache level before each pass (the
//   host may report a last-level cache larger than the image, so its size alone would
//   not keep the passes cold);
// - the quadtree build over 1,000,000 lines against a packed R-tree (bulk-loaded
//   boost::geometry::index::rtree) over the same line boxes, with the peak memory each
//   index adds per line while it is built.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

#include <boost/geometry.hpp>
#include <boost/geometry/index/rtree.hpp>

#include "utils/vector/Quadtree.h"
#include "utils/vector/VectorImageProducer.h"

// Every heap block of the process passes through here, so that the index's peak can be
// counted whoever allocates (the standard containers, the shared heap, boost). glibc's
// own entry points do the work.
extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void __libc_free(void*);
void* __libc_memalign(size_t, size_t);
}

namespace {
std::atomic<long long> liveBytes{0};
std::atomic<long long> peakBytes{0};

void noteAdded(void* block) {
    if (block == nullptr) return;
    const long long now = liveBytes.fetch_add(static_cast<long long>(malloc_usable_size(block))) +
                          static_cast<long long>(malloc_usable_size(block));
    long long peak = peakBytes.load(std::memory_order_relaxed);
    while (now > peak && !peakBytes.compare_exchange_weak(peak, now)) {
    }
}
void noteRemoved(void* block) {
    if (block != nullptr) liveBytes.fetch_sub(static_cast<long long>(malloc_usable_size(block)));
}
}  // namespace

extern "C" {
void* malloc(size_t bytes) {
    void* block = __libc_malloc(bytes);
    noteAdded(block);
    return block;
}
void* calloc(size_t count, size_t bytes) {
    void* block = __libc_calloc(count, bytes);
    noteAdded(block);
    return block;
}
void* realloc(void* old, size_t bytes) {
    noteRemoved(old);
    void* block = __libc_realloc(old, bytes);
    noteAdded(block != nullptr ? block : (bytes != 0 ? old : nullptr));
    return block;
}
void free(void* block) {
    noteRemoved(block);
    __libc_free(block);
}
void* memalign(size_t alignment, size_t bytes) {
    void* block = __libc_memalign(alignment, bytes);
    noteAdded(block);
    return block;
}
void* aligned_alloc(size_t alignment, size_t bytes) { return memalign(alignment, bytes); }
int posix_memalign(void** result, size_t alignment, size_t bytes) {
    void* block = memalign(alignment, bytes);
    if (block == nullptr) return 12;  // ENOMEM
    *result = block;
    return 0;
}
}

namespace {

namespace bg = boost::geometry;
namespace bgi = boost::geometry::index;
using Point2 = bg::model::point<double, 2, bg::cs::cartesian>;
using Box2 = bg::model::box<Point2>;
using BoxValue = std::pair<Box2, std::uint32_t>;

constexpr int kLines = 1000000;

// An image of short lines (and optionally points) on a square site, deterministic. Each
// line is a polyline of its own, so a file holds the line record, the polyline, its two
// elements and five fixups per line (100 bytes), and 32 bytes per point.
std::shared_ptr<VectorBlob> makeImage(int lineCount, int pointCount) {
    VectorImageProducer producer;
    producer.addPointStyle(RGB(0, 0, 0));
    const int pen = producer.addLineStyle(RGB(0, 0, 0));
    std::uint64_t state = 12345;
    auto next = [&state] {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<double>(state >> 11) / static_cast<double>(1ull << 53) * 10000.0;
    };
    for (int i = 0; i < lineCount; ++i) {
        const double x = next(), y = next();
        producer.addLine({x, y, 0.0}, {x + next() / 200, y + next() / 200, 0.0}, pen);
    }
    for (int i = 0; i < pointCount; ++i) producer.addPoint({next(), next(), 0.0}, 0);
    return producer.build();
}

const std::shared_ptr<VectorBlob>& lineImage() {
    static const std::shared_ptr<VectorBlob> blob = makeImage(kLines, 0);
    return blob;
}

// The file bytes of a 100 MB image (1,000,000 lines and 375,000 points), written once.
const std::string& imageFile() {
    static const std::string bytes = [] {
        auto blob = makeImage(kLines, 375000);
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

// Writes back and drops every cache line of [data, data + bytes) from every level.
void flushFromCaches(const void* data, std::size_t bytes) {
    const auto* p = static_cast<const char*>(data);
    for (std::size_t at = 0; at < bytes; at += 64) {
#if defined(__x86_64__) || defined(__i386__)
        _mm_clflush(p + at);
#elif defined(__aarch64__)
        asm volatile("dc civac, %0" ::"r"(p + at) : "memory");
#else
        (void)p;
#endif
    }
#if defined(__x86_64__) || defined(__i386__)
    _mm_mfence();
#endif
}

void BM_DeserializeInPlace100MB(benchmark::State& state) {
    const std::string& file = imageFile();
    std::shared_ptr<unsigned char[]> image(new unsigned char[file.size()]);
    std::memcpy(image.get(), file.data(), file.size());
    for (auto _ : state) {
        state.PauseTiming();
        flushFromCaches(image.get(), file.size());
        state.ResumeTiming();
        VectorBlob blob;
        const bool ok = blob.deserialize(image, static_cast<int>(file.size()));
        benchmark::DoNotOptimize(ok);
        if (!ok) state.SkipWithError("the image did not load");
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * file.size()));
    state.counters["MB"] = static_cast<double>(file.size()) / 1e6;
}
BENCHMARK(BM_DeserializeInPlace100MB)->Unit(benchmark::kMillisecond);

void BM_Baseline_Memcpy100MB(benchmark::State& state) {
    const std::string& file = imageFile();
    std::vector<unsigned char> target(file.size());
    for (auto _ : state) {
        state.PauseTiming();
        flushFromCaches(file.data(), file.size());
        flushFromCaches(target.data(), target.size());
        state.ResumeTiming();
        std::memcpy(target.data(), file.data(), file.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * file.size()));
    state.counters["MB"] = static_cast<double>(file.size()) / 1e6;
}
BENCHMARK(BM_Baseline_Memcpy100MB)->Unit(benchmark::kMillisecond);

// Peak bytes a build added on top of what was live before it, per line.
struct PeakMeter {
    long long before = liveBytes.load();
    PeakMeter() { peakBytes.store(before); }
    double perLine() const { return static_cast<double>(peakBytes.load() - before) / kLines; }
};

void BM_QuadtreeBuild1MLines(benchmark::State& state) {
    const VectorBlob& blob = *lineImage();
    if (blob.getLineCount() != kLines) state.SkipWithError("wrong line count");
    double peakPerLine = 0;
    for (auto _ : state) {
        PeakMeter meter;
        auto tree = buildQuadtree(const_cast<VectorBlob&>(blob));
        benchmark::DoNotOptimize(tree.get());
        peakPerLine = meter.perLine();
    }
    state.counters["lines"] = kLines;
    state.counters["peak_B_per_line"] = peakPerLine;
}
BENCHMARK(BM_QuadtreeBuild1MLines)->Unit(benchmark::kMillisecond);

void BM_Baseline_PackedRTree1MLines(benchmark::State& state) {
    const VectorBlob& blob = *lineImage();
    const VectorFormat::LinesList* lines = blob.getLinesList();
    std::vector<BoxValue> boxes;
    boxes.reserve(kLines);
    for (std::uint32_t i = 0; i < blob.getLineCount(); ++i) {
        const TCoord3d s = lines->getStart(i), e = lines->getEnd(i);
        boxes.emplace_back(Box2(Point2(std::min(s.x, e.x), std::min(s.y, e.y)),
                                Point2(std::max(s.x, e.x), std::max(s.y, e.y))),
                           i);
    }
    double peakPerLine = 0;
    for (auto _ : state) {
        PeakMeter meter;
        // The range constructor bulk-loads the tree (packing).
        bgi::rtree<BoxValue, bgi::quadratic<16>> tree(boxes.begin(), boxes.end());
        benchmark::DoNotOptimize(tree.size());
        peakPerLine = meter.perLine();
    }
    state.counters["lines"] = kLines;
    state.counters["peak_B_per_line"] = peakPerLine;
}
BENCHMARK(BM_Baseline_PackedRTree1MLines)->Unit(benchmark::kMillisecond);

}  // namespace
