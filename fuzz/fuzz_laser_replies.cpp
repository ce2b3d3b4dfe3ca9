// Fuzzes the four laser reply parsers on one reply each: every result is one of the
// parser's answers, nothing is read or written past the reply, and an accepted data
// reply names a channel and slot from 1 to 4.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "utils/devices/LumaroParams.h"

using namespace LumaroParams;

namespace {
// The reply as the device link hands it over: NUL-terminated, in a buffer of its own
// size, so that the sanitizer sees any access past it.
std::vector<char> Copy(const uint8_t* data, size_t size) {
    std::vector<char> reply(data, data + size);
    reply.push_back('\0');
    return reply;
}
void Check(EParseError e) {
    if (e < ParseOk || e > ParseChecksumError) __builtin_trap();
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<char> reply = Copy(data, size);
    std::vector<char> payload(reply.size());
    int channel = -100, slot = -100;
    const EParseError e = ParseTransmitterData(reply.data(), &channel, &slot, payload.data());
    Check(e);
    if (e == ParseOk && (channel < 0 || channel > 3 || slot < 0 || slot > 3 || std::strlen(payload.data()) >= reply.size()))
        __builtin_trap();

    CKivStringT version;
    reply = Copy(data, size);
    Check(ParseTransmitterVersion(reply.data(), version));
    if (static_cast<size_t>(version.GetLength()) > size) __builtin_trap();
    reply = Copy(data, size);
    Check(ParseSensorVersion(reply.data(), version));
    reply = Copy(data, size);
    Check(ParseSensorData(reply.data()));
    return 0;
}
