// Importing a GeoPackage of 1,000,000 two-vertex lines into a vector image, against
// ogr2ogr converting the same file to a GeoJSON sequence: both read every feature
// through OGR, so the ratio shows what building the image costs beside writing text.
// The source is made once per run (it takes a while) in a temporary folder.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "geodata/GeoImport.h"

namespace {

constexpr int kLines = 1000000;

const std::string& Source() {
    static const std::string path = [] {
        const auto folder = std::filesystem::temp_directory_path() / "kivgeo-bench";
        std::filesystem::create_directories(folder);
        const std::string gpkg = (folder / "lines.gpkg").string();
        if (!std::filesystem::exists(gpkg)) {
            const std::string csv = (folder / "lines.csv").string();
            std::ofstream out(csv);
            out << "id,WKT\n";
            std::mt19937 random(1);
            std::uniform_real_distribution<double> offset(0.0, 10000.0);
            char row[160];
            for (int i = 0; i < kLines; ++i) {
                const double x = 500000 + offset(random), y = 5800000 + offset(random);
                std::snprintf(row, sizeof row, "%d,\"LINESTRING (%.3f %.3f,%.3f %.3f)\"\n", i, x, y, x + 5, y + 3);
                out << row;
            }
            out.close();
            const std::string make = "ogr2ogr -f GPKG -a_srs EPSG:32633 -nlt LINESTRING '" + gpkg + "' '" + csv + "'";
            if (std::system(make.c_str()) != 0) return std::string();
            std::filesystem::remove(csv);
        }
        return gpkg;
    }();
    return path;
}

void BM_ImportGeoPackage(benchmark::State& state) {
    if (Source().empty()) return state.SkipWithError("ogr2ogr could not make the source");
    for (auto _ : state) {
        kiv_geo::TImportOptions options;
        options.source = Source();
        kiv_geo::TImportSummary summary;
        auto blob = kiv_geo::importGeodata(options, summary);
        if (!blob || blob->getLineCount() != kLines) return state.SkipWithError("the import lost lines");
        benchmark::DoNotOptimize(blob);
    }
    state.counters["lines"] = kLines;
}

void BM_Ogr2OgrToGeoJsonSeq(benchmark::State& state) {
    if (Source().empty()) return state.SkipWithError("ogr2ogr could not make the source");
    const std::string out = Source() + ".geojsonl";
    for (auto _ : state) {
        std::filesystem::remove(out);
        const std::string command = "ogr2ogr -f GeoJSONSeq '" + out + "' '" + Source() + "'";
        if (std::system(command.c_str()) != 0) return state.SkipWithError("ogr2ogr failed");
    }
    std::filesystem::remove(out);
    state.counters["lines"] = kLines;
}

BENCHMARK(BM_ImportGeoPackage)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();
BENCHMARK(BM_Ogr2OgrToGeoJsonSeq)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

}  // namespace
