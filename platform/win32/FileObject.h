// Internal to the win32 library: the kernel object behind a file handle, shared by the
// file family (which opens it) and the memory family (which maps it).
#pragma once

#include <unistd.h>

#include <memory>

#include "platform/win32/Handles.h"

namespace kiv_win32::detail {

class FileObject : public HandleObject {
public:
    FileObject(int fd, bool reads, bool writes) : fd(fd), reads(reads), writes(writes) {}
    ~FileObject() override { ::close(fd); }
    FileObject(const FileObject&) = delete;
    FileObject& operator=(const FileObject&) = delete;
    const int fd;
    const bool reads;
    const bool writes;
};

}  // namespace kiv_win32::detail
