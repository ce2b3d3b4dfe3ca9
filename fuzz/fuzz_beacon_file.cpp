// Fuzzes the beacon list loader on files of any bytes, and every beacon's position and
// numbers: no beacon without a line of its own, and every record is freed again.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "platform/host/TextCodec.h"
#include "utils/devices/Beacons.h"

// Memory-backed where the host has it: every run writes the file anew.
static std::string ScratchFolder() { return ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp"; }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string path = ScratchFolder() + "/kiv-fuzz-beacons-" + std::to_string(::getpid()) + ".txt";
    static const std::wstring widePath = kiv_text::FromUtf8(path);
    FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return 0;
    std::fwrite(data, 1, size, f);
    std::fclose(f);

    CKivArray<TBeacon*> beacons;
    if (!LoadBeaconsFile(widePath.c_str(), beacons)) __builtin_trap();
    if (static_cast<size_t>(beacons.GetSize()) > size) __builtin_trap();
    for (TBeacon* b : beacons) {
        double lat = 0, lon = 0;
        b->GetPosition(lat, lon);
        (void)b->GetFrequency();
        (void)b->GetBaudRate();
        (void)b->GetStatus();
        if (b->name.IsEmpty()) __builtin_trap();  // a record is started by its name
    }
    DeleteBeacons(beacons);
    return 0;
}
