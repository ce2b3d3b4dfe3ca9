// kivutil timer: runs the tick timer against a headless window for a while and prints
// the periods between the messages it received: a live look at the rounding to whole
// ticks and at the jitter of this machine.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/host/TextCodec.h"
#include "platform/kivutils/KivFormats.h"
#include "platform/win32/Win32.h"
#include "tools/kivutil/Command.h"
#include "utils/runtime/TicTimer.h"

namespace {

struct TimerOptions {
    std::string resolution, elapse, seconds;
};

bool ParseWhole(const std::string& text, long lo, long hi, long& out) {
    if (text.empty() || text.size() > 9 || text.find_first_not_of("0123456789") != std::string::npos) return false;
    out = std::stol(text);
    return out >= lo && out <= hi;
}

int RunTimer(const TimerOptions& o) {
    long resolution = 0, elapse = 0;
    double seconds = 0;
    if (!ParseWhole(o.resolution, 1, 60000, resolution))
        return kivutil::BadInput("--resolution takes whole milliseconds from 1 to 60000 (below 10 runs at 10)");
    if (!ParseWhole(o.elapse, 0, 3600000, elapse))
        return kivutil::BadInput("--elapse takes whole milliseconds from 0 to 3600000");
    if (!kiv_formats::StringToDouble(kiv_text::FromUtf8(o.seconds).c_str(), seconds) || !(seconds > 0 && seconds <= 600))
        return kivutil::BadInput("--for takes seconds above 0 and up to 600, e.g. --for 2.5");

    WNDCLASSW c{};
    c.lpfnWndProc = DefWindowProcW;
    c.lpszClassName = L"kivutil timer";
    RegisterClassW(&c);
    HWND window = CreateWindowExW(0, c.lpszClassName, L"", WS_OVERLAPPED, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    if (!window || !CreateTicTimerThread(static_cast<UINT>(resolution))) {
        std::fprintf(stderr, "kivutil: the tick timer could not be started\n");
        return kivutil::kExitFailed;
    }
    const long tick = std::max(resolution, 10L);
    const long ticks = (elapse + tick / 2) / tick;
    const std::string raised = resolution < 10 ? " (raised from " + std::to_string(resolution) + ")" : "";
    std::printf("resolution %ld ms%s; elapse %ld ms rounds to %ld tick%s", tick, raised.c_str(), elapse, ticks,
                ticks == 1 ? "" : "s");
    if (ticks == 0) std::printf(": this timer never fires\n");
    else std::printf(" = %ld ms\n", ticks * tick);
    SetTicTimer(window, 1, static_cast<UINT>(elapse));

    // The run ends with a quit message from a helper, so that waiting for the timer's
    // messages needs no polling of our own.
    const DWORD self = GetCurrentThreadId();
    std::thread stopper([self, seconds] {
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
        PostThreadMessageW(self, WM_QUIT, 0, 0);
    });
    using Clock = std::chrono::steady_clock;
    std::vector<double> periods;
    Clock::time_point last{};
    bool first = true;
    MSG msg;
    while (GetMessageW(&msg, nullptr, 0, 0) > 0) {
        if (msg.message != WM_TIC_TIMER) continue;
        const Clock::time_point now = Clock::now();
        if (!first) periods.push_back(std::chrono::duration<double, std::milli>(now - last).count());
        first = false;
        last = now;
    }
    stopper.join();
    KillTicTimer(window, 1);
    DestroyTicTimerThread();
    DestroyWindow(window);

    const size_t messages = first ? 0 : periods.size() + 1;
    std::printf("%zu message%s in %.1f s\n", messages, messages == 1 ? "" : "s", seconds);
    if (periods.empty()) return kivutil::kExitOk;
    std::vector<double> sorted = periods;
    std::sort(sorted.begin(), sorted.end());
    auto at = [&](double q) { return sorted[std::min(sorted.size() - 1, static_cast<size_t>(q * (sorted.size() - 1) + 0.5))]; };
    double sum = 0;
    for (double p : periods) sum += p;
    std::printf("period ms: min %.2f  median %.2f  mean %.2f  p99 %.2f  max %.2f\n", sorted.front(), at(0.5),
                sum / periods.size(), at(0.99), sorted.back());
    if (ticks > 0) {
        const double expected = static_cast<double>(ticks * tick);
        double worst = 0;
        for (double p : periods) worst = std::max(worst, std::abs(p - expected));
        std::printf("expected %.0f ms; largest deviation %.2f ms (%.2f of a tick)\n", expected, worst, worst / tick);
    }
    const size_t shown = std::min<size_t>(periods.size(), 20);
    std::printf("first %zu periods:", shown);
    for (size_t i = 0; i < shown; ++i) std::printf(" %.1f", periods[i]);
    std::printf("\n");
    return kivutil::kExitOk;
}

kivutil::Registration reg(53, [](CLI::App& app, std::function<int()>& run) {
    auto o = std::make_shared<TimerOptions>();
    auto* sub = app.add_subcommand("timer", "Run the tick timer against a headless window and show the periods it saw");
    sub->add_option("--resolution", o->resolution, "tick in milliseconds (at least 10 is used)");
    sub->add_option("--elapse", o->elapse, "timer period in milliseconds, rounded to whole ticks");
    sub->add_option("--for", o->seconds, "how long to run, in seconds");
    sub->callback([&run, o] { run = [o] { return RunTimer(*o); }; });
});

}  // namespace
