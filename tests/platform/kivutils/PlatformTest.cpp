// LaunchExe running a device program.
#include <gtest/gtest.h>

#include <sys/stat.h>
#ifndef _WIN32
#include <spawn.h>
#include <sys/wait.h>
extern char** environ;
#endif

#include <filesystem>

#include "platform/kivutils/LaunchExe.h"
#include "tests/support/TestSupport.h"

namespace {
// Whether this host tells a program that cannot start from one that started and failed.
// posix_spawn learns of a failed start from its child through the memory they share
// until the program runs. qemu's user-mode emulator runs that child as a copy of the
// parent instead, so there every start succeeds and a missing program is exit status 127.
bool HostReportsFailedStarts() {
#ifdef _WIN32
    return true;
#else
    char path[] = "/nonexistent/program";
    char* argv[] = {path, nullptr};
    pid_t child = 0;
    if (::posix_spawn(&child, path, nullptr, nullptr, argv, environ) != 0) return true;
    ::waitpid(child, nullptr, 0);
    return false;
#endif
}

class Platform : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root;

    // A device program: a shell script that writes one argument per line to args.txt.
    void MakeProgram(const std::string& folder, const std::string& name, int exitCode) {
        std::filesystem::create_directories(root.path() + folder);
        const std::string path = root.path() + folder + "/" + name;
        kiv_test::WriteFileBytes(path, "#!/bin/sh\nfor a in \"$@\"; do printf '%s\\n' \"$a\"; done > \"$(dirname \"$0\")/args.txt\"\nexit " +
                                           std::to_string(exitCode) + "\n");
        ::chmod(path.c_str(), 0755);
    }
};
}  // namespace

TEST_F(Platform, LaunchExeRunsTheDeviceProgramWithItsArgumentsAndReportsTheExitCode) {
    MakeProgram("/SystemCF/Utilities", "PackEnable.exe", 3);
    unsigned long result = 0;
    ASSERT_TRUE(LaunchExe(L"\\SystemCF\\Utilities\\PackEnable.exe", L" /1 \"two words\"", result));
    EXPECT_EQ(result, 3ul);
    EXPECT_EQ(kiv_test::ReadFileBytes(root.path() + "/SystemCF/Utilities/args.txt"), "/1\ntwo words\n");
}

TEST_F(Platform, LaunchExeReportsAProgramThatCannotStartAndLeavesTheResult) {
    if (!HostReportsFailedStarts())
        GTEST_SKIP() << "posix_spawn reports every start as made here (qemu's user-mode emulator runs the "
                        "spawning child as a copy, so the failed start never reaches the parent)";
    unsigned long result = 42;
    EXPECT_FALSE(LaunchExe(L"\\SystemCF\\Utilities\\Missing.exe", L" /0 ", result));
    EXPECT_EQ(result, 42ul);  // nothing started
}
