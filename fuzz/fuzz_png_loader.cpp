// Fuzzes the PNG loader on any bytes after the PNG signature: no crash, no read past
// the input, and a picture only of the size the file states.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "platform/win32/PictureFiles.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::uint8_t signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<std::uint8_t> file(signature, signature + 8);
    // Inputs that already carry the signature are taken as they are.
    if (size >= 8 && std::memcmp(data, signature, 8) == 0) file.clear();
    file.insert(file.end(), data, data + size);
    HBITMAP b = kiv_host::DecodePicture(file.data(), file.size());
    if (!b) return 0;
    BITMAP bm{};
    if (GetObjectW(b, sizeof bm, &bm) != static_cast<int>(sizeof bm) || bm.bmWidth <= 0 || bm.bmHeight <= 0)
        __builtin_trap();
    DeleteObject(b);
    return 0;
}
