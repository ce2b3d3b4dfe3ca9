#include "tests/support/TestSupport.h"

#ifdef _WIN32
#include <random>
#else
#include <sys/xattr.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <locale>
#include <mutex>
#include <stdexcept>

namespace kiv_test {

namespace {

// Host paths are UTF-8 on both hosts; Windows' narrow file calls would read them in the
// ANSI code page, so the standard library is handed them as UTF-8 explicitly.
std::filesystem::path FsPath(const std::string& hostPath) {
    return std::filesystem::path(std::u8string(hostPath.begin(), hostPath.end()));
}

std::string MakeTemporaryFolder() {
#ifdef _WIN32
    static std::mt19937 random{std::random_device{}()};
    for (int attempt = 0; attempt < 100; ++attempt) {
        char name[32];
        std::snprintf(name, sizeof name, "kivtest-%08x", static_cast<unsigned>(random()));
        const auto folder = std::filesystem::temp_directory_path() / name;
        std::error_code ec;
        if (std::filesystem::create_directory(folder, ec)) {
            const std::u8string utf8 = folder.u8string();
            return std::string(utf8.begin(), utf8.end());
        }
    }
    throw std::runtime_error("no temporary folder could be made");
#else
    std::string tmpl = (std::filesystem::temp_directory_path() / "kivtest-XXXXXX").string();
    if (!::mkdtemp(tmpl.data())) throw std::runtime_error("mkdtemp failed");
    return tmpl;
#endif
}

}  // namespace

TempDeviceRoot::TempDeviceRoot() {
    path_ = MakeTemporaryFolder();
    kiv_host::ResetForTesting();
    kiv_host::SetDeviceRoot(path_);
}

TempDeviceRoot::~TempDeviceRoot() {
    kiv_host::ResetForTesting();
    std::error_code ec;
    std::filesystem::remove_all(FsPath(path_), ec);
}

std::string TempDeviceRoot::HostPath(const std::wstring& devicePath) const {
    return kiv_host::ToHostPath(devicePath);
}

LogCapture::LogCapture() {
    kiv_host::SetLogSink([this](const kiv_host::LogEntry& e) { entries_.push_back(e); });
}

LogCapture::~LogCapture() { kiv_host::SetLogSink(nullptr); }

ScopedLocale::ScopedLocale(const char* name) {
    const char* prev = std::setlocale(LC_ALL, nullptr);
    previous_ = prev ? prev : "C";
    ok_ = std::setlocale(LC_ALL, name) != nullptr;
#ifdef _WIN32
    // Windows names its locales language-REGION ("de-DE") where POSIX says "de_DE.UTF-8".
    if (!ok_) {
        std::string windowsName = name;
        windowsName = windowsName.substr(0, windowsName.find('.'));
        std::replace(windowsName.begin(), windowsName.end(), '_', '-');
        ok_ = std::setlocale(LC_ALL, windowsName.c_str()) != nullptr;
        // Older C runtimes know only the English names.
        static const std::pair<const char*, const char*> english[] = {{"de", "German_Germany"}, {"fr", "French_France"}};
        for (const auto& [code, full] : english)
            if (!ok_ && windowsName.rfind(code, 0) == 0) ok_ = std::setlocale(LC_ALL, full) != nullptr;
    }
#endif
    if (ok_) {
        try {
            std::locale::global(std::locale(name));
        } catch (const std::exception&) {
        }
    }
}

ScopedLocale::~ScopedLocale() {
    std::setlocale(LC_ALL, previous_.c_str());
    std::locale::global(std::locale::classic());
}

HWND MakePlainWindow(int width, int height, DWORD style, HWND parent, int id, const wchar_t* text) {
    WNDCLASSW plain{};
    plain.lpfnWndProc = DefWindowProcW;
    plain.lpszClassName = L"KivTestPlainWindow";
    RegisterClassW(&plain);  // refused once registered, until the host is reset
    return CreateWindowExW(0, plain.lpszClassName, text, style, 0, 0, width, height, parent,
                           reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
}

std::string ReadFileBytes(const std::string& hostPath) {
    std::ifstream in(FsPath(hostPath), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string ReadFileHead(const std::string& hostPath, size_t bytes) {
    std::ifstream in(FsPath(hostPath), std::ios::binary);
    std::string head(bytes, '\0');
    in.read(head.data(), static_cast<std::streamsize>(bytes));
    head.resize(static_cast<size_t>(in.gcount()));
    return head;
}

void WriteFileBytes(const std::string& hostPath, const std::string& bytes) {
    std::filesystem::create_directories(FsPath(hostPath).parent_path());
    std::ofstream out(FsPath(hostPath), std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

bool TempFolderKeepsUserAttributes() {
#ifdef _WIN32
    return true;  // the hidden flag is one of the file system's own attributes
#else
    static const bool keeps = [] {
        std::string file = (std::filesystem::temp_directory_path() / "kivtest-xattr-XXXXXX").string();
        const int fd = ::mkstemp(file.data());
        if (fd < 0) return false;
        const bool set = ::fsetxattr(fd, "user.kiv.probe", "1", 1, 0) == 0;
        ::close(fd);
        ::unlink(file.c_str());
        return set;
    }();
    return keeps;
#endif
}

}  // namespace kiv_test

#include "platform/host/TextCodec.h"

std::ostream& operator<<(std::ostream& os, const CKivStringT& text) {
    return os << '"' << kiv_text::ToUtf8(text.view()) << '"';
}
