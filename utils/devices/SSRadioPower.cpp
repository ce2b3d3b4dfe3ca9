// The three ways of powering the built-in radio and the choice between them by model.
#include "utils/devices/SSRadioPower.h"

#include <new>

#include "platform/kivutils/LaunchExe.h"
#include "platform/kivutils/Platform.h"

namespace {
using SetFunction = int (*)(int);
using GetFunction = int (*)();
constexpr wchar_t kUtilityProgram[] = L"\\SystemCF\\Utilities\\PackEnable.exe";

void RunUtility(const wchar_t* arguments) {
    if (GetFileAttributesW(kUtilityProgram) == INVALID_FILE_ATTRIBUTES) return;
    // Whether the program ran is not examined: the radio answers for itself later.
    unsigned long result = 0;
    LaunchExe(kUtilityProgram, arguments, result);
}
}  // namespace

// ---- the device library ----------------------------------------------------------------

CSSRadioPowerLibrary::CSSRadioPowerLibrary() : m_module(LoadLibraryW(L"MirelLib.dll")) {}

CSSRadioPowerLibrary::~CSSRadioPowerLibrary() {
    if (m_module) FreeLibrary(m_module);
}

int CSSRadioPowerLibrary::CallSet(const wchar_t* function, int value) {
    if (!m_module) return 0;
    auto set = reinterpret_cast<SetFunction>(reinterpret_cast<void (*)()>(GetProcAddressW(m_module, function)));
    return set ? set(value) : 0;
}

int CSSRadioPowerLibrary::CallGet(const wchar_t* function) {
    if (!m_module) return 0;
    auto get = reinterpret_cast<GetFunction>(reinterpret_cast<void (*)()>(GetProcAddressW(m_module, function)));
    return get ? get() : 0;
}

int CSSRadioPowerLibrary::SetSSPowerState(int on) { return CallSet(L"Mirel_SetSSPowerState", on); }
int CSSRadioPowerLibrary::SetSSPowerOn(int on) { return CallSet(L"Mirel_SetSSPower_ON", on); }
int CSSRadioPowerLibrary::SetSSStandby(int standby) { return CallSet(L"Mirel_SetSSStandby", standby); }
int CSSRadioPowerLibrary::SetSSInit(int init) { return CallSet(L"Mirel_SetSSInit", init); }
int CSSRadioPowerLibrary::GetSSPowerState() { return CallGet(L"Mirel_GetSSPowerState"); }
int CSSRadioPowerLibrary::GetSSStandby() { return CallGet(L"Mirel_GetSSStandby"); }
int CSSRadioPowerLibrary::GetSSPowerOn() { return CallGet(L"Mirel_GetSSPower_ON"); }
int CSSRadioPowerLibrary::GetSSInit() { return CallGet(L"Mirel_GetSSInit"); }
int CSSRadioPowerLibrary::GetSSDsr() { return CallGet(L"Mirel_GetSSDsr"); }

int CSSRadioPowerLibrary::IsOn() { return GetSSPowerState(); }

// The radio wakes in this order, with no pause between the steps.
void CSSRadioPowerLibrary::TurnOn() {
    SetSSPowerState(1);
    SetSSPowerOn(1);
    SetSSStandby(0);
    SetSSInit(1);
}

// Only the power line is switched; standby and init keep their state for the next start.
void CSSRadioPowerLibrary::TurnOff() { SetSSPowerState(0); }

// ---- the utility program -----------------------------------------------------------------

void CSSRadioPowerUtility::TurnOn() { RunUtility(L" /1 "); }
void CSSRadioPowerUtility::TurnOff() { RunUtility(L" /0 "); }

// ---- the handle --------------------------------------------------------------------------

CSSRadioPower::CSSRadioPower() {
    ISSRadioPowerImpl* impl = nullptr;
    if (kiv_platform::IsMirel()) impl = new (std::nothrow) CSSRadioPowerLibrary();
    else if (kiv_platform::IsOstra()) impl = new (std::nothrow) CSSRadioPowerUtility();
    else impl = new (std::nothrow) CSSRadioPowerNone();
    if (!impl) return;
    try {
        m_impl.reset(impl);
    } catch (const std::bad_alloc&) {
        m_impl.reset();  // reset(p) has already deleted the implementation
    }
}

CSSRadioPower::~CSSRadioPower() = default;

// A handle whose construction could not allocate is a radio that is off and stays off.
int CSSRadioPower::IsOn() { return m_impl ? m_impl->IsOn() : 0; }
void CSSRadioPower::TurnOn() {
    if (m_impl) m_impl->TurnOn();
}
void CSSRadioPower::TurnOff() {
    if (m_impl) m_impl->TurnOff();
}
