// The process-wide settings that every screen reads and the setup dialogs write: plain
// module variables with getters and setters, the code MRU list, the soft keyboard's
// character modes, and the settings file "nurvo.ini" addressed by setting identifier.
#pragma once

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivString.h"
#include "utils/units/UnitTypes.h"

enum TIC_MENU_SYSTEM : int { eMenuSystemStandard = 0, eMenuSystemIcons = 1, eMenuSystemUser = 2 };

// Country 1 is the one localisation that does not use EU style.
enum EKivCountryLocalization : int {
    eCountryNone = 0,
    eCountryUSA = 1,
    eCountryUK = 2,
    eCountryGermany = 3,
    eCountryFrance = 4,
    eCountryOther = 5,
};

// The kinds of entry field that carry a default character mode of the soft keyboard.
enum FIELD_TYPE : int {
    eFieldPointName = 0,
    eFieldCode = 1,
    eFieldDescription = 2,
    eFieldNote = 3,
    eFieldOther = 4,
};

// The soft keyboard's character modes: numbers, upper-case or lower-case letters.
enum CHARACTOR_TYPE : int { eCharNumeric = 0, eCharUpper = 1, eCharLower = 2 };

// Where the main window stood in each of its four layouts ("MainWindow_1" to "_4").
struct LastWindowPositions {
    bool valid;  // cleared on first use; set by whoever stores a position
    int left[4];
    int top[4];
    int right[4];
    int bottom[4];
};

// Options of the advanced debug mode. They start off; the application (or a test)
// switches them for the session, nothing loads them from a file.
struct AdvDbgModeSettings {
    bool verticalScreenDesktopUI = false;
    bool showCommsTrace = false;
};

enum ESounds : int { eSoundClick = 0, eSoundOk = 1, eSoundWarning = 2, eSoundError = 3, eSoundStored = 4 };

// ---- the variables ------------------------------------------------------------------------

void SetTicMenuSystem(TIC_MENU_SYSTEM value);
TIC_MENU_SYSTEM GetTicMenuSystem();
void SetEuStyle(bool value);
bool GetEuStyle();
void SetCountry(EKivCountryLocalization value);
EKivCountryLocalization GetCountry();
void SetBoldFont(bool value);
bool GetBoldFont();
void SetGISMode(bool value);
bool GetGISMode();
void SetCodeControlCodeMode(bool value);
bool GetCodeControlCodeMode();
void SetShowString(bool value);
bool GetShowString();
void SetShowPtlMode(bool value);
bool GetShowPtlMode();
void SetPtlModeRefPoints(int first, int second);
bool GetPtlModeRefPoints(int& first, int& second);
void SetStkIncPtByVal(int value);
int GetStkIncPtByVal();
void SetUseBluetoothTS(bool value);
bool GetUseBluetoothTS();
void SetUseBluetoothGPS(bool value);
bool GetUseBluetoothGPS();
void SetUseInternalBT(bool value);
bool GetUseInternalBT();
void SetUseExternalReceiver(bool value);
bool GetUseExternalReceiver();
void SetExternalRcvPort(int value);
int GetExternalRcvPort();
void SetSelectedBluetoothPort(kiv_df::ECommPort port);
kiv_df::ECommPort GetSelectedBluetoothPort();
void SetSelectedBluetoothPort2(kiv_df::ECommPort port);
kiv_df::ECommPort GetSelectedBluetoothPort2();
void SetSelectedSerialPort(kiv_df::ECommPort port);
kiv_df::ECommPort GetSelectedSerialPort();
void SetShowSecondCtrlCode(bool value);
bool GetShowSecondCtrlCode();
void SetRangeDelimiter(int value);
int GetRangeDelimiter();
void SetShowAlphaKeyMode(bool value);
bool GetShowAlphaKeyMode();
namespace LumaroSettings {
void SensorPortIsSet(bool value);
bool IsSensorPortSet();
}  // namespace LumaroSettings
void SetDoImageStakeout(bool value);
bool GetDoImageStakeout();
void SetMirrorImage(bool value);
bool GetMirrorImage();
void SetBsFsCtrl(void* control);  // not owned
void* GetBsFsCtrl();
void SetLastCalcValue(const CKivStringT& value);
CKivStringT GetLastCalcValue();
void SetEstimateScale(bool value);
bool IsEstimateScaleSet();
void SetUseCalculatedScale(bool value);
bool IsUseCalculatedScaleSet();
void SetResectionAs3D(bool value);
bool IsResection3D();
void Set3DResectionMethodAsSplit(bool value);
bool Is3DResectionMethodSplit();
void SetUseDefaultMeasurementAccuracies(bool value);
bool IsUseDefaultMeasurementAccuraciesChecked();
void SetDistanceError(double value);
double dGetDistanceError();
void SetDistancePPM(double value);
double dGetDistancePPM();
void SetHorizontalError(double value);
double dGetHorizontalError();
void SetVerticalError(double value);
double dGetVerticalError();
void SetVerticalScreenDesktopUI(bool value);
bool IsVerticalScreenDesktopUI();

// ---- code MRU list (oldest first, at most five) --------------------------------------------

int GetCodeMRUCount();
bool GetCodeMRU(int index, CKivStringT& code);
void SetCodeMRU(const wchar_t* code);
void DelMRUCodeIfExists(const wchar_t* code);

// ---- soft keyboard --------------------------------------------------------------------------

void SetDefaultCharType(FIELD_TYPE field, CHARACTOR_TYPE type);
void CtrlCharByFieldType(FIELD_TYPE field);
// Switches the soft keyboard (window class "Keybord Window") to numbers, upper-case or
// lower-case letters; does nothing when there is no soft keyboard.
void CtrlChar(CHARACTOR_TYPE type);

// ---- records, sounds and the settings file --------------------------------------------------

LastWindowPositions& GetLastWindowPositions();
AdvDbgModeSettings& AdvDbgMode();
// Plays one of the application's sounds; on the host the request is logged at debug level.
void Sound(ESounds sound);

// The settings file "nurvo.ini" in the user-settings folder, read and written by setting
// identifier. Every call reads or rewrites the file, so another process or a later run
// sees each write. Values are stored as text: integers in decimal, doubles in the
// shortest form that reads back to the same double, booleans as "1" and "0" (reading
// also takes "true" and "false"), text as it stands. Unknown identifiers read the default
// and refuse to write.
class ITICGlobalSettings : public SharedHeapObject {
public:
    virtual ~ITICGlobalSettings() = default;
    // The file's (section, key) of an identifier; false for an unknown identifier.
    virtual bool GetSectionAndKey(int id, CKivStringT& section, CKivStringT& key) const = 0;
    virtual int ReadInt(int id, int defaultValue) = 0;
    virtual double ReadDouble(int id, double defaultValue) = 0;
    virtual CKivStringT ReadString(int id, const CKivStringT& defaultValue) = 0;
    virtual bool ReadBool(int id, bool defaultValue) = 0;
    virtual bool WriteInt(int id, int value) = 0;
    virtual bool WriteDouble(int id, double value) = 0;
    virtual bool WriteString(int id, const CKivStringT& value) = 0;
    virtual bool WriteBool(int id, bool value) = 0;
    // The full device path of the file.
    virtual CKivStringT GetFilePath() const = 0;
};

ITICGlobalSettings* GetTICGlobalSettings();
