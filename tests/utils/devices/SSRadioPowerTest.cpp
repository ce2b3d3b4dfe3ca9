// Radio power on the three kinds of handheld: the device library as a real shared
// object (complete, and of a firmware without "Mirel_SetSSInit"), the utility program
// as a real program under the device root, and the models with neither.
#include "utils/devices/SSRadioPower.h"

#include <gtest/gtest.h>

#ifndef _WIN32
#include <sys/stat.h>
#endif

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"

namespace {

#ifdef _WIN32
// A desktop starts only real programs, so there the utility program is this test program
// under the utility's name: started so, it records its arguments beside itself and ends.
std::filesystem::path ThisProgram() {
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return path;
}

const bool kRanAsUtility = [] {
    const std::filesystem::path self = ThisProgram();
    if (self.filename() != "PackEnable.exe") return false;
    std::string seen;
    for (int i = 1; i < __argc; ++i) seen += std::string("[") + __argv[i] + "]";
    kiv_test::WriteFileBytes((self.parent_path() / "args.txt").string(),
                             kiv_test::ReadFileBytes((self.parent_path() / "args.txt").string()) + seen);
    std::exit(0);
}();
#endif

class RadioPower : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root;
    void TearDown() override { ::unsetenv("KIV_MODULE_PATH"); }

    // The calls the library received since the last look, through its own export.
    static std::string TakeCalls() {
        HMODULE lib = LoadLibraryW(L"MirelLib.dll");
        if (!lib) return "<no library>";
        auto calls = reinterpret_cast<const char* (*)()>(reinterpret_cast<void (*)()>(GetProcAddressW(lib, L"KivTest_Calls")));
        auto clear = reinterpret_cast<void (*)()>(GetProcAddressW(lib, L"KivTest_Clear"));
        std::string seen = calls ? calls() : "<no record>";
        if (clear) clear();
        FreeLibrary(lib);
        return seen;
    }
    // KIV_MODULE_PATH at a folder where the firmware variant `variant` answers to the
    // device library's name.
    void UseLibrary(const char* variant) {
        const std::string folder = root.path() + "/modules";
        std::filesystem::create_directories(folder);
#ifdef _WIN32
        std::filesystem::copy_file(std::string(KIV_TEST_MODULE_DIR) + "/lib" + variant + ".dll", folder + "/MirelLib.dll");
#else
        std::filesystem::create_symlink(std::string(KIV_TEST_MODULE_DIR) + "/lib" + variant + ".so",
                                        folder + "/libMirelLib.so");
#endif
        ::setenv("KIV_MODULE_PATH", folder.c_str(), 1);
    }
};

}  // namespace

TEST_F(RadioPower, LibraryWakesTheRadioInOrderAndSwitchesOnlyThePowerOff) {
    UseLibrary("MirelLib");
    kiv_host::SetModel(kiv_host::EModel::Mirel);
    CSSRadioPower radio;
    TakeCalls();
    EXPECT_EQ(radio.IsOn(), 0);
    radio.TurnOn();
    EXPECT_EQ(TakeCalls(), "SetSSPowerState(1) SetSSPower_ON(1) SetSSStandby(0) SetSSInit(1) ");
    EXPECT_EQ(radio.IsOn(), 1);
    radio.TurnOff();
    EXPECT_EQ(TakeCalls(), "SetSSPowerState(0) ");
    EXPECT_EQ(radio.IsOn(), 0);

    CSSRadioPowerLibrary direct;
    EXPECT_EQ(direct.GetSSStandby(), 0);  // left as TurnOn set it
    EXPECT_EQ(direct.GetSSDsr(), 1);
}

TEST_F(RadioPower, LibraryWithoutInitStillTakesTheFirstThreeSteps) {
    UseLibrary("MirelLibNoInit");
    kiv_host::SetModel(kiv_host::EModel::Mirel);
    CSSRadioPower radio;
    TakeCalls();
    radio.TurnOn();
    EXPECT_EQ(TakeCalls(), "SetSSPowerState(1) SetSSPower_ON(1) SetSSStandby(0) ");
    EXPECT_EQ(radio.IsOn(), 1);
    CSSRadioPowerLibrary direct;
    EXPECT_EQ(direct.GetSSInit(), 0);
    EXPECT_EQ(direct.SetSSInit(1), 0);
}

TEST_F(RadioPower, MissingLibraryAndPlainModelsDoNothingAndAnswerOff) {
    ::setenv("KIV_MODULE_PATH", root.path().c_str(), 1);  // no library there
    for (auto model : {kiv_host::EModel::Mirel, kiv_host::EModel::Unknown, kiv_host::EModel::Getac}) {
        kiv_host::SetModel(model);
        CSSRadioPower radio;
        radio.TurnOn();
        EXPECT_EQ(radio.IsOn(), 0);
        radio.TurnOff();
    }
}

TEST_F(RadioPower, UtilityProgramIsStartedWithItsSwitchWhenPresent) {
    kiv_host::SetModel(kiv_host::EModel::Ostra);
    CSSRadioPower radio;
    radio.TurnOn();  // no program yet: nothing is started and nothing fails
    EXPECT_EQ(radio.IsOn(), 0);

    const std::string program = root.HostPath(L"\\SystemCF\\Utilities\\PackEnable.exe");
    std::filesystem::create_directories(std::filesystem::path(program).parent_path());
#ifdef _WIN32
    std::filesystem::copy_file(ThisProgram(), program);
#else
    kiv_test::WriteFileBytes(program, "#!/bin/sh\nprintf '[%s]' \"$@\" >> \"$(dirname \"$0\")/args.txt\"\n");
    ::chmod(program.c_str(), 0755);
#endif
    radio.TurnOn();
    radio.TurnOff();
    EXPECT_EQ(kiv_test::ReadFileBytes(std::filesystem::path(program).parent_path().string() + "/args.txt"), "[/1][/0]");
    EXPECT_EQ(radio.IsOn(), 0);  // this model cannot tell
}

TEST_F(RadioPower, AssignedHandlesShareOneImplementation) {
    UseLibrary("MirelLib");
    kiv_host::SetModel(kiv_host::EModel::Mirel);
    CSSRadioPower a;
    kiv_host::SetModel(kiv_host::EModel::Unknown);
    CSSRadioPower b;
    b = a;  // b now drives the device library too
    TakeCalls();
    b.TurnOn();
    EXPECT_EQ(a.IsOn(), 1);
    EXPECT_NE(TakeCalls().find("SetSSInit(1)"), std::string::npos);
}
