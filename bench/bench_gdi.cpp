// One million one-pixel line segments of a random picture into a 1920x1080 32-bit
// surface: our Polyline and MoveToEx/LineTo on a DIB section against Cairo stroking
// the same segments aliased and one pixel wide into the same kind of buffer.
#include <benchmark/benchmark.h>
#include <cairo.h>

#include <random>
#include <vector>

#include "platform/win32/Win32.h"

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr int kPolylines = 10000;
constexpr int kSegmentsEach = 100;  // 1,000,000 segments in all

// Random walks of short steps, as the lines of a dense map look; some leave the
// surface, so clipping is part of the work.
std::vector<std::vector<POINT>> MakePicture() {
    std::mt19937 random(2026);
    std::uniform_int_distribution<int> x(0, kWidth - 1), y(0, kHeight - 1), step(-12, 12);
    std::vector<std::vector<POINT>> lines(kPolylines);
    for (auto& line : lines) {
        POINT p{x(random), y(random)};
        line.push_back(p);
        for (int i = 0; i < kSegmentsEach; ++i) {
            p.x += step(random);
            p.y += step(random);
            line.push_back(p);
        }
    }
    return lines;
}

const std::vector<std::vector<POINT>>& Picture() {
    static const auto picture = MakePicture();
    return picture;
}

struct Surface {
    HDC dc = CreateCompatibleDC(nullptr);
    HBITMAP bitmap = nullptr;
    void* bits = nullptr;
    HGDIOBJ old = nullptr;
    Surface() {
        BITMAPINFO info{};
        info.bmiHeader = BITMAPINFOHEADER{sizeof(BITMAPINFOHEADER), kWidth, -kHeight, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        bitmap = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        old = SelectObject(dc, bitmap);
        SelectObject(dc, CreatePen(PS_SOLID, 1, RGB(20, 40, 200)));
    }
    ~Surface() {
        DeleteObject(SelectObject(dc, GetStockObject(BLACK_PEN)));
        SelectObject(dc, old);
        DeleteObject(bitmap);
        DeleteDC(dc);
    }
};

void Count(benchmark::State& state) {
    state.counters["segments/s"] = benchmark::Counter(static_cast<double>(state.iterations()) * kPolylines * kSegmentsEach,
                                                      benchmark::Counter::kIsRate);
}

void BM_OursPolyline(benchmark::State& state) {
    const auto& picture = Picture();
    Surface s;
    for (auto _ : state) {
        for (const auto& line : picture) Polyline(s.dc, line.data(), static_cast<int>(line.size()));
        benchmark::ClobberMemory();
    }
    Count(state);
}

void BM_OursLineTo(benchmark::State& state) {
    const auto& picture = Picture();
    Surface s;
    for (auto _ : state) {
        for (const auto& line : picture) {
            MoveToEx(s.dc, line[0].x, line[0].y, nullptr);
            for (std::size_t i = 1; i < line.size(); ++i) LineTo(s.dc, line[i].x, line[i].y);
        }
        benchmark::ClobberMemory();
    }
    Count(state);
}

void BM_CairoBaseline(benchmark::State& state) {
    const auto& picture = Picture();
    const int stride = cairo_format_stride_for_width(CAIRO_FORMAT_RGB24, kWidth);
    std::vector<unsigned char> pixels(static_cast<std::size_t>(stride) * kHeight);
    cairo_surface_t* surface =
        cairo_image_surface_create_for_data(pixels.data(), CAIRO_FORMAT_RGB24, kWidth, kHeight, stride);
    cairo_t* cr = cairo_create(surface);
    cairo_set_antialias(cr, CAIRO_ANTIALIAS_NONE);
    cairo_set_line_width(cr, 1.0);
    cairo_set_source_rgb(cr, 200 / 255.0, 40 / 255.0, 20 / 255.0);
    for (auto _ : state) {
        for (const auto& line : picture) {
            // Through pixel centres, so a one-pixel stroke lands on whole pixels.
            cairo_move_to(cr, line[0].x + 0.5, line[0].y + 0.5);
            for (std::size_t i = 1; i < line.size(); ++i) cairo_line_to(cr, line[i].x + 0.5, line[i].y + 0.5);
            cairo_stroke(cr);
        }
        cairo_surface_flush(surface);
        benchmark::ClobberMemory();
    }
    Count(state);
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
}

}  // namespace

BENCHMARK(BM_OursPolyline)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OursLineTo)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CairoBaseline)->Unit(benchmark::kMillisecond);
