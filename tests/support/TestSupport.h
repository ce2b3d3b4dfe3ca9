// Helpers shared by the test suites: a fresh device root in a temporary folder, a log
// capture for the scope of a test, and a locale switch.
#pragma once

#include <string>
#include <vector>

#include "platform/host/Host.h"
#include "platform/win32/Win32.h"

namespace kiv_test {

// Makes a new empty folder, resets the host's process-wide state and points the device
// root at the folder; removes the folder and resets again at the end of the scope.
class TempDeviceRoot {
public:
    TempDeviceRoot();
    ~TempDeviceRoot();
    TempDeviceRoot(const TempDeviceRoot&) = delete;
    TempDeviceRoot& operator=(const TempDeviceRoot&) = delete;
    const std::string& path() const { return path_; }
    // The host path of a device path under this root, e.g. HostPath(L"\\a\\b.txt").
    std::string HostPath(const std::wstring& devicePath) const;

private:
    std::string path_;
};

// Captures every log entry while it lives.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;
    const std::vector<kiv_host::LogEntry>& entries() const { return entries_; }
    size_t count() const { return entries_.size(); }
    void clear() { entries_.clear(); }

private:
    std::vector<kiv_host::LogEntry> entries_;
};

// Switches the process (C and C++ global locale) to `name` for the scope; ok() is false
// when the locale is not installed.
class ScopedLocale {
public:
    explicit ScopedLocale(const char* name);
    ~ScopedLocale();
    bool ok() const { return ok_; }

private:
    std::string previous_;
    bool ok_ = false;
};

// Whether the temporary folder's file system keeps user extended attributes, where the
// hidden flag lives; asked once. Tests of the hidden flag skip where it does not.
bool TempFolderKeepsUserAttributes();

// A window of a plain class (its procedure DefWindowProcW) on this thread: a drawing
// surface, a message target or, with WS_CHILD, an identified control of `parent`.
HWND MakePlainWindow(int width, int height, DWORD style = 0, HWND parent = nullptr, int id = 0,
                     const wchar_t* text = L"");

std::string ReadFileBytes(const std::string& hostPath);
// At most the first `bytes` bytes of the file (for files too large to compare whole).
std::string ReadFileHead(const std::string& hostPath, size_t bytes);
void WriteFileBytes(const std::string& hostPath, const std::string& bytes);

}  // namespace kiv_test

#ifdef _WIN32
#include <cstdlib>
// The C library of Windows sets and clears variables through one call.
inline int setenv(const char* name, const char* value, int) { return _putenv_s(name, value); }
inline int unsetenv(const char* name) { return _putenv_s(name, ""); }
#endif

#include <ostream>

#include "platform/kivutils/KivString.h"

// Lets GoogleTest print the family's strings in failure messages.
std::ostream& operator<<(std::ostream& os, const CKivStringT& text);
