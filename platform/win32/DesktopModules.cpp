// The device's forms of the module and registry calls on a desktop: modules registered in
// process come before the system's loader, and a deleted key takes its subtree with it.
#define KIV_DESKTOP_IMPLEMENTATION
#include "platform/win32/Win32.h"

#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform/host/Host.h"
#include "platform/host/NeutralLocale.h"

namespace {

// A registered module's handle is the address of its entry: never a loaded image's.
struct RegisteredModule {
    kiv_host::ModuleSymbols symbols;
    int references = 0;
};

struct ModuleTable {
    std::mutex lock;
    std::map<std::wstring, std::shared_ptr<RegisteredModule>> byName;  // folded name with its extension
    std::map<std::uintptr_t, std::shared_ptr<RegisteredModule>> loaded;
};

ModuleTable& Modules() {
    static ModuleTable* table = [] {
        kiv_host::AddResetHook("win32.modules", [] {
            std::lock_guard g(Modules().lock);
            Modules().byName.clear();
            Modules().loaded.clear();
        });
        return new ModuleTable;
    }();
    return *table;
}

std::wstring Folded(std::wstring text) {
    for (auto& c : text) c = kiv_text::FoldCase(c);
    return text;
}

// The device appends ".dll" to a name without an extension; the folder does not matter.
std::wstring RegisteredKey(std::wstring_view name) {
    const size_t slash = name.find_last_of(L"\\/");
    std::wstring base(slash == std::wstring_view::npos ? name : name.substr(slash + 1));
    if (base.find(L'.') == std::wstring::npos) base += L".dll";
    return Folded(base);
}

std::wstring Env(const wchar_t* name) {
    const wchar_t* v = _wgetenv(name);
    return v ? std::wstring(v) : std::wstring();
}

HMODULE LoadFromModulePath(std::wstring_view name) {
    if (name.find_first_of(L"\\/") != std::wstring_view::npos) return nullptr;
    std::wstring stem(name);
    if (stem.size() > 4 && Folded(stem.substr(stem.size() - 4)) == L".dll") stem.resize(stem.size() - 4);
    const std::wstring list = Env(L"KIV_MODULE_PATH");
    for (size_t start = 0; start < list.size();) {
        size_t end = list.find(L';', start);
        if (end == std::wstring::npos) end = list.size();
        const std::wstring folder = list.substr(start, end - start);
        start = end + 1;
        if (folder.empty()) continue;
        for (const std::wstring& file : {stem + L".dll", L"lib" + stem + L".dll"}) {
            const std::wstring path = folder + L"\\" + file;
            if (::GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) continue;
            if (HMODULE m = ::LoadLibraryW(path.c_str())) return m;
        }
    }
    return nullptr;
}

}  // namespace

namespace kiv_host {
void RegisterModule(const std::wstring& name, const ModuleSymbols& symbols) {
    std::lock_guard g(Modules().lock);
    auto& entry = Modules().byName[RegisteredKey(name)];
    entry = std::make_shared<RegisteredModule>();
    entry->symbols = symbols;
}
}  // namespace kiv_host

namespace kiv_win32 {

LONG DeviceRegDeleteKeyW(HKEY key, LPCWSTR subKey) {
    std::wstring path = subKey ? subKey : L"";
    while (!path.empty() && path.back() == L'\\') path.pop_back();
    while (!path.empty() && path.front() == L'\\') path.erase(path.begin());
    if (path.empty()) return ERROR_INVALID_PARAMETER;
    return ::RegDeleteTreeW(key, path.c_str());
}

HMODULE DeviceLoadLibraryW(LPCWSTR fileName) {
    if (!fileName || !*fileName) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    {
        ModuleTable& t = Modules();
        std::lock_guard g(t.lock);
        if (auto it = t.byName.find(RegisteredKey(fileName)); it != t.byName.end()) {
            ++it->second->references;
            const auto handle = reinterpret_cast<std::uintptr_t>(it->second.get());
            t.loaded[handle] = it->second;
            return reinterpret_cast<HMODULE>(handle);
        }
    }
    if (HMODULE m = LoadFromModulePath(fileName)) return m;
    return ::LoadLibraryW(DesktopPath(fileName).c_str());
}

FARPROC DeviceGetProcAddress(HMODULE module, LPCSTR procName) {
    {
        ModuleTable& t = Modules();
        std::lock_guard g(t.lock);
        if (auto it = t.loaded.find(reinterpret_cast<std::uintptr_t>(module)); it != t.loaded.end()) {
            // Registered modules export by name only.
            if (reinterpret_cast<ULONG_PTR>(procName) >= 0x10000)
                if (auto s = it->second->symbols.find(procName); s != it->second->symbols.end())
                    return reinterpret_cast<FARPROC>(s->second);
            SetLastError(ERROR_PROC_NOT_FOUND);
            return nullptr;
        }
    }
    return ::GetProcAddress(module, procName);
}

BOOL DeviceFreeLibrary(HMODULE module) {
    {
        ModuleTable& t = Modules();
        std::lock_guard g(t.lock);
        if (auto it = t.loaded.find(reinterpret_cast<std::uintptr_t>(module)); it != t.loaded.end()) {
            if (--it->second->references == 0) t.loaded.erase(it);
            return TRUE;
        }
    }
    return ::FreeLibrary(module);
}

}  // namespace kiv_win32
