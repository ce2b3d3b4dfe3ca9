// kivutil dialog demo --show as a person uses it, on a private X server: keys typed on
// the desktop reach the sample's fields, and its desktop window shows the very pixels the
// same dialog draws headless after the same keys. Skipped where no X server can start.
// The live display and the private X server belong to the Linux host; a Windows build
// shows its windows through the system and has neither.
#ifndef _WIN32
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "platform/win32/PictureFiles.h"
#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"
#include "tests/tools/kivutil/RunKivutil.h"

using kivutil_test::Kivutil;
using kivutil_test::ToolRun;

namespace {

// Generous bounds on waiting for another process; none is a measure of speed.
constexpr int kPatienceMs = 20000;
constexpr int kPollMs = 50;

bool OnPath(const std::string& tool) {
    const char* path = std::getenv("PATH");
    std::string dirs = path ? path : "/usr/bin:/bin";
    for (size_t start = 0; start <= dirs.size();) {
        const size_t end = std::min(dirs.find(':', start), dirs.size());
        if (::access((dirs.substr(start, end - start) + "/" + tool).c_str(), X_OK) == 0) return true;
        start = end + 1;
    }
    return false;
}

// A process of the test's own, ended (if still running) when the test ends.
class ChildProcess {
public:
    // Runs `args` with `environment` added; stdout and stderr go to `output` (a file
    // path, or empty for the test's own); `keepFd` stays open in the child.
    ChildProcess(const std::vector<std::string>& args, const std::vector<std::string>& environment,
                 const std::string& output, int keepFd = -1) {
        pid_ = ::fork();
        if (pid_ != 0) return;
        for (const std::string& e : environment) ::putenv(const_cast<char*>(e.c_str()));
        if (!output.empty()) {
            const int fd = ::open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            ::dup2(fd, 1);
            ::dup2(fd, 2);
        }
        if (keepFd >= 0) ::fcntl(keepFd, F_SETFD, 0);
        std::vector<char*> argv;
        for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        ::execvp(argv[0], argv.data());
        ::_exit(127);
    }
    ~ChildProcess() {
        if (pid_ <= 0 || status_ >= 0) return;
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // The exit status once the process has ended, else -1; waits at most `ms`.
    int Wait(int ms) {
        for (int waited = 0; status_ < 0; waited += kPollMs) {
            int raw = 0;
            if (::waitpid(pid_, &raw, WNOHANG) == pid_) status_ = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128;
            else if (waited >= ms) break;
            else ::usleep(kPollMs * 1000);
        }
        return status_;
    }

private:
    pid_t pid_ = -1;
    int status_ = -1;
};

// An X server of the test's own on a display number it picks itself, or none.
class PrivateXServer {
public:
    PrivateXServer() {
        if (!OnPath("Xvfb") || ::pipe(fds_) != 0) return;
        ::fcntl(fds_[0], F_SETFD, FD_CLOEXEC);
        ::fcntl(fds_[1], F_SETFD, FD_CLOEXEC);
        server_ = std::make_unique<ChildProcess>(
            std::vector<std::string>{"Xvfb", "-displayfd", std::to_string(fds_[1]), "-screen", "0", "640x480x24",
                                     "-nolisten", "tcp", "-noreset"},
            std::vector<std::string>{}, "/dev/null", fds_[1]);
        ::close(fds_[1]);
        std::string number;
        pollfd p{fds_[0], POLLIN, 0};
        char c = 0;
        while (::poll(&p, 1, kPatienceMs) == 1 && ::read(fds_[0], &c, 1) == 1 && c != '\n') number += c;
        ::close(fds_[0]);
        if (!number.empty()) display_ = ":" + number;
    }
    const std::string& display() const { return display_; }

private:
    int fds_[2] = {-1, -1};
    std::unique_ptr<ChildProcess> server_;
    std::string display_;
};

std::string OnDisplay(const std::string& display, const std::string& command) {
    std::string out;
    FILE* pipe = ::popen(("DISPLAY=" + display + " " + command + " 2>/dev/null").c_str(), "r");
    if (!pipe) return out;
    char buffer[256];
    while (std::fgets(buffer, sizeof buffer, pipe)) out += buffer;
    ::pclose(pipe);
    return out;
}

// A picture file read back through the host's picture loader.
struct Picture {
    explicit Picture(const std::string& path) {
        const std::wstring wide(path.begin(), path.end());
        bitmap = kiv_host::LoadPicture(wide.c_str());
        dc = CreateCompatibleDC(nullptr);
        if (bitmap) SelectObject(dc, bitmap);
    }
    ~Picture() {
        DeleteDC(dc);
        if (bitmap) DeleteObject(bitmap);
    }
    HBITMAP bitmap = nullptr;
    HDC dc = nullptr;
};

// Pixels of `region` (in the dialog's coordinates) that differ between the dialog at
// `at` in the screenshot and the headless picture; -1 when either cannot be read.
long DifferingPixels(const std::string& screenshot, POINT at, const std::string& headless, RECT region) {
    Picture shot(screenshot), expected(headless);
    if (!shot.bitmap || !expected.bitmap) return -1;
    long differing = 0;
    for (int y = region.top; y < region.bottom; ++y)
        for (int x = region.left; x < region.right; ++x)
            differing += GetPixel(shot.dc, at.x + x, at.y + y) != GetPixel(expected.dc, x, y);
    return differing;
}

}  // namespace

TEST(KivutilDialogShow, WithoutADesktopSaysSoInOneLineAndExitsTwo) {
    // kivutil runs under the test's environment with every way to a desktop removed.
    FILE* pipe = ::popen(("env -u DISPLAY -u WAYLAND_DISPLAY -u SDL_VIDEODRIVER " + std::string(KIVUTIL_EXE) +
                          " dialog demo --show 2>&1").c_str(),
                         "r");
    ASSERT_NE(pipe, nullptr);
    std::string out;
    char buffer[256];
    while (std::fgets(buffer, sizeof buffer, pipe)) out += buffer;
    const int status = ::pclose(pipe);
    EXPECT_EQ(WEXITSTATUS(status), 2) << out;
    EXPECT_EQ(out.rfind("kivutil: cannot show a window: ", 0), 0u) << out;
    EXPECT_EQ(out.find('\n'), out.size() - 1) << "one line: " << out;
}

TEST(KivutilDialogShow, TypedTextAppearsInTheDesktopWindowAsTheHeadlessDialogDrawsIt) {
    for (const char* tool : {"Xvfb", "xdotool", "import"})
        if (!OnPath(tool)) GTEST_SKIP() << tool << " is not installed: no private X server to show the dialog on";
    kiv_test::TempDeviceRoot root;
    const std::string initial = root.path() + "/initial.png", typed = root.path() + "/typed.png";
    const std::string shot = root.path() + "/screen.png", log = root.path() + "/kivutil.txt";
    ASSERT_EQ(Kivutil("dialog demo -o '" + initial + "'").status, 0);
    ASSERT_EQ(Kivutil("dialog keys '{TAB}Kiwi42' -o '" + typed + "'").status, 0);

    PrivateXServer x;
    if (x.display().empty()) GTEST_SKIP() << "no X server could be started (Xvfb -displayfd gave no display)";
    // Under the leak checker, what the desktop's libraries keep for the process is theirs,
    // some of it from modules they load and unload again, so it cannot even be named. The
    // shown process is not leak-checked; the same dialog headless is, in every other test.
    const std::string leaks = "LSAN_OPTIONS=detect_leaks=0";
    // KIVUTIL_EXE is a command line (an emulator may come first); the shell's exec leaves
    // kivutil, or its emulator, as the process the test ends.
    ChildProcess shown({"/bin/sh", "-c", "exec " + std::string(KIVUTIL_EXE) + " dialog demo --show"},
                       {"DISPLAY=" + x.display(), leaks}, log);

    // The desktop window, found by its title once it is mapped and placed.
    std::string window, geometry;
    auto value = [&](const std::string& key) {
        const size_t found = geometry.find(key + "=");
        return found == std::string::npos ? -1 : std::atoi(geometry.c_str() + found + key.size() + 1);
    };
    for (int waited = 0; value("WIDTH") < 0 && waited < kPatienceMs; waited += kPollMs) {
        window = OnDisplay(x.display(), "xdotool search --onlyvisible --name '^Store Point$' | head -1");
        while (!window.empty() && window.back() == '\n') window.pop_back();
        if (!window.empty()) geometry = OnDisplay(x.display(), "xdotool getwindowgeometry --shell " + window);
        if (value("WIDTH") < 0) {
            const int status = shown.Wait(kPollMs);
            if (status == 2) GTEST_SKIP() << "kivutil cannot show windows here: " << kiv_test::ReadFileBytes(log);
            ASSERT_EQ(status, -1) << "kivutil ended early: " << kiv_test::ReadFileBytes(log);
        }
    }
    ASSERT_FALSE(window.empty()) << "no desktop window titled \"Store Point\": " << kiv_test::ReadFileBytes(log);
    const POINT at{value("X"), value("Y")};
    ASSERT_EQ(value("WIDTH"), 240) << geometry;
    ASSERT_EQ(value("HEIGHT"), 300) << geometry;

    // Polls screenshots until the dialog's `region` shows `expected`; the differing pixels left.
    auto settle = [&](const std::string& expected, RECT region) {
        long differing = -1;
        for (int waited = 0; differing != 0 && waited < kPatienceMs; waited += kPollMs) {
            OnDisplay(x.display(), "import -window root '" + shot + "'");
            differing = DifferingPixels(shot, at, expected, region);
            if (differing != 0) ::usleep(kPollMs * 1000);
        }
        return differing;
    };
    const RECT whole{0, 0, 240, 300};
    // The desktop shows the headless picture of the fresh dialog, pixel for pixel.
    ASSERT_EQ(settle(initial, whole), 0) << "screenshot " << shot;

    OnDisplay(x.display(), "xdotool windowfocus --sync " + window + " key Tab type Kiwi42");
    // The code field now holds the typed text exactly as the headless dialog draws it
    // after the same keys, and so does the rest of the dialog.
    const RECT codeField{92, 66, 232, 90};
    EXPECT_GT(DifferingPixels(initial, POINT{0, 0}, typed, codeField), 0) << "the typed text must change the field";
    EXPECT_EQ(settle(typed, codeField), 0) << "screenshot " << shot;
    EXPECT_EQ(DifferingPixels(shot, at, typed, whole), 0) << "screenshot " << shot;

    // Escape ends the dialog and kivutil with it.
    OnDisplay(x.display(), "xdotool key Escape");
    EXPECT_EQ(shown.Wait(kPatienceMs), 0) << kiv_test::ReadFileBytes(log);
    EXPECT_NE(kiv_test::ReadFileBytes(log).find("showing \"Store Point\""), std::string::npos);
    if (const char* keep = std::getenv("KIV_KEEP_SCREENSHOT")) std::system(("cp '" + shot + "' '" + keep + "'").c_str());
}

#endif  // _WIN32
