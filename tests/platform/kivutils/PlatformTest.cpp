// LaunchExe running a device program.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>

#include "platform/kivutils/LaunchExe.h"
#include "tests/support/TestSupport.h"

namespace {
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
