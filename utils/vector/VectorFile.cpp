// Bounded whole-file reads and sibling-temporary-file writes over CreateFileW, ReadFile,
// WriteFile, FlushFileBuffers and MoveFileExW.
#include "utils/vector/VectorFile.h"

#include <new>
#include <string>

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

AtomicFileWriter::AtomicFileWriter(const wchar_t* path) : target_(path ? path : L"") {}

AtomicFileWriter::~AtomicFileWriter() { abandon(); }

bool AtomicFileWriter::targetCanBeCreated() const {
    const DWORD attributes = GetFileAttributesW(target_.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return true;  // absent: its folder is tried with the temporary file
    if (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return false;
    }
    // An existing file is opened for writing as creating it would open it, but without
    // truncating: a file held by a reader that denies writing refuses here too.
    HANDLE probe = CreateFileW(target_.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                               FILE_ATTRIBUTE_ARCHIVE, nullptr);
    if (probe == INVALID_HANDLE_VALUE) return false;
    CloseHandle(probe);
    return true;
}

bool AtomicFileWriter::open() {
    if (isOpen()) return true;
    if (target_.empty()) return false;
    // Refuses wherever creating the target itself would fail, before any byte is written
    // and before the caller changes anything: a read-only file, a folder, a file that a
    // reader holds, a folder that is absent or cannot be written.
    if (!targetCanBeCreated()) return false;
    // The first free sibling name: a name that a folder, a read-only leftover or another
    // writer of the same target occupies is passed over. Where no candidate can even be
    // created for another reason, the folder itself refuses.
    for (int attempt = 0; attempt < kTemporaryNames; ++attempt) {
        std::wstring candidate = target_ + L".kivtmp";
        if (attempt > 0) candidate += std::to_wstring(attempt);
        file_ = CreateFileW(candidate.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                            FILE_ATTRIBUTE_ARCHIVE, nullptr);
        if (isOpen()) {
            temporary_ = std::move(candidate);
            failed_ = false;
            return true;
        }
        if (GetFileAttributesW(candidate.c_str()) == INVALID_FILE_ATTRIBUTES) return false;
    }
    return false;
}

bool AtomicFileWriter::seek(std::size_t offset) {
    if (!isOpen()) return false;
    // A position that cannot be reached leaves a hole where the bytes belonged: the file
    // is then not put in place.
    const bool reached = offset <= 0x7FFFFFFF &&
                         SetFilePointer(file_, static_cast<LONG>(offset), nullptr, FILE_BEGIN) == offset;
    if (!reached) failed_ = true;
    return reached;
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
