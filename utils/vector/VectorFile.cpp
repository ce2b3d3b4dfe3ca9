// Bounded whole-file reads and sibling-temporary-file writes over the C library, with
// device paths mapped by the host.
#include "utils/vector/VectorFile.h"

#include <climits>
#include <new>

#include "platform/host/Host.h"

namespace kiv_vector_detail {

bool readWholeFile(const wchar_t* path, std::size_t maxBytes, std::shared_ptr<unsigned char[]>& bytes,
                   std::size_t& size) {
    if (path == nullptr) return false;
    std::FILE* file = std::fopen(kiv_host::ToHostPath(path).c_str(), "rb");
    if (file == nullptr) return false;
    bool ok = false;
    long length = -1;
    if (std::fseek(file, 0, SEEK_END) == 0) length = std::ftell(file);
    if (length >= 0 && static_cast<unsigned long>(length) <= maxBytes && std::fseek(file, 0, SEEK_SET) == 0) {
        const auto count = static_cast<std::size_t>(length);
        std::shared_ptr<unsigned char[]> buffer(new (std::nothrow) unsigned char[count == 0 ? 1 : count]);
        if (buffer && std::fread(buffer.get(), 1, count, file) == count) {
            bytes = std::move(buffer);
            size = count;
            ok = true;
        }
    }
    std::fclose(file);
    return ok;
}

AtomicFileWriter::AtomicFileWriter(const wchar_t* path)
    : target_(path ? kiv_host::ToHostPath(path) : std::string()), temporary_(target_ + ".kivtmp") {}

AtomicFileWriter::~AtomicFileWriter() { abandon(); }

bool AtomicFileWriter::open() {
    if (file_ != nullptr) return true;
    if (target_.empty()) return false;
    file_ = std::fopen(temporary_.c_str(), "wb");
    failed_ = false;
    return file_ != nullptr;
}

bool AtomicFileWriter::seek(std::size_t offset) {
    if (file_ == nullptr || offset > static_cast<std::size_t>(LONG_MAX)) return false;
    return std::fseek(file_, static_cast<long>(offset), SEEK_SET) == 0 &&
           std::ftell(file_) == static_cast<long>(offset);
}

bool AtomicFileWriter::write(const void* data, std::size_t bytes) {
    if (file_ == nullptr) return false;
    if (bytes == 0) return true;
    const bool ok = data != nullptr && std::fwrite(data, 1, bytes, file_) == bytes;
    if (!ok) failed_ = true;
    return ok;
}

bool AtomicFileWriter::commit() {
    if (file_ == nullptr) return false;
    const bool flushed = std::fflush(file_) == 0 && !std::ferror(file_);
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (failed_ || !flushed || !closed || std::rename(temporary_.c_str(), target_.c_str()) != 0) {
        std::remove(temporary_.c_str());
        return false;
    }
    return true;
}

void AtomicFileWriter::abandon() {
    if (file_ == nullptr) return;
    std::fclose(file_);
    file_ = nullptr;
    std::remove(temporary_.c_str());
}

}  // namespace kiv_vector_detail
