// The .reg importer on arbitrary bytes. Whatever it accepts must export, import again
// and export to the very same text: nothing accepted may be lost or altered on a round.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/host/Host.h"
#include "platform/win32/Registry.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    kiv_host::ResetForTesting();
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (!kiv_win32::ImportRegistryText(bytes)) return 0;
    const std::string first = kiv_win32::ExportRegistryText();
    kiv_host::ResetForTesting();
    if (!kiv_win32::ImportRegistryText(first)) std::abort();
    if (kiv_win32::ExportRegistryText() != first) std::abort();
    return 0;
}
