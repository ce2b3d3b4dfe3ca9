// CKivMappedFile: a whole file seen as memory through a file mapping. Reading touches
// only the pages read and copies nothing into the process; a read-write mapping writes
// through to the file; a copy-on-write mapping lets the bytes be changed in memory,
// each changed page becoming the process's own, while the file stays as it is.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/kivutils/Heap.h"
#include "platform/win32/Win32.h"

class CKivMappedFile : public SharedHeapObject {
public:
    enum EAccess {
        eReadOnly,     // the bytes may only be read; writers are kept off the file meanwhile
        eReadWrite,    // changes go to the file; the file may be made longer
        eCopyOnWrite,  // changes stay in memory; writers are kept off the file meanwhile
    };

    CKivMappedFile() = default;
    ~CKivMappedFile() { Close(); }
    CKivMappedFile(const CKivMappedFile&) = delete;
    CKivMappedFile& operator=(const CKivMappedFile&) = delete;

    // Maps the file at `path` (device or host path). eReadOnly and eCopyOnWrite map an
    // existing, non-empty file whole and `size` must be 0. eReadWrite opens the file or
    // makes it, and maps `size` bytes (0: the file's size), making the file that long
    // when it is shorter. While the mapping lives, other handles may read the file but
    // not write it, so nobody can cut it short under the mapping. False, with the
    // object closed and the Win32 error kept in GetError(), when it cannot be done.
    bool Open(const wchar_t* path, EAccess access, std::uint64_t size = 0);
    // Unmaps and lets go of the file; the bytes are no longer reachable.
    void Close();
    bool IsOpen() const { return view_ != nullptr; }

    unsigned char* GetData() const { return static_cast<unsigned char*>(view_); }
    std::size_t GetSize() const { return size_; }
    EAccess GetAccess() const { return access_; }
    DWORD GetError() const { return error_; }

    // Writes the changed bytes of [offset, offset + bytes) to the file and waits until
    // they are there (0 bytes: to the end). True with nothing to do for the other modes.
    bool Flush(std::size_t offset = 0, std::size_t bytes = 0);

private:
    bool Fail();

    HANDLE file_ = INVALID_HANDLE_VALUE;
    HANDLE mapping_ = nullptr;
    void* view_ = nullptr;
    std::size_t size_ = 0;
    EAccess access_ = eReadOnly;
    DWORD error_ = ERROR_SUCCESS;
};
