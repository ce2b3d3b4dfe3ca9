// LaunchExe over posix_spawn, or CreateProcessW on Windows: no shell is involved, so the
// argument text reaches the program exactly as the device shell would have split it.
#include "platform/kivutils/LaunchExe.h"

#ifdef _WIN32
#include "platform/win32/Win32.h"
#else
#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>

#include "platform/host/Host.h"
#include "platform/host/TextCodec.h"

extern char** environ;
#endif

namespace kiv_launch {

std::vector<std::wstring> SplitArguments(const wchar_t* arguments) {
    std::vector<std::wstring> out;
    if (!arguments) return out;
    std::wstring current;
    bool inArgument = false, quoted = false;
    for (const wchar_t* p = arguments; *p;) {
        if (!quoted && (*p == L' ' || *p == L'\t')) {
            if (inArgument) out.push_back(std::move(current));
            current.clear();
            inArgument = false;
            ++p;
            continue;
        }
        inArgument = true;
        if (*p == L'\\') {
            size_t slashes = 0;
            while (*p == L'\\') ++slashes, ++p;
            if (*p == L'"') {
                current.append(slashes / 2, L'\\');
                if (slashes % 2) {
                    current += L'"';
                    ++p;
                }
            } else {
                current.append(slashes, L'\\');
            }
        } else if (*p == L'"') {
            quoted = !quoted;
            ++p;
        } else {
            current += *p++;
        }
    }
    if (inArgument) out.push_back(std::move(current));
    return out;
}

}  // namespace kiv_launch

#ifdef _WIN32

// The system splits the command line by the same rules, so the text is handed on as it
// stands after the quoted program name.
bool LaunchExe(const wchar_t* program, const wchar_t* arguments, unsigned long& result) {
    if (!program || !*program) return false;
    // A device path names a program under the device root, as every other file.
    const std::wstring path = kiv_win32::DesktopPath(program);
    std::wstring line = L"\"" + path + L"\"";
    if (arguments && *arguments) line.append(L" ").append(arguments);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(path.c_str(), line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
        return false;
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    result = code;
    return true;
}

#else

bool LaunchExe(const wchar_t* program, const wchar_t* arguments, unsigned long& result) {
    if (!program || !*program) return false;
    const std::string path = kiv_host::ToHostPath(program);
    std::vector<std::string> words{path};
    for (const auto& a : kiv_launch::SplitArguments(arguments)) words.push_back(kiv_text::ToUtf8(a));
    std::vector<char*> argv;
    for (auto& w : words) argv.push_back(w.data());
    argv.push_back(nullptr);

    pid_t child = 0;
    if (::posix_spawn(&child, path.c_str(), nullptr, nullptr, argv.data(), environ) != 0) return false;
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) return true;  // started; its end could not be observed
    }
    result = WIFEXITED(status) ? static_cast<unsigned long>(WEXITSTATUS(status))
                               : 128ul + static_cast<unsigned long>(WTERMSIG(status));
    return true;
}

#endif
