// kiv_host: the knobs of the Linux host that a handheld would have fixed (device root,
// base folders, handheld model, log sink, in-process modules, registry files) and the
// reset that lets each test start from a fresh process-wide state.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace kiv_host {

// ---- device file system -------------------------------------------------------------

// Where device paths (those beginning with '\') live on this host. An empty path
// restores the default: KIV_DEVICE_ROOT, else ${XDG_DATA_HOME:-$HOME/.local/share}/kiv/device.
void SetDeviceRoot(const std::string& hostPath);
std::string GetDeviceRoot();

// Maps a path as the system spells it to a host path: a device path goes under the
// device root with existing components matched case-insensitively; a path that begins
// with '/' is a host path; anything else is relative to the current directory. In both,
// '\' separates components as it does on the device (it is read as '/').
std::string ToHostPath(std::wstring_view devicePath);

// The three base folders as device paths without a trailing backslash. Empty arguments
// restore the defaults (\Program Files\Zeb, \Zeb, \My Documents\Zeb, or KIV_EXE_DIR,
// KIV_ROOT_DIR, KIV_DOCS_DIR).
void SetBaseFolders(const std::wstring& exe, const std::wstring& root, const std::wstring& docs);
std::wstring GetExeFolder();
std::wstring GetRootFolder();
std::wstring GetDocsFolder();

// ---- handheld model -----------------------------------------------------------------

enum class EModel : int { Unknown = 0, Getac, Pellan, Mirel, Dorsk, Ostra, TarvoOld };
void SetModel(EModel model);  // also read from KIV_MODEL (by name) until set
EModel GetModel();

// ---- logging --------------------------------------------------------------------------

// Levels: 0 errors, 1 settings errors and warnings, 2 drawing warnings, 3 debug traces.
constexpr int kLogDebug = 3;

struct LogEntry {
    int level;
    std::string source;
    int line;
    std::wstring text;
};
using LogSink = std::function<void(const LogEntry&)>;

// Receives every log entry; nullptr restores the default sink, which writes entries at
// or below KIV_LOG_LEVEL (default 1) to stderr.
void SetLogSink(LogSink sink);
void Log(int level, std::string_view source, int line, std::wstring_view text);

// ---- in-process modules ---------------------------------------------------------------

using ModuleSymbols = std::map<std::string, void*>;
// A module that LoadLibraryW(name) finds before it searches shared objects.
void RegisterModule(const std::wstring& name, const ModuleSymbols& symbols);

// ---- registry files ---------------------------------------------------------------------

// Load or save the registry in the .reg text format. The import is all or nothing.
bool ImportRegistry(const std::string& hostPath, std::wstring* error = nullptr);
bool ExportRegistry(const std::string& hostPath);

// ---- tests --------------------------------------------------------------------------------

// Forgets every process-wide state: registry, windows, named events, caches, global
// settings, registered modules; restores the default knobs.
void ResetForTesting();

// A module that keeps process-wide state registers how to forget it. Hooks run in
// registration order on every ResetForTesting; registering the same key twice keeps one.
void AddResetHook(const std::string& key, std::function<void()> hook);

}  // namespace kiv_host
