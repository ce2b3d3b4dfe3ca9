// The host's knobs: device root and path mapping, base folders, handheld model, and the
// reset hooks through which every module with process-wide state can be made to forget it.
#include "platform/host/Host.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/host/NeutralLocale.h"
#include "platform/host/TextCodec.h"

namespace kiv_host {
namespace {

struct Knobs {
    std::mutex lock;
    std::optional<std::string> deviceRoot;
    std::optional<std::wstring> exeDir, rootDir, docsDir;
    std::optional<EModel> model;
    std::vector<std::pair<std::string, std::function<void()>>> resetHooks;
};

Knobs& State() {
    static Knobs* knobs = new Knobs;  // never destroyed: used from atexit paths and threads
    return *knobs;
}

std::string Env(const char* name) {
    const char* v = std::getenv(name);
    return v ? std::string(v) : std::string();
}

std::string DefaultDeviceRoot() {
    if (auto v = Env("KIV_DEVICE_ROOT"); !v.empty()) return v;
#ifdef _WIN32
    if (auto local = Env("LOCALAPPDATA"); !local.empty()) return local + "\\kiv\\device";
#endif
    std::string data = Env("XDG_DATA_HOME");
    if (data.empty()) {
        std::string home = Env("HOME");
        data = home.empty() ? std::string("/tmp") : home;
        data.append("/.local/share");
    }
    data.append("/kiv/device");
    return data;
}

std::wstring FolderOrDefault(const std::optional<std::wstring>& set, const char* env, const wchar_t* fallback) {
    if (set && !set->empty()) return *set;
    if (auto v = Env(env); !v.empty()) return kiv_text::FromUtf8(v);
    return fallback;
}

// The device's file system ignores case in every script: letters fold to lower case as
// the family's strings fold them when they compare names.
using kiv_text::FoldCase;

bool SameNameIgnoringCase(std::wstring_view a, std::wstring_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (FoldCase(a[i]) != FoldCase(b[i])) return false;
    return true;
}

// The name under which `component` exists in `dir`: itself when it exists as typed,
// else the first entry equal to it ignoring case, else itself (a name yet to be created).
std::string MatchComponent(const std::string& dir, const std::wstring& component) {
    std::string typed = kiv_text::ToUtf8(component);
#ifdef _WIN32
    // The system's file systems ignore case themselves.
    (void)dir;
    return typed;
#else
    struct stat st;
    std::string candidate = dir;
    candidate.append("/").append(typed);
    if (::lstat(candidate.c_str(), &st) == 0) return typed;
    DIR* d = ::opendir(dir.c_str());
    if (!d) return typed;
    std::string found = typed;
    while (dirent* e = ::readdir(d)) {
        if (SameNameIgnoringCase(kiv_text::FromUtf8(e->d_name), component)) {
            found = e->d_name;
            break;
        }
    }
    ::closedir(d);
    return found;
#endif
}

std::string MapUnderRoot(const std::string& root, std::wstring_view path) {
    std::vector<std::wstring> parts;
    std::wstring part;
    auto flush = [&] {
        if (part.empty() || part == L".") {
        } else if (part == L"..") {
            if (!parts.empty()) parts.pop_back();  // never climbs above the device root
        } else {
            parts.push_back(part);
        }
        part.clear();
    };
    for (wchar_t c : path) {
        if (c == L'\\' || c == L'/') flush();
        else part.push_back(c);
    }
    flush();
    std::string host = root;
    while (host.size() > 1 && host.back() == '/') host.pop_back();
    for (const auto& p : parts) {
        const std::string name = MatchComponent(host, p);
        host.append("/").append(name);
    }
    return host;
}

EModel ModelFromName(const std::string& name) {
    static const std::pair<const char*, EModel> names[] = {
        {"Getac", EModel::Getac}, {"Pellan", EModel::Pellan}, {"Mirel", EModel::Mirel},
        {"Dorsk", EModel::Dorsk}, {"Ostra", EModel::Ostra},   {"TarvoOld", EModel::TarvoOld}};
    for (const auto& [n, m] : names)
        if (SameNameIgnoringCase(kiv_text::FromUtf8(n), kiv_text::FromUtf8(name))) return m;
    return EModel::Unknown;
}

#ifdef _WIN32
// The registry is the system's here. From the first reset on, this process's
// HKEY_LOCAL_MACHINE and HKEY_CURRENT_USER are redirected to keys of its own under
// HKEY_CURRENT_USER\Software\KivHost, emptied on every reset and removed at exit: a test
// sees only what it wrote, and the system's own keys are never touched.
void ResetRegistrySandbox() {
    static HKEY sandbox = [] {
        HKEY key = nullptr;
        const std::wstring path = L"Software\\KivHost\\Test" + std::to_wstring(GetCurrentProcessId());
        if (RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                            &key, nullptr) != ERROR_SUCCESS)
            return static_cast<HKEY>(nullptr);
        std::atexit([] {
            RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
            RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
            RegDeleteTreeW(sandbox, nullptr);
            RegCloseKey(sandbox);
            const std::wstring own = L"Software\\KivHost\\Test" + std::to_wstring(GetCurrentProcessId());
            RegDeleteKeyW(HKEY_CURRENT_USER, own.c_str());
        });
        return key;
    }();
    if (!sandbox) return;
    RegDeleteTreeW(sandbox, nullptr);
    for (const auto& [root, name] : {std::pair{HKEY_LOCAL_MACHINE, L"HKLM"}, std::pair{HKEY_CURRENT_USER, L"HKCU"}}) {
        HKEY key = nullptr;
        if (RegCreateKeyExW(sandbox, name, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr) !=
            ERROR_SUCCESS)
            continue;
        RegOverridePredefKey(root, key);  // keeps a handle of its own
        RegCloseKey(key);
    }
}
#endif

}  // namespace

void SetDeviceRoot(const std::string& hostPath) {
    std::lock_guard g(State().lock);
    if (hostPath.empty()) State().deviceRoot.reset();
    else State().deviceRoot = hostPath;
}

std::string GetDeviceRoot() {
    std::lock_guard g(State().lock);
    return State().deviceRoot ? *State().deviceRoot : DefaultDeviceRoot();
}

std::string ToHostPath(std::wstring_view path) {
    if (!path.empty() && path.front() == L'\\') return MapUnderRoot(GetDeviceRoot(), path);
    std::string host = kiv_text::ToUtf8(path);
    // Callers build paths the device's way, folder + '\' + name, whatever the folder:
    // a host folder (/data/maps\site.vec) or a relative name (sub\a.ini) must still find
    // its file inside the folder, not a file with a backslash in its name beside it.
    std::replace(host.begin(), host.end(), '\\', '/');
    return host;
}

void SetBaseFolders(const std::wstring& exe, const std::wstring& root, const std::wstring& docs) {
    std::lock_guard g(State().lock);
    State().exeDir = exe;
    State().rootDir = root;
    State().docsDir = docs;
}

std::wstring GetExeFolder() {
    std::lock_guard g(State().lock);
    return FolderOrDefault(State().exeDir, "KIV_EXE_DIR", L"\\Program Files\\Zeb");
}

std::wstring GetRootFolder() {
    std::lock_guard g(State().lock);
    return FolderOrDefault(State().rootDir, "KIV_ROOT_DIR", L"\\Zeb");
}

std::wstring GetDocsFolder() {
    std::lock_guard g(State().lock);
    return FolderOrDefault(State().docsDir, "KIV_DOCS_DIR", L"\\My Documents\\Zeb");
}

void SetModel(EModel model) {
    std::lock_guard g(State().lock);
    State().model = model;
}

EModel GetModel() {
    std::lock_guard g(State().lock);
    if (State().model) return *State().model;
    return ModelFromName(Env("KIV_MODEL"));
}

void AddResetHook(const std::string& key, std::function<void()> hook) {
    std::lock_guard g(State().lock);
    for (auto& [k, h] : State().resetHooks)
        if (k == key) {
            h = std::move(hook);
            return;
        }
    State().resetHooks.emplace_back(key, std::move(hook));
}

void ResetForTesting() {
    std::vector<std::pair<std::string, std::function<void()>>> hooks;
    {
        std::lock_guard g(State().lock);
        hooks = State().resetHooks;
        State().deviceRoot.reset();
        State().exeDir.reset();
        State().rootDir.reset();
        State().docsDir.reset();
        State().model.reset();
    }
#ifdef _WIN32
    ResetRegistrySandbox();
#endif
    for (auto& [key, hook] : hooks) hook();
    SetLogSink(nullptr);
}

}  // namespace kiv_host
