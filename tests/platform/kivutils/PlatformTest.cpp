// The handheld model tests and LaunchExe.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>

#include "platform/kivutils/LaunchExe.h"
#include "platform/kivutils/Platform.h"
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

TEST_F(Platform, ExactlyTheModelTheHostWasToldAnswersTrue) {
    using kiv_host::EModel;
    const struct {
        EModel model;
        bool (*test)();
    } models[] = {{EModel::Getac, kiv_platform::IsGetac},  {EModel::Pellan, kiv_platform::IsPellan},
                  {EModel::Mirel, kiv_platform::IsMirel},  {EModel::Dorsk, kiv_platform::IsDorsk},
                  {EModel::Ostra, kiv_platform::IsOstra}, {EModel::TarvoOld, kiv_platform::IsTarvoOld}};
    for (const auto& m : models) EXPECT_FALSE(m.test());  // a development machine is none of them
    for (const auto& set : models) {
        kiv_host::SetModel(set.model);
        for (const auto& m : models) EXPECT_EQ(m.test(), m.model == set.model);
    }
}

TEST(LaunchArguments, SplitAsTheDeviceShellSplits) {
    using V = std::vector<std::wstring>;
    EXPECT_EQ(kiv_launch::SplitArguments(L" /1 "), V{L"/1"});
    EXPECT_EQ(kiv_launch::SplitArguments(L""), V{});
    EXPECT_EQ(kiv_launch::SplitArguments(nullptr), V{});
    EXPECT_EQ(kiv_launch::SplitArguments(L"a\t\"b c\" \"\""), (V{L"a", L"b c", L""}));
    EXPECT_EQ(kiv_launch::SplitArguments(L"C:\\dir\\ x\\\\\"y z\" q\\\"r"), (V{L"C:\\dir\\", L"x\\y z", L"q\"r"}));
}

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
