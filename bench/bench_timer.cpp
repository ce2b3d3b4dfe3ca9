// The tick timer at work: 100 timers at a 10 ms resolution for 10 seconds, received by
// one window's thread. Reports the 99th percentile of the period error (each message's
// distance from the one before it of the same timer, against the expected period) and
// the CPU share of the posting thread. The baseline serves the same 100 timers from a
// plain thread that sleeps to absolute deadlines and posts the same messages; a bare
// 10 ms sleep loop shows what merely waking every tick costs on this machine.
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/win32/Win32.h"
#include "utils/runtime/TicTimer.h"

namespace {

constexpr int kTimers = 100;
constexpr UINT kResolutionMs = 10;
constexpr auto kRun = std::chrono::seconds(10);
using Clock = std::chrono::steady_clock;

std::set<long> ThreadIds() {
    std::set<long> ids;
    if (DIR* dir = ::opendir("/proc/self/task")) {
        while (dirent* e = ::readdir(dir))
            if (e->d_name[0] != '.') ids.insert(std::stol(e->d_name));
        ::closedir(dir);
    }
    return ids;
}

// Nanoseconds the thread has run on a CPU (the first field of its schedstat).
double CpuNs(long tid) {
    std::ifstream in("/proc/self/task/" + std::to_string(tid) + "/schedstat");
    double ns = 0;
    in >> ns;
    return ns;
}

HWND MakeWindow() {
    static const bool registered = [] {
        WNDCLASSW c{};
        c.lpfnWndProc = DefWindowProcW;
        c.lpszClassName = L"bench timer";
        return RegisterClassW(&c) != 0;
    }();
    (void)registered;
    return CreateWindowExW(0, L"bench timer", L"", WS_OVERLAPPED, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
}

struct Outcome {
    std::vector<double> errorsMs;        // as received by the window's thread
    std::vector<double> postedErrorsMs;  // as posted: the message's time stamp (whole ms)
    double cpuShare = 0;  // of one core, over the run
    size_t messages = 0;
};

// Reads the window's timer messages until the run's end and turns arrival times into
// period errors; `expectedMs` is the period every timer should keep.
void Receive(Outcome& out, double expectedMs) {
    std::vector<Clock::time_point> last(kTimers);
    std::vector<DWORD> lastPosted(kTimers);
    std::vector<bool> seen(kTimers, false);
    MSG msg;
    while (GetMessageW(&msg, nullptr, 0, 0) > 0) {
        if (msg.message != WM_TIC_TIMER || msg.wParam >= static_cast<WPARAM>(kTimers)) continue;
        const Clock::time_point now = Clock::now();
        const size_t id = msg.wParam;
        if (seen[id]) {
            out.errorsMs.push_back(std::abs(std::chrono::duration<double, std::milli>(now - last[id]).count() - expectedMs));
            out.postedErrorsMs.push_back(std::abs(static_cast<double>(msg.time - lastPosted[id]) - expectedMs));
        }
        seen[id] = true;
        last[id] = now;
        lastPosted[id] = msg.time;
        ++out.messages;
    }
}

void QuitAfterRun(DWORD receiver) {
    std::this_thread::sleep_for(kRun);
    PostThreadMessageW(receiver, WM_QUIT, 0, 0);
}

// The machine's load while measuring: other processes' threads delay every wake-up.
double LoadAverage() {
    std::ifstream in("/proc/loadavg");
    double load = 0;
    in >> load;
    return load;
}

double Quantile(std::vector<double>& v, double q) {
    if (v.empty()) return 0.0;
    std::sort(v.begin(), v.end());
    return v[std::min(v.size() - 1, static_cast<size_t>(q * static_cast<double>(v.size())))];
}

void Report(benchmark::State& state, Outcome& o) {
    state.counters["p50_err_ms"] = Quantile(o.errorsMs, 0.50);
    state.counters["p99_err_ms"] = Quantile(o.errorsMs, 0.99);
    state.counters["max_err_ms"] = Quantile(o.errorsMs, 1.0);
    state.counters["p99_in_ticks"] = Quantile(o.errorsMs, 0.99) / kResolutionMs;
    state.counters["p99_posted_ms"] = Quantile(o.postedErrorsMs, 0.99);
    state.counters["cpu_pct"] = 100.0 * o.cpuShare;
    state.counters["messages"] = static_cast<double>(o.messages);
    state.counters["load_avg"] = LoadAverage();
}

// state.range(0): the timers' elapse in ms. At 10 ms every timer posts at every tick;
// at a very long elapse nothing is posted and only the scan and the sleep remain.
void BM_TicTimer100x10ms(benchmark::State& state) {
    const UINT elapse = static_cast<UINT>(state.range(0));
    for (auto _ : state) {
        Outcome o;
        HWND window = MakeWindow();
        const std::set<long> before = ThreadIds();
        CreateTicTimerThread(kResolutionMs);
        long timerThread = 0;
        for (long id : ThreadIds())
            if (!before.count(id)) timerThread = id;
        for (int i = 0; i < kTimers; ++i) SetTicTimer(window, static_cast<UINT>(i), elapse);
        const double cpu0 = CpuNs(timerThread);
        const auto t0 = Clock::now();
        std::thread stopper(QuitAfterRun, GetCurrentThreadId());
        Receive(o, kResolutionMs);
        const double cpu1 = CpuNs(timerThread);
        const double wall = std::chrono::duration<double, std::nano>(Clock::now() - t0).count();
        stopper.join();
        DestroyTicTimerThread();
        DestroyWindow(window);
        o.cpuShare = (cpu1 - cpu0) / wall;
        Report(state, o);
    }
}

void BM_SleepUntilThreadBaseline(benchmark::State& state) {
    for (auto _ : state) {
        Outcome o;
        HWND window = MakeWindow();
        std::atomic<bool> stop{false};
        std::atomic<long> tid{0};
        std::thread poster([&] {
            tid = static_cast<long>(::syscall(SYS_gettid));
            auto next = Clock::now();
            while (!stop.load()) {
                next += std::chrono::milliseconds(kResolutionMs);
                std::this_thread::sleep_until(next);
                for (int i = 0; i < kTimers; ++i) PostMessageW(window, WM_TIC_TIMER, static_cast<WPARAM>(i), 0);
            }
        });
        while (!tid.load()) std::this_thread::yield();
        const double cpu0 = CpuNs(tid);
        const auto t0 = Clock::now();
        std::thread stopper(QuitAfterRun, GetCurrentThreadId());
        Receive(o, kResolutionMs);
        const double cpu1 = CpuNs(tid);
        const double wall = std::chrono::duration<double, std::nano>(Clock::now() - t0).count();
        stop = true;
        poster.join();
        stopper.join();
        DestroyWindow(window);
        o.cpuShare = (cpu1 - cpu0) / wall;
        Report(state, o);
    }
}

// The floor on this machine: a thread that does nothing but wake every 10 ms. Every
// ticking design pays this; what a timer adds is the difference.
void BM_BareTenMsSleepLoopFloor(benchmark::State& state) {
    for (auto _ : state) {
        std::atomic<bool> stop{false};
        std::atomic<long> tid{0};
        std::thread sleeper([&] {
            tid = static_cast<long>(::syscall(SYS_gettid));
            while (!stop.load()) std::this_thread::sleep_for(std::chrono::milliseconds(kResolutionMs));
        });
        while (!tid.load()) std::this_thread::yield();
        const double cpu0 = CpuNs(tid);
        const auto t0 = Clock::now();
        std::this_thread::sleep_for(kRun);
        const double cpu1 = CpuNs(tid);
        const double wall = std::chrono::duration<double, std::nano>(Clock::now() - t0).count();
        stop = true;
        sleeper.join();
        state.counters["cpu_pct"] = 100.0 * (cpu1 - cpu0) / wall;
        state.counters["load_avg"] = LoadAverage();
    }
}

}  // namespace

BENCHMARK(BM_TicTimer100x10ms)->Arg(10)->Arg(100000000)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
BENCHMARK(BM_SleepUntilThreadBaseline)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
BENCHMARK(BM_BareTenMsSleepLoopFloor)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
