// Bounded whole-file reads and sibling-temporary-file writes over CreateFileW, ReadFile,
// WriteFile, FlushFileBuffers and MoveFileExW.
#include "utils/vector/VectorFile.h"

#include <new>

namespace kiv_vector_detail {

EReadResult readWholeFile(const wchar_t* path, std::size_t maxBytes, std::shared_ptr<unsigned char[]>& bytes,
                          std::size_t& size) {
    if (path == nullptr) return EReadResult::eNoFile;
    HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_ARCHIVE,
                              nullptr);
    if (file == INVALID_HANDLE_VALUE) return EReadResult::eNoFile;
    DWORD high = 0;
    SetLastError(ERROR_SUCCESS);
    const DWORD low = GetFileSize(file, &high);
    const std::uint64_t length = (static_cast<std::uint64_t>(high) << 32) | low;
    if ((low == INVALID_FILE_SIZE && GetLastError() != ERROR_SUCCESS) || length > maxBytes) {
        CloseHandle(file);
        return EReadResult::eTooLarge;
    }
    const auto count = static_cast<std::size_t>(length);
    std::shared_ptr<unsigned char[]> buffer(new (std::nothrow) unsigned char[count == 0 ? 1 : count]);
    if (!buffer) {
        CloseHandle(file);
        return EReadResult::eNoMemory;
    }
    DWORD read = 0;
    if (!ReadFile(file, buffer.get(), static_cast<DWORD>(count), &read, nullptr) || read != count) {
        return EReadResult::eReadFailed;  // the handle deliberately stays open
    }
    CloseHandle(file);
    bytes = std::move(buffer);
    size = count;
    return EReadResult::eRead;
}

AtomicFileWriter::AtomicFileWriter(const wchar_t* path)
    : target_(path ? path : L""), temporary_(target_ + L".kivtmp") {}

AtomicFileWriter::~AtomicFileWriter() { abandon(); }

bool AtomicFileWriter::open() {
    if (isOpen()) return true;
    if (target_.empty()) return false;
    file_ = CreateFileW(temporary_.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                        FILE_ATTRIBUTE_ARCHIVE, nullptr);
    failed_ = false;
    return isOpen();
}

bool AtomicFileWriter::seek(std::size_t offset) {
    if (!isOpen() || offset > 0x7FFFFFFF) return false;
    return SetFilePointer(file_, static_cast<LONG>(offset), nullptr, FILE_BEGIN) == offset;
}

bool AtomicFileWriter::write(const void* data, std::size_t bytes) {
    if (!isOpen()) return false;
    if (bytes == 0) return true;
    DWORD written = 0;
    const bool ok = data != nullptr && bytes <= 0xFFFFFFFFu &&
                    WriteFile(file_, data, static_cast<DWORD>(bytes), &written, nullptr) && written == bytes;
    if (!ok) failed_ = true;
    return ok;
}

bool AtomicFileWriter::commit() {
    if (!isOpen()) return false;
    const bool flushed = FlushFileBuffers(file_);
    CloseHandle(file_);
    file_ = INVALID_HANDLE_VALUE;
    if (failed_ || !flushed || !MoveFileExW(temporary_.c_str(), target_.c_str(), MOVEFILE_REPLACE_EXISTING)) {
        DeleteFileW(temporary_.c_str());
        return false;
    }
    return true;
}

void AtomicFileWriter::abandon() {
    if (!isOpen()) return;
    CloseHandle(file_);
    file_ = INVALID_HANDLE_VALUE;
    DeleteFileW(temporary_.c_str());
}

}  // namespace kiv_vector_detail
