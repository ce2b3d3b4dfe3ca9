// LumaroParams: the laser positioning system's transmitters and sensor. Frames commands
// for their line protocol and checks the replies (one-byte checksum behind '@'),
// converts measured heights with the instruments' fixed offsets, keeps the per-channel
// transmitter records in "\LumaroData.ini" and spells the start-up options.
#pragma once

#include <cstddef>

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivString.h"
#include "utils/units/UnitTypes.h"

namespace LumaroParams {

// Channels 1 to 4 are 0 to 3; 4 lets the system pick the channel.
enum ETransmitterChannel : int {
    eChannel1 = 0,
    eChannel2 = 1,
    eChannel3 = 2,
    eChannel4 = 3,
    eChannelAuto = 4,
};

enum EParseError : int {
    ParseOk = 0,
    ParseBadFormat = 1,       // prefix missing, unexpected reply type, channel digits out of range
    ParseTiltOffsetOver = 2,  // the device answered with an error reply (type letter 'e')
    ParseDeviceError = 3,     // the reply begins with "ER"
    ParseChecksumError = 4,   // the checksum behind '@' does not match
};

// Up to 100 ASCII characters and their NUL; zero-filled.
struct DataBlock : SharedHeapObject {
    char text[101] = {};
};

struct CalibrationData : SharedHeapObject {
    DataBlock blocks[4];
};

// A set-up position: three coordinates and the kind of point they describe.
struct PositionRecord : SharedHeapObject {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    int kind = 7;
};

// A value that the user may leave unset.
struct OptionalValue : SharedHeapObject {
    double value = 0.0;
    bool isSet = false;
};

struct StartParams : SharedHeapObject {
    StartParams() = default;
    StartParams(const StartParams&) = default;
    StartParams& operator=(const StartParams&) = default;
    virtual ~StartParams() = default;

    ETransmitterChannel transmitterChannel = eChannelAuto;
    kiv_df::ECommPort sensorPort = static_cast<kiv_df::ECommPort>(4);
    // The four numeric start-up options: what they tune belongs to the positioning
    // screens; only their defaults are the library's.
    double numericOptions[4] = {3.0, 10000.0, 0.1059, 0.3};
    bool transmitterList[4] = {true, true, true, true};
    bool af = false;
    bool selfCalibration = false;
    bool weighting = false;

    static CKivStringT GetTransChannelAsString(ETransmitterChannel channel);
    // Only the first transmitter's switch is spelled: the command takes one on/off word.
    static CKivStringT GetTransListAsString(bool const* const list);
    static CKivStringT GetAfAsString(bool on);
    static CKivStringT GetSelfCalibAsString(bool on);
    static CKivStringT GetWeightingAsString(bool on);
    static char GetSensorPortAsChar(kiv_df::ECommPort port);
};

struct SetSensorParams : SharedHeapObject {
    SetSensorParams() = default;
    SetSensorParams(const SetSensorParams&) = default;
    SetSensorParams& operator=(const SetSensorParams&) = default;
    virtual ~SetSensorParams() = default;

    // The sensor's three set-up numbers, meaningful to the sensor screens only.
    int settings[3] = {0, 4, 9};
    CalibrationData calibration[4];
};

struct KnownPoint : SharedHeapObject {
    KnownPoint() = default;
    KnownPoint(const KnownPoint&) = default;
    KnownPoint& operator=(const KnownPoint&) = default;
    virtual ~KnownPoint() = default;

    int number = 0;
    PositionRecord position;
    OptionalValue height;
    OptionalValue offset;
    int flags = 0;
};

struct TransData : SharedHeapObject {
    bool valid = false;
    CKivStringT serialNumber;
    CKivStringT dataBlocks[4];
    int channel = -1;  // 0 to 3

    void Reset();
};

struct TransPos : SharedHeapObject {
    CKivStringT transmitterName;
    // Set by the application once the user confirmed the height; loading never sets it.
    bool heightSet = false;
    PositionRecord position;  // Reset leaves it: only the constructor zeroes it
    double transmitterHeight = 0.0;
    double knownOffset = 0.0;
    bool vertical = true;     // false: a slant height
    int fixedHeightCode = 0;  // 0: the height was typed in; otherwise the mount's code
    CKivStringT knownPointName;

    void Reset();
};

// Element i of each array belongs to channel i+1.
struct TransInfo : SharedHeapObject {
    TransData data[4];
    TransPos pos[4];

    void Reset();
};

// `out` must hold the command plus 13 bytes; `cmd` and `out` may be the same buffer.
char* MakeTransmitterCommand(char const* cmd, char* out);
char* MakeSensorCommand(char const* cmd, char* out);

// Each takes the reply as NUL-terminated ASCII and cuts its checksum off in place.
// `data` must hold the reply's length.
EParseError ParseTransmitterData(char* reply, int* channel, int* slot, char* data);
EParseError ParseTransmitterVersion(char* reply, CKivStringT& version);
EParseError ParseSensorData(char* reply);
EParseError ParseSensorVersion(char* reply, CKivStringT& version);

double ComputeSensorLenseHeight(double height);
double ComputeTransmitterLaserHeight(double height, bool vertical);
double ComputeTransmitterMarkHeight(double height);
double ComputeTransmitterBaseHeight(double height);

// "\LumaroData.ini" in the session-settings folder (an older "\OrbekData.ini" there is
// renamed to it once). False, with `info` untouched, when there is no file; false with
// every channel reset when its version is not one the system wrote.
bool LoadTransmitterInfo(TransInfo& info);
bool SaveTransmitterInfo(TransInfo const& info);

// The checksum of the line protocol as its two uppercase hexadecimal digits.
void ChecksumDigits(const char* text, size_t length, char digits[2]);

}  // namespace LumaroParams
