// The Win32 file family over POSIX: the one place of the platform that knows the host's
// file calls. Share modes are advisory OFD locks on bytes far beyond any file's data,
// so they hold between handles of this process and between processes alike.
#include "platform/win32/Files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <limits>
#include <string>
#include <thread>

#include "platform/host/Host.h"
#include "platform/win32/FileObject.h"

namespace {

// ---- error results ----------------------------------------------------------------------

std::string ParentOf(const std::string& hostPath) {
    const auto slash = hostPath.find_last_of('/');
    if (slash == std::string::npos) return ".";
    if (slash == 0) return "/";
    return hostPath.substr(0, slash);
}

bool IsDirectory(const std::string& hostPath) {
    struct stat st;
    return ::stat(hostPath.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// A missing name is "file not found" when its folder exists and "path not found" when
// the folder itself is missing, which is what callers test to tell the two apart.
DWORD ErrorFromErrno(int error, const std::string& hostPath) {
    switch (error) {
        case ENOENT: return IsDirectory(ParentOf(hostPath)) ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
        case ENOTDIR: return ERROR_PATH_NOT_FOUND;
        case EACCES:
        case EPERM:
        case EROFS:
        case EISDIR: return ERROR_ACCESS_DENIED;
        case EEXIST: return ERROR_ALREADY_EXISTS;
        case ENOSPC:
        case EDQUOT: return ERROR_DISK_FULL;
        case EMFILE:
        case ENFILE: return ERROR_TOO_MANY_OPEN_FILES;
        case ENAMETOOLONG: return ERROR_FILENAME_EXCED_RANGE;
        case ENOTEMPTY: return ERROR_DIR_NOT_EMPTY;
        case EXDEV: return ERROR_NOT_SAME_DEVICE;
        case EBADF: return ERROR_INVALID_HANDLE;
        case EINVAL: return ERROR_INVALID_PARAMETER;
        case ENOMEM: return ERROR_NOT_ENOUGH_MEMORY;
        default: return ERROR_GEN_FAILURE;
    }
}

template <class Result>
Result Fail(DWORD error, Result result) {
    SetLastError(error);
    return result;
}

// ---- paths --------------------------------------------------------------------------------

bool IsDevicePath(LPCWSTR name) { return name[0] == L'\\'; }

// The device root is the device's flash: it is always there, so it is made on first use.
void EnsureDeviceRoot(LPCWSTR name) {
    if (!IsDevicePath(name)) return;
    std::error_code ec;
    std::filesystem::create_directories(kiv_host::GetDeviceRoot(), ec);
}

// The last component as the caller typed it (the mapping may have matched another case).
std::string TypedLastComponent(LPCWSTR name) {
    std::wstring_view path(name);
    while (!path.empty() && (path.back() == L'\\' || path.back() == L'/')) path.remove_suffix(1);
    const auto sep = path.find_last_of(L"\\/");
    return kiv_host::ToHostPath(path.substr(sep == std::wstring_view::npos ? 0 : sep + 1));
}

bool IsReadOnly(const struct stat& st) { return (st.st_mode & 0222) == 0; }

// ---- hidden attribute ---------------------------------------------------------------------

constexpr const char* kHiddenXattr = "user.kiv.hidden";

bool IsHidden(const std::string& hostPath) {
    char value = 0;
    return ::getxattr(hostPath.c_str(), kHiddenXattr, &value, 1) > 0 && value == '1';
}

// File systems without extended attributes simply do not keep the hidden flag.
void SetHidden(const std::string& hostPath, bool hidden) {
    if (hidden) ::setxattr(hostPath.c_str(), kHiddenXattr, "1", 1, 0);
    else ::removexattr(hostPath.c_str(), kHiddenXattr);
}

void SetHidden(int fd, bool hidden) {
    if (hidden) ::fsetxattr(fd, kHiddenXattr, "1", 1, 0);
    else ::fremovexattr(fd, kHiddenXattr);
}

DWORD AttributesOf(const std::string& hostPath, const struct stat& st) {
    // Regular files always read as changed since the last backup: the host keeps no archive bit.
    DWORD attributes = S_ISDIR(st.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
    if (IsReadOnly(st)) attributes |= FILE_ATTRIBUTE_READONLY;
    if (IsHidden(hostPath)) attributes |= FILE_ATTRIBUTE_HIDDEN;
    return attributes;
}

// ---- share modes ----------------------------------------------------------------------------

// Every open handle holds shared locks on the bytes that describe it; a new opener tests
// the bytes its request conflicts with. The bytes lie far beyond any real data.
enum ShareByte : off_t { kHasRead, kHasWrite, kDeniesRead, kDeniesWrite, kDeniesDelete };
constexpr off_t kShareBytesBase = off_t(1) << 62;

struct flock ShareLock(short type, ShareByte byte) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = kShareBytesBase + byte;
    lock.l_len = 1;
    return lock;
}

// A file system without locks shares everything, as the device's own file system would
// if it had no share modes at all.
bool HeldByOthers(int fd, ShareByte byte) {
    auto lock = ShareLock(F_WRLCK, byte);
    return ::fcntl(fd, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

void Hold(int fd, ShareByte byte) {
    auto lock = ShareLock(F_RDLCK, byte);
    ::fcntl(fd, F_OFD_SETLK, &lock);
}

// Test and claim happen under an exclusive flock of the file, so two openers racing
// in different processes cannot both pass the test. A gate held for long (by a program
// that flocks the file for its own ends) is waited for one second, then passed.
class ShareGate {
public:
    explicit ShareGate(int fd) : fd_(fd) {
        for (int attempt = 0; attempt < 1000; ++attempt) {
            if (::flock(fd_, LOCK_EX | LOCK_NB) == 0 || (errno != EWOULDBLOCK && errno != EINTR)) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    ~ShareGate() { ::flock(fd_, LOCK_UN); }
    ShareGate(const ShareGate&) = delete;
    ShareGate& operator=(const ShareGate&) = delete;

private:
    int fd_;
};

bool ClaimShare(int fd, bool reads, bool writes, DWORD share) {
    ShareGate gate(fd);
    const bool conflict = (reads && HeldByOthers(fd, kDeniesRead)) ||
                          (writes && HeldByOthers(fd, kDeniesWrite)) ||
                          (!(share & FILE_SHARE_READ) && HeldByOthers(fd, kHasRead)) ||
                          (!(share & FILE_SHARE_WRITE) && HeldByOthers(fd, kHasWrite));
    if (conflict) return false;
    if (reads) Hold(fd, kHasRead);
    if (writes) Hold(fd, kHasWrite);
    if (!(share & FILE_SHARE_READ)) Hold(fd, kDeniesRead);
    if (!(share & FILE_SHARE_WRITE)) Hold(fd, kDeniesWrite);
    if (!(share & FILE_SHARE_DELETE)) Hold(fd, kDeniesDelete);
    return true;
}

// Renaming or deleting a file is refused while a handle that does not share deletion
// has it open.
bool OpenWithoutDeleteSharing(const std::string& hostPath) {
    const int fd = ::open(hostPath.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) return false;
    const bool held = HeldByOthers(fd, kDeniesDelete);
    ::close(fd);
    return held;
}

// ---- opening ------------------------------------------------------------------------------------

struct OpenRequest {
    DWORD access = 0;
    DWORD share = 0;
    DWORD disposition = 0;
    DWORD attributes = 0;
    bool append = false;
};

using kiv_win32::detail::FileObject;

std::shared_ptr<FileObject> FindFile(HANDLE handle) {
    auto file = kiv_win32::FindHandleAs<FileObject>(handle);
    if (!file) SetLastError(ERROR_INVALID_HANDLE);
    return file;
}

int OpenDescriptor(const std::string& hostPath, int flags, mode_t mode) {
    int fd;
    do {
        fd = ::open(hostPath.c_str(), flags | O_NOCTTY | O_CLOEXEC | O_NONBLOCK, mode);
    } while (fd < 0 && errno == EINTR);
    return fd;
}

// A handle that only writes may open a file that nobody may read.
int OpenForAccess(const std::string& hostPath, int flags, mode_t mode, bool reads) {
    const int fd = OpenDescriptor(hostPath, flags, mode);
    if (fd >= 0 || errno != EACCES || !(flags & O_RDWR) || reads) return fd;
    return OpenDescriptor(hostPath, (flags & ~O_RDWR) | O_WRONLY, mode);
}

// Opens a descriptor as CreateFileW would, claims its share mode and reports the
// Win32 error; -1 on failure.
int OpenShared(LPCWSTR name, const OpenRequest& request) {
    if (!name) return Fail(ERROR_INVALID_PARAMETER, -1);
    if (!*name) return Fail(ERROR_PATH_NOT_FOUND, -1);
    const DWORD how = request.disposition;
    if (how < CREATE_NEW || how > TRUNCATE_EXISTING) return Fail(ERROR_INVALID_PARAMETER, -1);
    const bool reads = request.access & (GENERIC_READ | GENERIC_ALL);
    const bool writes = request.access & (GENERIC_WRITE | GENERIC_ALL);
    if (how == TRUNCATE_EXISTING && !writes) return Fail(ERROR_INVALID_PARAMETER, -1);
    const bool creates = how == CREATE_NEW || how == CREATE_ALWAYS || how == OPEN_ALWAYS;
    if (creates) EnsureDeviceRoot(name);

    const std::string host = kiv_host::ToHostPath(name);
    const bool mayTruncate = how == CREATE_ALWAYS || how == TRUNCATE_EXISTING;
    int flags = writes || mayTruncate ? O_RDWR : O_RDONLY;
    if (request.append) flags |= O_APPEND;
    const mode_t mode = request.attributes & FILE_ATTRIBUTE_READONLY ? 0444 : 0666;
    // Creating exclusively first and opening what is there only when that fails leaves no
    // moment in which another process could make or remove the name between test and open.
    bool created = false;
    int fd = -1;
    for (int attempt = 0; attempt < 16; ++attempt) {
        if (creates) {
            fd = OpenForAccess(host, flags | O_CREAT | O_EXCL, mode, reads);
            if (fd >= 0) {
                created = true;
                break;
            }
            if (errno != EEXIST) break;
            if (how == CREATE_NEW) return Fail(IsDirectory(host) ? ERROR_ACCESS_DENIED : ERROR_FILE_EXISTS, -1);
        }
        fd = OpenForAccess(host, flags, mode, reads);
        if (fd >= 0 || errno != ENOENT || !creates) break;  // else removed meanwhile: create it
    }
    if (fd < 0) return Fail(ErrorFromErrno(errno, host), -1);

    struct stat opened;
    if (::fstat(fd, &opened) != 0 || !S_ISREG(opened.st_mode)) {
        ::close(fd);  // folders, devices, pipes and sockets are not files of the device
        return Fail(ERROR_ACCESS_DENIED, -1);
    }
    const bool truncates = !created && mayTruncate;
    // The read-only attribute binds everybody, also a host user who could override it.
    if (!created && IsReadOnly(opened) && (writes || truncates)) {
        ::close(fd);
        return Fail(ERROR_ACCESS_DENIED, -1);
    }
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    if (!ClaimShare(fd, reads, writes, request.share)) {
        ::close(fd);
        return Fail(ERROR_SHARING_VIOLATION, -1);
    }
    if (truncates && ::ftruncate(fd, 0) != 0) {
        const int error = errno;
        ::close(fd);
        return Fail(ErrorFromErrno(error, host), -1);
    }
    // A file made anew takes the attributes asked for, also when it replaces an old one
    // (whose hidden and read-only flags go with its content); a truncated one keeps its own.
    const bool hidden = request.attributes & FILE_ATTRIBUTE_HIDDEN;
    if (created && hidden) SetHidden(fd, true);
    if (!created && how == CREATE_ALWAYS) {
        SetHidden(fd, hidden);
        if (request.attributes & FILE_ATTRIBUTE_READONLY) {
            ::fchmod(fd, opened.st_mode & 07777 & ~mode_t(0222));  // this handle still writes
        }
    }
    SetLastError(!created && (how == CREATE_ALWAYS || how == OPEN_ALWAYS) ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return fd;
}

// _wfopen's mode: r, w or a, then any of + b t x (and the CRT's c n N S R T D, ignored).
bool ParseStreamMode(const wchar_t* mode, OpenRequest& request, std::string& stdioMode) {
    if (!mode) return false;
    bool plus = false, exclusive = false;
    const wchar_t kind = mode[0];
    for (const wchar_t* m = mode + (kind ? 1 : 0); *m; ++m) {
        if (*m == L'+') plus = true;
        else if (*m == L'x') exclusive = true;
        else if (*m == L',') break;  // ",ccs=" encodings are not supported: streams are bytes
    }
    request.share = FILE_SHARE_READ | FILE_SHARE_WRITE;
    switch (kind) {
        case L'r':
            request.access = GENERIC_READ | (plus ? GENERIC_WRITE : 0);
            request.disposition = OPEN_EXISTING;
            break;
        case L'w':
            request.access = GENERIC_WRITE | (plus ? GENERIC_READ : 0);
            request.disposition = exclusive ? CREATE_NEW : CREATE_ALWAYS;
            break;
        case L'a':
            request.access = GENERIC_WRITE | (plus ? GENERIC_READ : 0);
            request.disposition = OPEN_ALWAYS;
            request.append = true;
            break;
        default: return false;
    }
    stdioMode.assign(1, static_cast<char>(kind));
    if (plus) stdioMode += '+';
    stdioMode += 'b';
    return true;
}

int ErrnoFromWin32(DWORD error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND: return ENOENT;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS: return EEXIST;
        case ERROR_INVALID_PARAMETER: return EINVAL;
        case ERROR_TOO_MANY_OPEN_FILES: return EMFILE;
        case ERROR_DISK_FULL: return ENOSPC;
        default: return EACCES;
    }
}

}  // namespace

HANDLE CreateFileW(LPCWSTR fileName, DWORD desiredAccess, DWORD shareMode, LPSECURITY_ATTRIBUTES,
                   DWORD creationDisposition, DWORD flagsAndAttributes, HANDLE) {
    OpenRequest request;
    request.access = desiredAccess;
    request.share = shareMode;
    request.disposition = creationDisposition;
    request.attributes = flagsAndAttributes;
    const int fd = OpenShared(fileName, request);
    if (fd < 0) return INVALID_HANDLE_VALUE;
    const DWORD result = GetLastError();  // ERROR_ALREADY_EXISTS survives the table insert
    const bool reads = desiredAccess & (GENERIC_READ | GENERIC_ALL);
    const bool writes = desiredAccess & (GENERIC_WRITE | GENERIC_ALL);
    HANDLE handle = kiv_win32::AddHandle(std::make_shared<FileObject>(fd, reads, writes));
    SetLastError(result);
    return handle;
}

BOOL ReadFile(HANDLE handle, LPVOID buffer, DWORD bytesToRead, LPDWORD bytesRead, LPOVERLAPPED overlapped) {
    if (bytesRead) *bytesRead = 0;
    auto file = FindFile(handle);
    if (!file) return FALSE;
    if (overlapped || (!buffer && bytesToRead)) return Fail(ERROR_INVALID_PARAMETER, FALSE);
    if (!file->reads) return Fail(ERROR_ACCESS_DENIED, FALSE);
    auto* out = static_cast<char*>(buffer);
    DWORD done = 0;
    while (done < bytesToRead) {
        const ssize_t n = ::read(file->fd, out + done, bytesToRead - done);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            if (bytesRead) *bytesRead = done;
            return Fail(ErrorFromErrno(errno, ""), FALSE);
        }
        if (n == 0) break;  // end of file: success with fewer bytes
        done += static_cast<DWORD>(n);
    }
    if (bytesRead) *bytesRead = done;
    return TRUE;
}

BOOL WriteFile(HANDLE handle, LPCVOID buffer, DWORD bytesToWrite, LPDWORD bytesWritten,
               LPOVERLAPPED overlapped) {
    if (bytesWritten) *bytesWritten = 0;
    auto file = FindFile(handle);
    if (!file) return FALSE;
    if (overlapped || (!buffer && bytesToWrite)) return Fail(ERROR_INVALID_PARAMETER, FALSE);
    if (!file->writes) return Fail(ERROR_ACCESS_DENIED, FALSE);
    const auto* in = static_cast<const char*>(buffer);
    DWORD done = 0;
    while (done < bytesToWrite) {
        const ssize_t n = ::write(file->fd, in + done, bytesToWrite - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            if (bytesWritten) *bytesWritten = done;
            return Fail(n == 0 ? ERROR_DISK_FULL : ErrorFromErrno(errno, ""), FALSE);
        }
        done += static_cast<DWORD>(n);
    }
    if (bytesWritten) *bytesWritten = done;
    return TRUE;
}

DWORD SetFilePointer(HANDLE handle, LONG distance, PLONG distanceHigh, DWORD moveMethod) {
    auto file = FindFile(handle);
    if (!file) return INVALID_SET_FILE_POINTER;
    static_assert(sizeof(off_t) == 8, "64-bit file offsets");
    const off_t move = distanceHigh
                           ? static_cast<off_t>((static_cast<std::uint64_t>(static_cast<std::uint32_t>(*distanceHigh)) << 32) |
                                                static_cast<std::uint32_t>(distance))
                           : static_cast<off_t>(distance);
    int whence;
    switch (moveMethod) {
        case FILE_BEGIN: whence = SEEK_SET; break;
        case FILE_CURRENT: whence = SEEK_CUR; break;
        case FILE_END: whence = SEEK_END; break;
        default: return Fail(ERROR_INVALID_PARAMETER, INVALID_SET_FILE_POINTER);
    }
    const off_t from = whence == SEEK_SET ? 0 : ::lseek(file->fd, 0, whence);
    if (from < 0) return Fail(ErrorFromErrno(errno, ""), INVALID_SET_FILE_POINTER);
    if (move < 0 && from + move < 0) return Fail(ERROR_NEGATIVE_SEEK, INVALID_SET_FILE_POINTER);
    if (move > 0 && from > std::numeric_limits<off_t>::max() - move) {
        return Fail(ERROR_INVALID_PARAMETER, INVALID_SET_FILE_POINTER);
    }
    // Without a high word the position must fit the low one, short of the failure value.
    if (!distanceHigh && from + move >= off_t(INVALID_SET_FILE_POINTER)) {
        return Fail(ERROR_INVALID_PARAMETER, INVALID_SET_FILE_POINTER);
    }
    const off_t position = ::lseek(file->fd, from + move, SEEK_SET);
    if (position < 0) return Fail(ErrorFromErrno(errno, ""), INVALID_SET_FILE_POINTER);
    if (distanceHigh) *distanceHigh = static_cast<LONG>(static_cast<std::uint64_t>(position) >> 32);
    SetLastError(NO_ERROR);  // callers tell a genuine 0xFFFFFFFF position by this
    return static_cast<DWORD>(position);
}

DWORD GetFileSize(HANDLE handle, LPDWORD fileSizeHigh) {
    auto file = FindFile(handle);
    if (!file) return INVALID_FILE_SIZE;
    struct stat st;
    if (::fstat(file->fd, &st) != 0) return Fail(ErrorFromErrno(errno, ""), INVALID_FILE_SIZE);
    const auto size = static_cast<std::uint64_t>(st.st_size);
    if (fileSizeHigh) *fileSizeHigh = static_cast<DWORD>(size >> 32);
    SetLastError(NO_ERROR);
    return static_cast<DWORD>(size);
}

BOOL SetEndOfFile(HANDLE handle) {
    auto file = FindFile(handle);
    if (!file) return FALSE;
    if (!file->writes) return Fail(ERROR_ACCESS_DENIED, FALSE);
    const off_t position = ::lseek(file->fd, 0, SEEK_CUR);
    if (position < 0 || ::ftruncate(file->fd, position) != 0) return Fail(ErrorFromErrno(errno, ""), FALSE);
    return TRUE;
}

BOOL FlushFileBuffers(HANDLE handle) {
    auto file = FindFile(handle);
    if (!file) return FALSE;
    if (::fsync(file->fd) != 0) return Fail(ErrorFromErrno(errno, ""), FALSE);
    return TRUE;
}

DWORD GetFileAttributesW(LPCWSTR fileName) {
    if (!fileName) return Fail(ERROR_INVALID_PARAMETER, INVALID_FILE_ATTRIBUTES);
    if (!*fileName) return Fail(ERROR_PATH_NOT_FOUND, INVALID_FILE_ATTRIBUTES);
    const std::string host = kiv_host::ToHostPath(fileName);
    struct stat st;
    if (::stat(host.c_str(), &st) != 0) return Fail(ErrorFromErrno(errno, host), INVALID_FILE_ATTRIBUTES);
    return AttributesOf(host, st);
}

BOOL SetFileAttributesW(LPCWSTR fileName, DWORD attributes) {
    if (!fileName) return Fail(ERROR_INVALID_PARAMETER, FALSE);
    if (!*fileName) return Fail(ERROR_PATH_NOT_FOUND, FALSE);
    const std::string host = kiv_host::ToHostPath(fileName);
    struct stat st;
    if (::stat(host.c_str(), &st) != 0) return Fail(ErrorFromErrno(errno, host), FALSE);
    const mode_t permissions = st.st_mode & 07777;
    // Folders have no read-only attribute of their own: what they contain stays writable.
    const mode_t wanted = S_ISDIR(st.st_mode) ? permissions
                          : attributes & FILE_ATTRIBUTE_READONLY
                              ? permissions & ~mode_t(0222)
                              : (IsReadOnly(st) ? permissions | S_IWUSR : permissions);
    if (wanted != permissions && ::chmod(host.c_str(), wanted) != 0) {
        return Fail(ErrorFromErrno(errno, host), FALSE);
    }
    SetHidden(host, attributes & FILE_ATTRIBUTE_HIDDEN);
    return TRUE;
}

BOOL MoveFileExW(LPCWSTR existingName, LPCWSTR newName, DWORD flags) {
    if (!existingName || !newName) return Fail(ERROR_INVALID_PARAMETER, FALSE);
    if (!*existingName || !*newName) return Fail(ERROR_PATH_NOT_FOUND, FALSE);
    const std::string from = kiv_host::ToHostPath(existingName);
    struct stat source;
    if (::lstat(from.c_str(), &source) != 0) return Fail(ErrorFromErrno(errno, from), FALSE);
    if (S_ISREG(source.st_mode) && OpenWithoutDeleteSharing(from)) return Fail(ERROR_SHARING_VIOLATION, FALSE);

    std::string to = kiv_host::ToHostPath(newName);
    struct stat target;
    if (::lstat(to.c_str(), &target) == 0) {
        if (target.st_dev == source.st_dev && target.st_ino == source.st_ino) {
            to = ParentOf(to) + "/" + TypedLastComponent(newName);  // a change of case only
        } else {
            if (!(flags & MOVEFILE_REPLACE_EXISTING)) return Fail(ERROR_ALREADY_EXISTS, FALSE);
            if (S_ISDIR(target.st_mode) || IsReadOnly(target)) return Fail(ERROR_ACCESS_DENIED, FALSE);
            // Replacing a file that someone holds open without delete sharing is refused
            // as access denied, unlike renaming such a file away (a sharing violation).
            if (S_ISREG(target.st_mode) && OpenWithoutDeleteSharing(to)) return Fail(ERROR_ACCESS_DENIED, FALSE);
        }
    } else if (!(flags & MOVEFILE_REPLACE_EXISTING)) {
        // Refuses a target that appeared since the test instead of replacing it.
        if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return TRUE;
        if (errno != EINVAL && errno != ENOSYS) return Fail(ErrorFromErrno(errno, to), FALSE);
    }
    if (::rename(from.c_str(), to.c_str()) != 0) return Fail(ErrorFromErrno(errno, to), FALSE);
    return TRUE;
}

BOOL MoveFileW(LPCWSTR existingName, LPCWSTR newName) { return MoveFileExW(existingName, newName, 0); }

BOOL DeleteFileW(LPCWSTR fileName) {
    if (!fileName) return Fail(ERROR_INVALID_PARAMETER, FALSE);
    if (!*fileName) return Fail(ERROR_PATH_NOT_FOUND, FALSE);
    const std::string host = kiv_host::ToHostPath(fileName);
    struct stat st;
    if (::lstat(host.c_str(), &st) != 0) return Fail(ErrorFromErrno(errno, host), FALSE);
    if (S_ISDIR(st.st_mode) || IsReadOnly(st)) return Fail(ERROR_ACCESS_DENIED, FALSE);
    if (S_ISREG(st.st_mode) && OpenWithoutDeleteSharing(host)) return Fail(ERROR_SHARING_VIOLATION, FALSE);
    if (::unlink(host.c_str()) != 0) return Fail(ErrorFromErrno(errno, host), FALSE);
    return TRUE;
}

BOOL CreateDirectoryW(LPCWSTR pathName, LPSECURITY_ATTRIBUTES) {
    if (!pathName) return Fail(ERROR_INVALID_PARAMETER, FALSE);
    if (!*pathName) return Fail(ERROR_PATH_NOT_FOUND, FALSE);
    EnsureDeviceRoot(pathName);
    const std::string host = kiv_host::ToHostPath(pathName);
    if (::mkdir(host.c_str(), 0777) != 0) return Fail(ErrorFromErrno(errno, host), FALSE);
    return TRUE;
}

BOOL RemoveDirectoryW(LPCWSTR pathName) {
    if (!pathName) return Fail(ERROR_INVALID_PARAMETER, FALSE);
    if (!*pathName) return Fail(ERROR_PATH_NOT_FOUND, FALSE);
    const std::string host = kiv_host::ToHostPath(pathName);
    if (::rmdir(host.c_str()) != 0) {
        return Fail(errno == ENOTDIR && !IsDirectory(host) ? ERROR_DIRECTORY : ErrorFromErrno(errno, host), FALSE);
    }
    return TRUE;
}

FILE* _wfopen(const wchar_t* fileName, const wchar_t* mode) {
    OpenRequest request;
    std::string stdioMode;
    if (!fileName || !ParseStreamMode(mode, request, stdioMode)) {
        errno = EINVAL;
        return Fail(ERROR_INVALID_PARAMETER, static_cast<FILE*>(nullptr));
    }
    const int fd = OpenShared(fileName, request);
    if (fd < 0) {
        errno = ErrnoFromWin32(GetLastError());
        return nullptr;
    }
    FILE* stream = ::fdopen(fd, stdioMode.c_str());
    if (!stream) {
        const int error = errno;
        ::close(fd);
        errno = error;
        return Fail(ERROR_NOT_ENOUGH_MEMORY, static_cast<FILE*>(nullptr));
    }
    return stream;
}

namespace {

// FILETIME counts 100-nanosecond intervals since 1601-01-01 UTC; the host counts from 1970.
constexpr std::uint64_t kFileTimeOf1970 = 116444736000000000ull;

FILETIME FileTimeOf(const struct timespec& at) {
    const std::uint64_t ticks = kFileTimeOf1970 + static_cast<std::uint64_t>(at.tv_sec) * 10000000ull +
                                static_cast<std::uint64_t>(at.tv_nsec) / 100;
    return FILETIME{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

}  // namespace

BOOL GetDiskFreeSpaceExW(LPCWSTR directoryName, PULARGE_INTEGER freeBytesAvailableToCaller,
                         PULARGE_INTEGER totalNumberOfBytes, PULARGE_INTEGER totalNumberOfFreeBytes) {
    if (directoryName && !*directoryName) return Fail(ERROR_PATH_NOT_FOUND, FALSE);
    if (directoryName) EnsureDeviceRoot(directoryName);
    const std::string host = directoryName ? kiv_host::ToHostPath(directoryName) : std::string(".");
    struct statvfs volume;
    if (::statvfs(host.c_str(), &volume) != 0) return Fail(ErrorFromErrno(errno, host), FALSE);
    const std::uint64_t unit = volume.f_frsize ? volume.f_frsize : volume.f_bsize;
    if (freeBytesAvailableToCaller) freeBytesAvailableToCaller->QuadPart = unit * volume.f_bavail;
    if (totalNumberOfBytes) totalNumberOfBytes->QuadPart = unit * volume.f_blocks;
    if (totalNumberOfFreeBytes) totalNumberOfFreeBytes->QuadPart = unit * volume.f_bfree;
    return TRUE;
}

BOOL GetFileAttributesExW(LPCWSTR fileName, GET_FILEEX_INFO_LEVELS infoLevel, LPVOID fileInformation) {
    if (!fileName || !fileInformation || infoLevel != GetFileExInfoStandard) {
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    if (!*fileName) return Fail(ERROR_PATH_NOT_FOUND, FALSE);
    const std::string host = kiv_host::ToHostPath(fileName);
    struct statx st;
    if (::statx(AT_FDCWD, host.c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &st) != 0) {
        return Fail(ErrorFromErrno(errno, host), FALSE);
    }
    struct stat basic {};
    basic.st_mode = st.stx_mode;  // all that the attributes are made of
    auto* data = static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(fileInformation);
    data->dwFileAttributes = AttributesOf(host, basic);
    const auto timeOf = [](const struct statx_timestamp& t) {
        return FileTimeOf(timespec{static_cast<time_t>(t.tv_sec), static_cast<long>(t.tv_nsec)});
    };
    data->ftLastWriteTime = timeOf(st.stx_mtime);
    data->ftLastAccessTime = timeOf(st.stx_atime);
    // File systems that keep no birth time give the last change of the file instead.
    data->ftCreationTime = (st.stx_mask & STATX_BTIME) ? timeOf(st.stx_btime) : timeOf(st.stx_ctime);
    const std::uint64_t size = S_ISDIR(st.stx_mode) ? 0 : st.stx_size;  // folders have no size of their own
    data->nFileSizeHigh = static_cast<DWORD>(size >> 32);
    data->nFileSizeLow = static_cast<DWORD>(size);
    return TRUE;
}
