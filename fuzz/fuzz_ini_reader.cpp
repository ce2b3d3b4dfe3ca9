// Fuzzes the INI reader and the writer's promises: whatever the reader makes of any
// bytes can be saved again in the encoding it found, and a store the writer accepts
// reads back identically, in the encoding the writer reports, whatever was asked for.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/kivutils/IniFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace kiv_settings;
    CThreeTupleStore store;
    ETextEncoding found;
    parseSettingsIni(std::string_view(reinterpret_cast<const char*>(data), size), store, found);
    std::string bytes;
    if (!formatSettingsIni(store, found, bytes)) __builtin_trap();
    for (ETextEncoding e : {eEncodingAnsi, eEncodingUtf8, eEncodingUtf16LE, eEncodingUtf8Bom}) {
        ETextEncoding written;
        if (!formatSettingsIni(store, e, bytes, &written)) __builtin_trap();
        if (written != e && written != eEncodingUtf16LE) __builtin_trap();
        CThreeTupleStore back;
        ETextEncoding again;
        parseSettingsIni(bytes, back, again);
        if (!(back == store)) __builtin_trap();
        // ANSI text of nothing but ASCII reads back as UTF-8, which it equally is.
        if (written != eEncodingAnsi && again != written) __builtin_trap();
    }
    return 0;
}
