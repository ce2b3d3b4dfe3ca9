// The laser line protocol: framing of transmitter and sensor commands, the checks of
// their replies, the instruments' height offsets and the start-up option words.
#include "utils/devices/LumaroParams.h"

#include <cmath>
#include <cstring>
#include <string>

namespace LumaroParams {
namespace {

constexpr char kTransmitterPrefix[] = "%NSP>T%";
constexpr char kSensorPrefix[] = "%NSP>R%";
constexpr size_t kPrefixLength = 7;

unsigned RotateLeft2(unsigned c) { return ((c << 2) & 0xFF) | (c >> 6); }

unsigned Checksum(const char* text, size_t length) {
    unsigned c = 0;
    for (size_t i = 0; i < length; ++i) c = RotateLeft2(c) ^ static_cast<unsigned char>(text[i]);
    c = RotateLeft2(c) ^ 0x40;  // the '@' that closes every line
    return RotateLeft2(c);
}

char* Frame(const char* prefix, const char* cmd, char* out) {
    // The frame is built whole before anything is written, so `cmd` may live in `out`,
    // and it grows with the command: a long command cannot overrun a fixed work area.
    const size_t length = std::strlen(cmd);
    std::string frame;
    frame.reserve(kPrefixLength + length + 6);
    frame.append(prefix, kPrefixLength).append(cmd, length).push_back('@');
    char digits[2];
    ChecksumDigits(cmd, length, digits);
    frame.append(digits, 2).append("\r\n");
    std::memcpy(out, frame.c_str(), frame.size() + 1);
    return out;
}

// The steps every reply parser shares up to the type letter. Returns ParseOk with
// `start` at the prefix, or the parser's answer.
EParseError FindReply(char* reply, const char* prefix, char*& start) {
    if (reply[0] == 'E' && reply[1] == 'R') return ParseDeviceError;
    start = std::strstr(reply, prefix);
    if (!start) return ParseBadFormat;
    // The device names the tilt axis that is out ("X,Y Tilt Offset Over", "X ..." or
    // "Y ..."); every one of them is the same answer to the caller.
    if (start[kPrefixLength] == 'e') return ParseTiltOffsetOver;
    return ParseOk;
}

// Cuts the checksum off at the first '@' after the prefix and checks it over the text
// from the type letter. A reply without '@' is taken unchecked. The comparison is
// case-sensitive: the devices send uppercase digits only.
EParseError CheckChecksum(char* start) {
    char* type = start + kPrefixLength;
    char* at = std::strchr(type, '@');
    if (!at) return ParseOk;
    *at = '\0';
    char digits[2];
    ChecksumDigits(type, static_cast<size_t>(at - type), digits);
    if (at[1] != digits[0] || at[2] != digits[1]) return ParseChecksumError;
    at[1] = at[2] = '\0';
    return ParseOk;
}

// The character at `index` of the reply from the prefix on, NUL past its end.
char At(const char* start, size_t length, size_t index) { return index < length ? start[index] : '\0'; }

EParseError ParseVersion(char* reply, const char* prefix, CKivStringT& version) {
    version.Empty();
    char* start = nullptr;
    EParseError result = FindReply(reply, prefix, start);
    if (result != ParseOk) return result;
    if (start[kPrefixLength] != 'P') return ParseBadFormat;
    if ((result = CheckChecksum(start)) != ParseOk) return result;
    const size_t length = std::strlen(start);
    for (size_t i = 9; i < length && start[i] != ','; ++i) version += static_cast<wchar_t>(static_cast<unsigned char>(start[i]));
    return ParseOk;
}

}  // namespace

void ChecksumDigits(const char* text, size_t length, char digits[2]) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    const unsigned c = Checksum(text, length);
    digits[0] = kHex[c >> 4];
    digits[1] = kHex[c & 0xF];
}

char* MakeTransmitterCommand(char const* cmd, char* out) { return Frame(kTransmitterPrefix, cmd, out); }
char* MakeSensorCommand(char const* cmd, char* out) { return Frame(kSensorPrefix, cmd, out); }

EParseError ParseTransmitterData(char* reply, int* channel, int* slot, char* data) {
    char* start = nullptr;
    EParseError result = FindReply(reply, kTransmitterPrefix, start);
    if (result != ParseOk) return result;
    const char type = start[kPrefixLength];
    if (type != 'Z' && type != 'P' && type != 'J') return ParseBadFormat;
    if ((result = CheckChecksum(start)) != ParseOk) return result;
    if (!channel || !slot || !data) return ParseOk;
    // Prefix, type, separator, channel digit, separator, slot digit, separator, payload.
    // Each number is stored before its range test, as callers read it on failure too.
    const size_t length = std::strlen(start);
    *channel = At(start, length, 9) - '1';
    if (*channel < 0 || *channel > 3) return ParseBadFormat;
    *slot = At(start, length, 11) - '1';
    if (*slot < 0 || *slot > 3) return ParseBadFormat;
    const char* payload = start + (length < 13 ? length : 13);
    std::memcpy(data, payload, std::strlen(payload) + 1);
    return ParseOk;
}

EParseError ParseTransmitterVersion(char* reply, CKivStringT& version) {
    return ParseVersion(reply, kTransmitterPrefix, version);
}

EParseError ParseSensorVersion(char* reply, CKivStringT& version) { return ParseVersion(reply, kSensorPrefix, version); }

EParseError ParseSensorData(char* reply) {
    char* start = nullptr;
    const EParseError result = FindReply(reply, kSensorPrefix, start);
    if (result != ParseOk) return result;
    return CheckChecksum(start);
}

// ---- heights --------------------------------------------------------------------------

namespace {
constexpr double kSensorLensOffset = 0.07;
constexpr double kTransmitterLaserOffset = 0.15;
constexpr double kBaseOffset = 0.073;
constexpr double kSlantRadius = 0.083;
}  // namespace

double ComputeSensorLenseHeight(double height) { return height - kSensorLensOffset; }

double ComputeTransmitterLaserHeight(double height, bool vertical) {
    if (vertical) return (kTransmitterLaserOffset + kBaseOffset) + height;
    // A slant height below the radius has no real vertical; the NaN it gives is the
    // caller's sign that the typed height cannot be right.
    const double sign = height < 0 ? -1.0 : 1.0;
    return sign * std::sqrt(height * height - kSlantRadius * kSlantRadius) + kTransmitterLaserOffset;
}

double ComputeTransmitterMarkHeight(double height) { return height - kTransmitterLaserOffset; }

double ComputeTransmitterBaseHeight(double height) { return (height - kTransmitterLaserOffset) - kBaseOffset; }

// ---- start-up option words -------------------------------------------------------------

CKivStringT StartParams::GetTransChannelAsString(ETransmitterChannel channel) {
    if (channel < eChannel1 || channel > eChannel4) return L"auto";
    CKivStringT text;
    text.Format(L"%d", channel + 1);
    return text;
}

CKivStringT StartParams::GetTransListAsString(bool const* const list) { return list[0] ? L"on" : L"off"; }
CKivStringT StartParams::GetAfAsString(bool on) { return on ? L"on" : L"off"; }
CKivStringT StartParams::GetSelfCalibAsString(bool on) { return on ? L"slf" : L"fix"; }
CKivStringT StartParams::GetWeightingAsString(bool on) { return on ? L"1.0" : L"0.0"; }

char StartParams::GetSensorPortAsChar(kiv_df::ECommPort port) {
    switch (static_cast<int>(port)) {
    case 1: return 'a';
    case 2: return 'b';
    case 3: return 'c';
    default: return 'd';
    }
}

}  // namespace LumaroParams
