// Whole-file reading and atomic whole-file writing for vector images, over the Win32
// file calls, in one place so that the image library, the entity writer and the
// command line share them. Paths are device paths (or host paths beginning with '/').
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "platform/win32/Win32.h"

namespace kiv_vector_detail {

enum class EReadResult { eRead, eNoFile, eTooLarge, eNoMemory, eReadFailed };

// Opens an existing file for reading (share-read), takes its size, allocates one byte
// array of that size and reads the whole file into it in one read. A file above
// maxBytes is refused before anything is allocated. After a failed read the handle is
// deliberately left open, as the image library has always done.
EReadResult readWholeFile(const wchar_t* path, std::size_t maxBytes, std::shared_ptr<unsigned char[]>& bytes,
                          std::size_t& size);

// Writes a file as a whole: everything goes to a sibling temporary file, and commit()
// flushes it and renames it over the target only when every write succeeded. A crash,
// a full disk, a failed write or a read-only target leaves the old file as it was.
class AtomicFileWriter {
public:
    explicit AtomicFileWriter(const wchar_t* path);
    ~AtomicFileWriter();
    AtomicFileWriter(const AtomicFileWriter&) = delete;
    AtomicFileWriter& operator=(const AtomicFileWriter&) = delete;

    // False, with nothing created, exactly where creating the target itself would fail
    // (a read-only file, a folder, a file a reader holds against writing, an absent or
    // unwritable folder); otherwise the temporary file is open.
    bool open();
    bool isOpen() const { return file_ != INVALID_HANDLE_VALUE; }
    bool seek(std::size_t offset);  // true when the position reached is `offset`
    bool write(const void* data, std::size_t bytes);
    // Flushes, closes and renames; false (the target untouched) when anything failed.
    bool commit();
    // Closes and removes the temporary file; the target stays as it was.
    void abandon();

private:
    static constexpr int kTemporaryNames = 8;
    bool targetCanBeCreated() const;

    std::wstring target_;
    std::wstring temporary_;
    HANDLE file_ = INVALID_HANDLE_VALUE;
    bool failed_ = false;
};

}  // namespace kiv_vector_detail
