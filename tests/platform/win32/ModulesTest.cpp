// Modules through LoadLibraryW, GetProcAddressW and FreeLibrary: one registered in
// process and a real shared object built beside the tests.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "platform/win32/Win32.h"
#include "tests/support/TestSupport.h"

namespace {

using SetPower = int (*)(int);
using GetPower = int (*)();

int registeredState = 0;
int SetRegistered(int on) {
    registeredState = on;
    return 1;
}
int GetRegistered() { return registeredState; }

class Modules : public ::testing::Test {
protected:
    kiv_test::TempDeviceRoot root;
    void SetUp() override { ::setenv("KIV_MODULE_PATH", ModuleDir().c_str(), 1); }
    // The folder the suite's modules are built into, beside the suite's program.
    static std::string ModuleDir() {
#ifdef _WIN32
        char self[MAX_PATH] = {};
        GetModuleFileNameA(nullptr, self, MAX_PATH);
        std::string dir = self;
        return dir.substr(0, dir.find_last_of("\\/")) + "\\test_platform_win32_modules";
#else
        return KIV_TEST_MODULE_DIR;
#endif
    }
    void TearDown() override { ::unsetenv("KIV_MODULE_PATH"); }
};

}  // namespace

TEST_F(Modules, RegisteredModuleIsFoundByNameWithoutRegardToCase) {
    kiv_host::RegisterModule(L"MirelLib.dll", {{"Mirel_SetSSPowerState", reinterpret_cast<void*>(&SetRegistered)},
                                               {"Mirel_GetSSPowerState", reinterpret_cast<void*>(&GetRegistered)}});
    HMODULE module = LoadLibraryW(L"\\Windows\\MIRELLIB.DLL");
    ASSERT_NE(module, nullptr);
    auto set = reinterpret_cast<SetPower>(reinterpret_cast<void (*)()>(GetProcAddressW(module, L"Mirel_SetSSPowerState")));
    auto get = reinterpret_cast<GetPower>(reinterpret_cast<void (*)()>(GetProcAddressW(module, L"Mirel_GetSSPowerState")));
    ASSERT_NE(set, nullptr);
    ASSERT_NE(get, nullptr);
    set(1);
    EXPECT_EQ(get(), 1);
    EXPECT_EQ(GetProcAddressW(module, L"Mirel_SetSSInit"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
    EXPECT_EQ(GetProcAddressW(module, L"mirel_getsspowerstate"), nullptr);  // exports are exact
    EXPECT_TRUE(FreeLibrary(module));
}

TEST_F(Modules, SharedObjectIsLoadedByItsDeviceNameAndCounted) {
    HMODULE first = LoadLibraryW(L"KivTestRadio.dll");
    ASSERT_NE(first, nullptr);
    HMODULE second = LoadLibraryW(L"kivtestradio");
    EXPECT_EQ(second, first);
    auto set = reinterpret_cast<SetPower>(reinterpret_cast<void (*)()>(GetProcAddressW(first, L"Mirel_SetSSPowerState")));
    auto get = reinterpret_cast<GetPower>(reinterpret_cast<void (*)()>(GetProcAddressW(first, L"Mirel_GetSSPowerState")));
    ASSERT_NE(set, nullptr);
    ASSERT_NE(get, nullptr);
    EXPECT_EQ(set(1), 1);
    EXPECT_EQ(get(), 1);
    EXPECT_EQ(GetProcAddress(first, "Mirel_SetSSInit"), nullptr);
    EXPECT_TRUE(FreeLibrary(first));
    EXPECT_NE(GetProcAddressW(second, L"Mirel_GetSSPowerState"), nullptr);  // one load left
    EXPECT_TRUE(FreeLibrary(second));
    EXPECT_FALSE(FreeLibrary(second));
}
