// Fuzzes the INI reader and the writer's promise: whatever the reader makes of any
// bytes, a store the writer accepts reads back identically in every encoding.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/kivutils/IniFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace kiv_settings;
    CThreeTupleStore store;
    ETextEncoding found;
    parseSettingsIni(std::string_view(reinterpret_cast<const char*>(data), size), store, found);
    for (ETextEncoding e : {eEncodingAnsi, eEncodingUtf8, eEncodingUtf16LE, eEncodingUtf8Bom}) {
        std::string bytes;
        if (!formatSettingsIni(store, e, bytes)) continue;
        CThreeTupleStore back;
        ETextEncoding again;
        parseSettingsIni(bytes, back, again);
        if (!(back == store)) __builtin_trap();
        if (e != eEncodingAnsi && again != e) __builtin_trap();
    }
    return 0;
}
