// CSSRadioPower: switches the handheld's built-in SS radio on and off. The handle picks
// once, at construction, how this model does it: through the vendor's device library,
// through the device's power utility program, or not at all.
#pragma once

#include <memory>

#include "platform/kivutils/Heap.h"
#include "platform/win32/Win32.h"

class ISSRadioPowerImpl : public SharedHeapObject {
public:
    virtual ~ISSRadioPowerImpl() = default;
    virtual int IsOn() = 0;  // non-zero when on
    virtual void TurnOn() = 0;
    virtual void TurnOff() = 0;
};

// The vendor's "MirelLib.dll", kept loaded for the handle's life. Every call looks its
// function up again, so a library without a function simply skips that step.
class CSSRadioPowerLibrary : public ISSRadioPowerImpl {
public:
    CSSRadioPowerLibrary();
    ~CSSRadioPowerLibrary() override;
    CSSRadioPowerLibrary(const CSSRadioPowerLibrary&) = delete;
    CSSRadioPowerLibrary& operator=(const CSSRadioPowerLibrary&) = delete;

    int IsOn() override;
    void TurnOn() override;
    void TurnOff() override;

    // The library's switches; each yields 0 when the library or the function is missing.
    int SetSSPowerState(int on);
    int SetSSPowerOn(int on);
    int SetSSStandby(int standby);
    int SetSSInit(int init);
    int GetSSPowerState();
    int GetSSStandby();
    int GetSSPowerOn();
    int GetSSInit();
    int GetSSDsr();

private:
    int CallSet(const wchar_t* function, int value);
    int CallGet(const wchar_t* function);

    HMODULE m_module = nullptr;
};

// The device's "\SystemCF\Utilities\PackEnable.exe"; this model cannot tell whether the
// radio is on, so IsOn answers 0.
class CSSRadioPowerUtility : public ISSRadioPowerImpl {
public:
    int IsOn() override { return 0; }
    void TurnOn() override;
    void TurnOff() override;
};

class CSSRadioPowerNone : public ISSRadioPowerImpl {
public:
    int IsOn() override { return 0; }
    void TurnOn() override {}
    void TurnOff() override {}
};

class CSSRadioPower : public SharedHeapObject {
public:
    CSSRadioPower();
    ~CSSRadioPower();
    // A copy shares the original's implementation: both handles drive the same radio
    // through the same loaded library. The last handle destroys it.
    CSSRadioPower& operator=(const CSSRadioPower& other) = default;

    int IsOn();
    void TurnOn();
    void TurnOff();

private:
    std::shared_ptr<ISSRadioPowerImpl> m_impl;
};
