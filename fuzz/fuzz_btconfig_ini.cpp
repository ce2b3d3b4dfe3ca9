// Fuzzes the reader of the older handheld's "BtConfig.ini": records of any claimed
// length, truncated files, huge counts. The answer is always port 0, 1 or 2.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "platform/host/TextCodec.h"
#include "utils/devices/BluetoothRegistry.h"

// Memory-backed where the host has it: every run writes the file anew.
static std::string ScratchFolder() { return ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp"; }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string path = ScratchFolder() + "/kiv-fuzz-btconfig-" + std::to_string(::getpid()) + ".ini";
    static const std::wstring widePath = kiv_text::FromUtf8(path);
    FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return 0;
    std::fwrite(data, 1, size, f);
    std::fclose(f);
    const int port = GetBtConfigIniPort(widePath.c_str());
    if (port < 0 || port > 2) __builtin_trap();
    return 0;
}
