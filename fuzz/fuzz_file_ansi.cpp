// Fuzzes CFileAnsi on files of any bytes: every line comes out of the file's own bytes,
// and the reader always reaches the end.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "platform/host/TextCodec.h"
#include "platform/kivutils/FileAnsi.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string path = "/tmp/kiv-fuzz-file-ansi-" + std::to_string(::getpid()) + ".txt";
    static const std::wstring widePath = kiv_text::FromUtf8(path);
    FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return 0;
    std::fwrite(data, 1, size, f);
    std::fclose(f);

    CFileAnsi file;
    if (!file.Open(widePath.c_str())) __builtin_trap();
    CKivStringT line;
    size_t lines = 0, characters = 0;
    int n;
    while ((n = file.ReadNextNonBlankWCLine(line)) > 0) {
        if (n != line.GetLength()) __builtin_trap();
        ++lines;
        characters += static_cast<size_t>(n);
    }
    if (n != 0 || lines > size || characters > size) __builtin_trap();
    return 0;
}
