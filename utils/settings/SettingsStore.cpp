// The process-wide settings: one plain variable per setting (for the user-interface
// thread, no lock), the coupled setters, the code MRU list and the debug-mode records.
#include "utils/settings/SettingsStore.h"

#include <cstring>
#include <vector>

#include "platform/host/Host.h"
#include "platform/kivutils/KivLog.h"

namespace {

constexpr int kCodeMruSize = 5;
constexpr int kFieldTypes = 5;

struct GlobalSettings {
    TIC_MENU_SYSTEM menuSystem = eMenuSystemStandard;
    bool euStyle = false;
    EKivCountryLocalization country = eCountryUSA;
    bool boldFont = false;
    bool gisMode = false;
    bool codeControlCodeMode = false;
    bool showString = false;
    bool showPtlMode = false;
    int ptlRefFirst = 0;
    int ptlRefSecond = 0;
    int stkIncPtBy = 1;
    bool useBluetoothTS = false;
    bool useBluetoothGPS = false;
    bool useInternalBT = false;
    bool useExternalReceiver = false;
    int externalRcvPort = 0;
    kiv_df::ECommPort bluetoothPort = kiv_df::eCommNone;
    kiv_df::ECommPort bluetoothPort2 = kiv_df::eCommNone;
    kiv_df::ECommPort serialPort = static_cast<kiv_df::ECommPort>(1);
    bool showSecondCtrlCode = false;
    int rangeDelimiter = 0;
    bool showAlphaKeyMode = false;
    bool sensorPortSet = false;
    bool doImageStakeout = false;
    bool mirrorImage = false;
    void* bsFsCtrl = nullptr;
    CKivStringT lastCalcValue;
    bool estimateScale = true;
    bool useCalculatedScale = false;
    bool resection3D = true;
    bool resection3DSplit = true;
    bool useDefaultAccuracies = true;
    double distanceError = 0.003;
    double distancePPM = 3.0;
    double horizontalError = 5.0;
    double verticalError = 10.0;
    bool verticalScreenDesktopUI = false;
    CHARACTOR_TYPE defaultCharTypes[kFieldTypes] = {};
    std::vector<CKivStringT> codeMru;
    LastWindowPositions windowPositions{};
    bool windowPositionsUsed = false;
    AdvDbgModeSettings advDbgMode;
};

GlobalSettings& Globals() {
    static GlobalSettings* globals = [] {
        kiv_host::AddResetHook("utils.settings.globals", [] { Globals() = GlobalSettings(); });
        return new GlobalSettings;
    }();
    return *globals;
}

}  // namespace

void SetTicMenuSystem(TIC_MENU_SYSTEM value) { Globals().menuSystem = value; }
TIC_MENU_SYSTEM GetTicMenuSystem() { return Globals().menuSystem; }
void SetEuStyle(bool value) { Globals().euStyle = value; }
bool GetEuStyle() { return Globals().euStyle; }

void SetCountry(EKivCountryLocalization value) {
    Globals().country = value;
    // Country 1 is the one localisation without EU style; SetEuStyle may still override.
    Globals().euStyle = value != eCountryUSA;
}
EKivCountryLocalization GetCountry() { return Globals().country; }

void SetBoldFont(bool value) { Globals().boldFont = value; }
bool GetBoldFont() { return Globals().boldFont; }
void SetGISMode(bool value) { Globals().gisMode = value; }
bool GetGISMode() { return Globals().gisMode; }
void SetCodeControlCodeMode(bool value) { Globals().codeControlCodeMode = value; }
bool GetCodeControlCodeMode() { return Globals().codeControlCodeMode; }
void SetShowString(bool value) { Globals().showString = value; }
// Deliberate: the stored value is kept but strings are always shown.
bool GetShowString() { return true; }
void SetShowPtlMode(bool value) { Globals().showPtlMode = value; }
bool GetShowPtlMode() { return Globals().showPtlMode; }

void SetPtlModeRefPoints(int first, int second) {
    Globals().ptlRefFirst = first;
    Globals().ptlRefSecond = second;
    // Without two usable reference points the PTL display cannot stay on.
    if (!(first >= 1 && second > 0)) SetShowPtlMode(false);
}

bool GetPtlModeRefPoints(int& first, int& second) {
    first = Globals().ptlRefFirst;
    second = Globals().ptlRefSecond;
    return GetShowPtlMode();
}

void SetStkIncPtByVal(int value) { Globals().stkIncPtBy = value; }
int GetStkIncPtByVal() { return Globals().stkIncPtBy; }
void SetUseBluetoothTS(bool value) { Globals().useBluetoothTS = value; }
bool GetUseBluetoothTS() { return Globals().useBluetoothTS; }
void SetUseBluetoothGPS(bool value) { Globals().useBluetoothGPS = value; }
bool GetUseBluetoothGPS() { return Globals().useBluetoothGPS; }
void SetUseInternalBT(bool value) { Globals().useInternalBT = value; }
bool GetUseInternalBT() { return Globals().useInternalBT; }
void SetUseExternalReceiver(bool value) { Globals().useExternalReceiver = value; }
bool GetUseExternalReceiver() { return Globals().useExternalReceiver; }
void SetExternalRcvPort(int value) { Globals().externalRcvPort = value; }
int GetExternalRcvPort() { return Globals().externalRcvPort; }
void SetSelectedBluetoothPort(kiv_df::ECommPort port) { Globals().bluetoothPort = port; }
kiv_df::ECommPort GetSelectedBluetoothPort() { return Globals().bluetoothPort; }
void SetSelectedBluetoothPort2(kiv_df::ECommPort port) { Globals().bluetoothPort2 = port; }
kiv_df::ECommPort GetSelectedBluetoothPort2() { return Globals().bluetoothPort2; }
void SetSelectedSerialPort(kiv_df::ECommPort port) { Globals().serialPort = port; }
kiv_df::ECommPort GetSelectedSerialPort() { return Globals().serialPort; }
void SetShowSecondCtrlCode(bool value) { Globals().showSecondCtrlCode = value; }
bool GetShowSecondCtrlCode() { return Globals().showSecondCtrlCode; }
void SetRangeDelimiter(int value) { Globals().rangeDelimiter = value; }
int GetRangeDelimiter() { return Globals().rangeDelimiter; }
void SetShowAlphaKeyMode(bool value) { Globals().showAlphaKeyMode = value; }
bool GetShowAlphaKeyMode() { return Globals().showAlphaKeyMode; }

namespace LumaroSettings {
void SensorPortIsSet(bool value) { Globals().sensorPortSet = value; }
bool IsSensorPortSet() { return Globals().sensorPortSet; }
}  // namespace LumaroSettings

void SetDoImageStakeout(bool value) { Globals().doImageStakeout = value; }
bool GetDoImageStakeout() { return Globals().doImageStakeout; }
void SetMirrorImage(bool value) { Globals().mirrorImage = value; }
bool GetMirrorImage() { return Globals().mirrorImage; }
void SetBsFsCtrl(void* control) { Globals().bsFsCtrl = control; }
void* GetBsFsCtrl() { return Globals().bsFsCtrl; }
void SetLastCalcValue(const CKivStringT& value) { Globals().lastCalcValue = value; }
CKivStringT GetLastCalcValue() { return Globals().lastCalcValue; }
void SetEstimateScale(bool value) { Globals().estimateScale = value; }
bool IsEstimateScaleSet() { return Globals().estimateScale; }
void SetUseCalculatedScale(bool value) { Globals().useCalculatedScale = value; }
bool IsUseCalculatedScaleSet() { return Globals().useCalculatedScale; }
void SetResectionAs3D(bool value) { Globals().resection3D = value; }
bool IsResection3D() { return Globals().resection3D; }
void Set3DResectionMethodAsSplit(bool value) { Globals().resection3DSplit = value; }
bool Is3DResectionMethodSplit() { return Globals().resection3DSplit; }
void SetUseDefaultMeasurementAccuracies(bool value) { Globals().useDefaultAccuracies = value; }
bool IsUseDefaultMeasurementAccuraciesChecked() { return Globals().useDefaultAccuracies; }
void SetDistanceError(double value) { Globals().distanceError = value; }
double dGetDistanceError() { return Globals().distanceError; }
void SetDistancePPM(double value) { Globals().distancePPM = value; }
double dGetDistancePPM() { return Globals().distancePPM; }
void SetHorizontalError(double value) { Globals().horizontalError = value; }
double dGetHorizontalError() { return Globals().horizontalError; }
void SetVerticalError(double value) { Globals().verticalError = value; }
double dGetVerticalError() { return Globals().verticalError; }
void SetVerticalScreenDesktopUI(bool value) { Globals().verticalScreenDesktopUI = value; }

bool IsVerticalScreenDesktopUI() {
    // The stored flag alone does not turn the layout on: the debug-mode option decides.
    if (!Globals().verticalScreenDesktopUI) return false;
    return AdvDbgMode().verticalScreenDesktopUI;
}

// ---- code MRU list ---------------------------------------------------------------------------

int GetCodeMRUCount() { return static_cast<int>(Globals().codeMru.size()); }

bool GetCodeMRU(int index, CKivStringT& code) {
    const auto& mru = Globals().codeMru;
    if (index < 0 || index >= static_cast<int>(mru.size())) return false;
    code = mru[static_cast<size_t>(index)];
    return true;
}

void SetCodeMRU(const wchar_t* code) {
    if (code == nullptr || *code == L'\0') return;
    auto& mru = Globals().codeMru;
    // Deliberate: adding compares case-sensitively and leaves a known code where it is.
    for (const CKivStringT& known : mru)
        if (known.Compare(code) == 0) return;
    if (static_cast<int>(mru.size()) >= kCodeMruSize) mru.erase(mru.begin());
    mru.emplace_back(code);
}

void DelMRUCodeIfExists(const wchar_t* code) {
    if (code == nullptr) return;
    auto& mru = Globals().codeMru;
    // Deliberate: deleting ignores case although adding does not.
    for (auto it = mru.begin(); it != mru.end(); ++it)
        if (it->CompareNoCase(code) == 0) {
            mru.erase(it);
            return;
        }
}

// ---- character types and records --------------------------------------------------------

void SetDefaultCharType(FIELD_TYPE field, CHARACTOR_TYPE type) {
    if (field >= 0 && field < kFieldTypes) Globals().defaultCharTypes[field] = type;
}

void CtrlCharByFieldType(FIELD_TYPE field) {
    if (field >= 0 && field < kFieldTypes) CtrlChar(Globals().defaultCharTypes[field]);
}

LastWindowPositions& GetLastWindowPositions() {
    GlobalSettings& g = Globals();
    if (!g.windowPositionsUsed) {
        g.windowPositions.valid = false;
        g.windowPositionsUsed = true;
    }
    return g.windowPositions;
}

AdvDbgModeSettings& AdvDbgMode() { return Globals().advDbgMode; }

void Sound(ESounds sound) {
    static const wchar_t* const names[] = {L"click", L"ok", L"warning", L"error", L"stored"};
    const wchar_t* name = (sound >= 0 && sound <= eSoundStored) ? names[sound] : L"unknown";
    KIV_TRACE_DEBUG(L"Sound: %s (%d)", name, static_cast<int>(sound));
}
