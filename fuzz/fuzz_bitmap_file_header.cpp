// Feeds arbitrary bytes, as a file, to the bitmap file header reader and to
// GetBitmapFileSizeFromFile. Whatever the size field claims, the reader may allocate
// and read no more than the file holds, and must hand over a block it really read.
#include <stdlib.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "platform/host/TextCodec.h"
#include "utils/render/BitmapFile.h"

namespace {

// The one scratch file of the run, rewritten for every input.
class ScratchFile {
public:
    ScratchFile() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kivfuzz-bmp-XXXXXX").string();
        const int fd = ::mkstemp(pattern.data());
        if (fd >= 0) {
            ::close(fd);
            path_ = pattern;
            wide_ = kiv_text::FromUtf8(path_);
        }
    }
    ~ScratchFile() {
        if (!path_.empty()) std::remove(path_.c_str());
    }
    bool write(const std::uint8_t* data, std::size_t size) const {
        FILE* file = std::fopen(path_.c_str(), "wb");
        if (file == nullptr) return false;
        const bool whole = std::fwrite(data, 1, size, file) == size;
        return std::fclose(file) == 0 && whole;
    }
    bool ready() const { return !path_.empty(); }
    const wchar_t* wide() const { return wide_.c_str(); }

private:
    std::string path_;
    std::wstring wide_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static ScratchFile scratch;
    if (!scratch.ready() || !scratch.write(data, size)) return 0;
    TBitmapFileHeader header;
    if (ReadBitmapFileHeader(scratch.wide(), header)) {
        if (header.blockBytes + 14 > size || header.blockBytes < 40) std::abort();
        volatile unsigned char last = header.block[header.blockBytes - 1];
        (void)last;
        ReleaseBitmapFileHeader(header);
    }
    GetBitmapFileSizeFromFile(scratch.wide());
    return 0;
}
