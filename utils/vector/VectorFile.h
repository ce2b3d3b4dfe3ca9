// Whole-file reading and atomic whole-file writing for vector images, in one place so
// that the image library and the command line share them. Paths are device paths (or
// host paths beginning with '/'), mapped through the host.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace kiv_vector_detail {

// Reads the whole file into one new byte array. False when the file is absent, cannot
// be read completely, or is larger than maxBytes (nothing is allocated then).
bool readWholeFile(const wchar_t* path, std::size_t maxBytes, std::shared_ptr<unsigned char[]>& bytes,
                   std::size_t& size);

// Writes a file as a whole: everything goes to a sibling temporary file, and commit()
// renames it over the target only when every write succeeded. A crash, a full disk or
// a failed write leaves the old file as it was.
class AtomicFileWriter {
public:
    explicit AtomicFileWriter(const wchar_t* path);
    ~AtomicFileWriter();
    AtomicFileWriter(const AtomicFileWriter&) = delete;
    AtomicFileWriter& operator=(const AtomicFileWriter&) = delete;

    bool open();
    bool isOpen() const { return file_ != nullptr; }
    bool seek(std::size_t offset);  // true when the position reached is `offset`
    bool write(const void* data, std::size_t bytes);
    // Flushes, closes and renames; false (the target untouched) when anything failed.
    bool commit();
    // Closes and removes the temporary file; the target stays as it was.
    void abandon();

private:
    std::string target_;
    std::string temporary_;
    std::FILE* file_ = nullptr;
    bool failed_ = false;
};

}  // namespace kiv_vector_detail
