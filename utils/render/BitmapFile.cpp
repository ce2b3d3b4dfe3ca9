// The bitmap file header reader.
#include "utils/render/BitmapFile.h"

#include <cstdint>
#include <cstring>

#include "platform/kivutils/Heap.h"
#include "platform/win32/Files.h"

namespace {

constexpr std::uint16_t kBitmapFileMagic = 19778;  // 'B', 'M'
constexpr unsigned long kFileHeaderBytes = 14;
constexpr unsigned long kInfoHeaderBytes = 40;

std::uint32_t readLe32(const unsigned char* at) {
    return static_cast<std::uint32_t>(at[0]) | (static_cast<std::uint32_t>(at[1]) << 8) |
           (static_cast<std::uint32_t>(at[2]) << 16) | (static_cast<std::uint32_t>(at[3]) << 24);
}

long fileLength(FILE* file) {
    if (std::fseek(file, 0, SEEK_END) != 0) return -1;
    const long length = std::ftell(file);
    if (std::fseek(file, static_cast<long>(kFileHeaderBytes), SEEK_SET) != 0) return -1;
    return length;
}

}  // namespace

bool ReadBitmapFileHeader(const wchar_t* path, TBitmapFileHeader& header) {
    header = TBitmapFileHeader();
    if (path == nullptr) return false;
    FILE* file = _wfopen(path, L"rb");
    if (file == nullptr) return false;
    unsigned char fileHeader[kFileHeaderBytes];
    if (std::fread(fileHeader, 1, sizeof fileHeader, file) != sizeof fileHeader ||
        (fileHeader[0] | (fileHeader[1] << 8)) != kBitmapFileMagic) {
        std::fclose(file);
        return false;
    }
    const unsigned long size = readLe32(fileHeader + 2);
    const long length = fileLength(file);
    if (size < kFileHeaderBytes + kInfoHeaderBytes || length < 0 || size > static_cast<unsigned long>(length)) {
        std::fclose(file);
        return false;
    }
    const unsigned long bytes = size - kFileHeaderBytes;
    auto* block = static_cast<unsigned char*>(dlmalloc(bytes));
    if (block == nullptr) {
        std::fclose(file);
        return false;
    }
    std::memset(block, 0, bytes);
    if (std::fread(block, 1, bytes, file) != bytes) {
        dlfree(block);
        std::fclose(file);
        return false;
    }
    header = {file, block, bytes};
    return true;
}

void ReleaseBitmapFileHeader(TBitmapFileHeader& header) {
    if (header.block != nullptr) dlfree(header.block);
    if (header.file != nullptr) std::fclose(header.file);
    header = TBitmapFileHeader();
}

unsigned long GetBitmapFileSizeFromFile(const wchar_t* path) {
    TBitmapFileHeader header;
    if (!ReadBitmapFileHeader(path, header)) return 0;
    const auto width = static_cast<std::int32_t>(readLe32(header.block + 4));
    const auto height = static_cast<std::int32_t>(readLe32(header.block + 8));
    ReleaseBitmapFileHeader(header);
    const std::int64_t row = ((std::int64_t{width} + 1) * 3) & ~std::int64_t{3};
    // Multiplied without sign and cut to the device's 32 bits: the same value the
    // device's signed product wraps to, without an overflow here.
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(row) * static_cast<std::uint64_t>(std::int64_t{height}));
}
