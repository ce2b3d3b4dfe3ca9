// LaunchExe running a device program.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#ifdef _WIN32
#include <cstdlib>

#include "platform/win32/Win32.h"
#else
#include <sys/stat.h>
#endif

#include "platform/kivutils/LaunchExe.h"
#include "tests/support/TestSupport.h"

namespace {

#ifdef _WIN32
// On Windows a device program must be a real program: it is a copy of this test program,
// which, started under a name other than its own, writes one argument per line to
// args.txt beside itself and exits with the code that exit.txt there holds.
const bool runsAsDeviceProgram = [] {
    wchar_t self[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    const std::filesystem::path program(self);
    if (program.filename() == L"test_platform_kivutils.exe") return false;
    std::ofstream args(program.parent_path() / "args.txt", std::ios::binary);
    for (int i = 1; i < __argc; ++i) args << __argv[i] << "\n";
    args.close();
    int code = 0;
    std::ifstream(program.parent_path() / "exit.txt") >> code;
    std::exit(code);
}();
#endif

class Platform : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root;

    // A device program that writes one argument per line to args.txt and exits with
    // `exitCode`: a shell script on Linux, a copy of this test program on Windows.
    void MakeProgram(const std::string& folder, const std::string& name, int exitCode) {
        std::filesystem::create_directories(root.path() + folder);
        const std::string path = root.path() + folder + "/" + name;
#ifdef _WIN32
        wchar_t self[MAX_PATH] = {};
        GetModuleFileNameW(nullptr, self, MAX_PATH);
        std::filesystem::copy_file(self, path);
        kiv_test::WriteFileBytes(root.path() + folder + "/exit.txt", std::to_string(exitCode));
#else
        kiv_test::WriteFileBytes(path, "#!/bin/sh\nfor a in \"$@\"; do printf '%s\\n' \"$a\"; done > \"$(dirname \"$0\")/args.txt\"\nexit " +
                                           std::to_string(exitCode) + "\n");
        ::chmod(path.c_str(), 0755);
#endif
    }
};
}  // namespace

TEST_F(Platform, LaunchExeRunsTheDeviceProgramWithItsArgumentsAndReportsTheExitCodeOrNoStart) {
    MakeProgram("/SystemCF/Utilities", "PackEnable.exe", 3);
    unsigned long result = 0;
    ASSERT_TRUE(LaunchExe(L"\\SystemCF\\Utilities\\PackEnable.exe", L" /1 \"two words\"", result));
    EXPECT_EQ(result, 3ul);
    EXPECT_EQ(kiv_test::ReadFileBytes(root.path() + "/SystemCF/Utilities/args.txt"), "/1\ntwo words\n");
    result = 42;
    EXPECT_FALSE(LaunchExe(L"\\SystemCF\\Utilities\\Missing.exe", L" /0 ", result));
    EXPECT_EQ(result, 42ul);  // nothing started
}
