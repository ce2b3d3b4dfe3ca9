// Registered in-process modules and shared objects behind one table of module handles.
#include "platform/win32/Modules.h"

#include <dirent.h>
#include <dlfcn.h>

#include <cstdlib>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "platform/host/Host.h"
#include "platform/host/TextCodec.h"
#include "platform/win32/RegistryTree.h"  // FoldName: module names ignore case on the device

namespace {

struct Module {
    std::wstring identity;  // the registered name, or the shared object's path
    int references = 0;
    void* library = nullptr;  // null for a registered module
    kiv_host::ModuleSymbols symbols;
};

struct ModuleTable {
    std::mutex lock;
    std::unordered_map<std::wstring, kiv_host::ModuleSymbols> registered;
    std::unordered_map<std::uintptr_t, Module> loaded;
    std::uintptr_t nextHandle = 0x10000000;
};

ModuleTable& Modules() {
    static ModuleTable* table = [] {
        kiv_host::AddResetHook("win32.modules", [] {
            std::unordered_map<std::uintptr_t, Module> gone;
            {
                std::lock_guard g(Modules().lock);
                Modules().registered.clear();
                gone.swap(Modules().loaded);
            }
            for (auto& [handle, m] : gone)
                if (m.library) ::dlclose(m.library);
        });
        return new ModuleTable;
    }();
    return *table;
}

// The device appends ".dll" to a name without an extension.
std::wstring RegisteredKey(std::wstring_view name) {
    const size_t slash = name.find_last_of(L"\\/");
    std::wstring base(slash == std::wstring_view::npos ? name : name.substr(slash + 1));
    if (base.find(L'.') == std::wstring::npos) base += L".dll";
    return kiv_win32::detail::FoldName(base);
}

// Adds the files of `dir` whose names equal one of `files` without regard to case, in
// the order of `files`: module names ignore case on the device.
void AddMatches(const std::string& dir, const std::vector<std::string>& files, std::vector<std::string>& paths) {
    std::vector<std::wstring> wanted;
    for (const auto& f : files) wanted.push_back(kiv_win32::detail::FoldName(kiv_text::FromUtf8(f)));
    std::vector<std::string> found(files.size());
    if (DIR* d = ::opendir(dir.c_str())) {
        while (dirent* e = ::readdir(d)) {
            const std::wstring name = kiv_win32::detail::FoldName(kiv_text::FromUtf8(e->d_name));
            for (size_t i = 0; i < wanted.size(); ++i)
                if (found[i].empty() && name == wanted[i]) found[i] = dir + "/" + e->d_name;
        }
        ::closedir(d);
    }
    for (auto& f : found)
        if (!f.empty()) paths.push_back(std::move(f));
}

// The host paths a module name may stand for, most specific first.
std::vector<std::string> Candidates(std::wstring_view name) {
    const size_t slash = name.find_last_of(L"\\/");
    const std::wstring_view folder = slash == std::wstring_view::npos ? std::wstring_view() : name.substr(0, slash);
    std::wstring stem(slash == std::wstring_view::npos ? name : name.substr(slash + 1));
    if (const size_t dot = stem.rfind(L'.'); dot != std::wstring::npos &&
                                              kiv_win32::detail::FoldName(stem.substr(dot)) == L".dll")
        stem.erase(dot);
    const std::string utf8 = kiv_text::ToUtf8(stem);
    std::vector<std::string> files{utf8 + ".so", "lib" + utf8 + ".so"};
    if (utf8.size() > 3 && utf8.ends_with(".so")) files.insert(files.begin(), utf8);

    std::vector<std::string> paths;
    if (!folder.empty()) {
        AddMatches(kiv_host::ToHostPath(folder), files, paths);
        return paths;
    }
    if (const char* searchPath = std::getenv("KIV_MODULE_PATH")) {
        std::string list = searchPath;
        for (size_t start = 0; start <= list.size();) {
            size_t end = list.find(':', start);
            if (end == std::string::npos) end = list.size();
            if (end > start) AddMatches(list.substr(start, end - start), files, paths);
            start = end + 1;
        }
    }
    for (const auto& f : files) paths.push_back(f);  // bare: the loader's own search path
    return paths;
}

HMODULE Count(ModuleTable& t, Module module) {
    for (auto& [handle, m] : t.loaded)
        if (m.identity == module.identity) {
            ++m.references;
            if (module.library) ::dlclose(module.library);  // the loader counted it twice
            return reinterpret_cast<HMODULE>(handle);
        }
    const std::uintptr_t handle = t.nextHandle;
    t.nextHandle += 0x1000;
    module.references = 1;
    t.loaded.emplace(handle, std::move(module));
    return reinterpret_cast<HMODULE>(handle);
}

}  // namespace

namespace kiv_host {
void RegisterModule(const std::wstring& name, const ModuleSymbols& symbols) {
    std::lock_guard g(Modules().lock);
    Modules().registered[RegisteredKey(name)] = symbols;
}
}  // namespace kiv_host

HMODULE LoadLibraryW(LPCWSTR fileName) {
    if (!fileName || !*fileName) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    ModuleTable& t = Modules();
    {
        std::lock_guard g(t.lock);
        const std::wstring key = RegisteredKey(fileName);
        if (auto it = t.registered.find(key); it != t.registered.end())
            return Count(t, Module{L"registered:" + key, 0, nullptr, it->second});
    }
    for (const std::string& path : Candidates(fileName)) {
        void* library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!library) continue;
        std::wstring identity = L"library:" + std::to_wstring(reinterpret_cast<std::uintptr_t>(library));
        std::lock_guard g(t.lock);
        return Count(t, Module{std::move(identity), 0, library, {}});
    }
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

FARPROC GetProcAddress(HMODULE module, LPCSTR procName) {
    // Values below 0x10000 are export ordinals, which modules on the host do not have.
    if (reinterpret_cast<std::uintptr_t>(procName) < 0x10000) {
        SetLastError(ERROR_PROC_NOT_FOUND);
        return nullptr;
    }
    ModuleTable& t = Modules();
    void* symbol = nullptr;
    {
        std::lock_guard g(t.lock);
        auto it = t.loaded.find(reinterpret_cast<std::uintptr_t>(module));
        if (it == t.loaded.end()) {
            SetLastError(ERROR_INVALID_HANDLE);
            return nullptr;
        }
        if (it->second.library) {
            symbol = ::dlsym(it->second.library, procName);
        } else if (auto s = it->second.symbols.find(procName); s != it->second.symbols.end()) {
            symbol = s->second;
        }
    }
    if (!symbol) {
        SetLastError(ERROR_PROC_NOT_FOUND);
        return nullptr;
    }
    return reinterpret_cast<FARPROC>(symbol);
}

FARPROC GetProcAddressW(HMODULE module, LPCWSTR procName) {
    if (reinterpret_cast<std::uintptr_t>(procName) < 0x10000) return GetProcAddress(module, nullptr);
    return GetProcAddress(module, kiv_text::ToUtf8(procName).c_str());
}

BOOL FreeLibrary(HMODULE module) {
    void* library = nullptr;
    {
        ModuleTable& t = Modules();
        std::lock_guard g(t.lock);
        auto it = t.loaded.find(reinterpret_cast<std::uintptr_t>(module));
        if (it == t.loaded.end()) {
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
        if (--it->second.references > 0) return TRUE;
        library = it->second.library;
        t.loaded.erase(it);
    }
    if (library) ::dlclose(library);
    return TRUE;
}
