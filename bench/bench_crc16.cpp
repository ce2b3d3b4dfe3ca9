// CRC-16 over 1 MiB: the library (carry-less-multiply folding where the processor has
// it) and the portable slicing path, each against the plain byte-table loop over the
// same table, in one run.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "utils/settings/CRC16.h"
#include "utils/settings/CRC16Paths.h"

namespace {

std::vector<unsigned char> MakeMiB() {
    std::vector<unsigned char> bytes(1 << 20);
    std::mt19937 rng(1);
    for (auto& b : bytes) b = static_cast<unsigned char>(rng());
    return bytes;
}

void BM_Crc16Library(benchmark::State& state) {
    const auto bytes = MakeMiB();
    CCRC16 crc;
    for (auto _ : state) benchmark::DoNotOptimize(crc.ComputeCRC16(0xFFFF, bytes.data(), static_cast<int>(bytes.size())));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes.size()));
}

void BM_Crc16PortableSlicing(benchmark::State& state) {
    const auto bytes = MakeMiB();
    for (auto _ : state) benchmark::DoNotOptimize(kiv_crc_detail::SlicedCrc16(0xFFFF, bytes.data(), bytes.size()));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes.size()));
}

void BM_Crc16ByteTableBaseline(benchmark::State& state) {
    const auto bytes = MakeMiB();
    CCRC16 crc;
    const unsigned short* table = crc.CRC16Init();
    for (auto _ : state) {
        unsigned short value = 0xFFFF;
        for (unsigned char b : bytes) value = static_cast<unsigned short>(table[(b ^ (value >> 8)) & 0xFF] ^ (value << 8));
        benchmark::DoNotOptimize(value);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes.size()));
}

}  // namespace

BENCHMARK(BM_Crc16Library);
BENCHMARK(BM_Crc16PortableSlicing);
BENCHMARK(BM_Crc16ByteTableBaseline);
