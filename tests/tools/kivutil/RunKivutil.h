// Runs the kivutil binary as a user does and collects its exit status and output.
#pragma once

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/wait.h>
#endif

#include <cstdio>
#include <string>
#include <vector>

namespace kivutil_test {

struct ToolRun {
    int status = -1;
    std::string out;
};

#ifdef _WIN32

// The words of `args` as a POSIX shell splits them: blanks separate, single quotes keep
// everything, double quotes keep all but a backslash before '"' or '\\'.
inline std::vector<std::string> ShellWords(const std::string& args) {
    std::vector<std::string> words;
    std::string word;
    bool inWord = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const char c = args[i];
        if (c == ' ' || c == '\t') {
            if (inWord) words.push_back(word);
            word.clear();
            inWord = false;
            continue;
        }
        inWord = true;
        if (c == '\'') {
            const size_t end = args.find('\'', i + 1);
            word += args.substr(i + 1, end - i - 1);
            i = end == std::string::npos ? args.size() : end;
        } else if (c == '"') {
            for (++i; i < args.size() && args[i] != '"'; ++i) {
                if (args[i] == '\\' && i + 1 < args.size() && (args[i + 1] == '"' || args[i + 1] == '\\')) ++i;
                word += args[i];
            }
        } else if (c == '\\' && i + 1 < args.size()) {
            word += args[++i];
        } else {
            word += c;
        }
    }
    if (inWord) words.push_back(word);
    return words;
}

// One word of a Windows command line that the C runtime splits back into `word`:
// backslashes count only before a quote, so those are doubled with the quote escaped.
inline std::wstring CommandLineWord(const std::wstring& word) {
    std::wstring out = L"\"";
    size_t backslashes = 0;
    for (const wchar_t c : word) {
        if (c == L'\\') {
            ++backslashes;
            continue;
        }
        out.append(c == L'"' ? backslashes * 2 + 1 : backslashes, L'\\');
        backslashes = 0;
        out += c;
    }
    out.append(backslashes * 2, L'\\');
    return out + L"\"";
}

inline std::wstring Wide(const std::string& utf8) {
    const int n = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
    std::wstring wide(static_cast<size_t>(n), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), wide.data(), n);
    return wide;
}

// Runs kivutil with `args` (quoted for a POSIX shell, as the suites write them); stderr
// joins stdout. The words reach kivutil as the shell would hand them over; lines come
// back with LF, as the C runtime's text mode writes CR LF for each.
inline ToolRun Kivutil(const std::string& args) {
    ToolRun run;
    // A cross build names the program by its host path; Wine's drive Z: is the host's root.
    std::wstring program = Wide(KIVUTIL_EXE);
    if (!program.empty() && program[0] == L'/') program = L"Z:" + program;
    for (wchar_t& c : program)
        if (c == L'/') c = L'\\';
    std::wstring line = CommandLineWord(program);
    for (const std::string& word : ShellWords(args)) line += L" " + CommandLineWord(Wide(word));

    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    HANDLE readEnd = nullptr, writeEnd = nullptr;
    if (!CreatePipe(&readEnd, &writeEnd, &inherit, 0)) return run;
    SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = writeEnd;
    startup.hStdError = writeEnd;
    PROCESS_INFORMATION process{};
    const BOOL started = CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                        &startup, &process);
    CloseHandle(writeEnd);
    if (started) {
        // The output ends when kivutil does, not when the pipe reports its end: a process
        // that kivutil's first window starts (the session's desktop) may inherit the
        // write end and hold it open long after. A run that does not end is cut off.
        const auto readWaiting = [&] {
            char buffer[256];
            DWORD waiting = 0, got = 0;
            while (PeekNamedPipe(readEnd, nullptr, 0, nullptr, &waiting, nullptr) && waiting > 0 &&
                   ReadFile(readEnd, buffer, waiting < sizeof buffer ? waiting : sizeof buffer, &got, nullptr) && got > 0)
                run.out.append(buffer, got);
        };
        constexpr DWORD kStepMs = 10, kLimitMs = 120000;
        DWORD waited = 0;
        bool ended = false;
        while (!ended && waited < kLimitMs) {
            readWaiting();
            ended = WaitForSingleObject(process.hProcess, kStepMs) == WAIT_OBJECT_0;
            waited += kStepMs;
        }
        readWaiting();
        DWORD code = 0;
        if (ended) {
            GetExitCodeProcess(process.hProcess, &code);
            run.status = static_cast<int>(code);
        } else {
            TerminateProcess(process.hProcess, 1);
            run.out += "<kivutil did not end>\n";
        }
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    CloseHandle(readEnd);
    std::string lf;
    for (size_t i = 0; i < run.out.size(); ++i)
        if (!(run.out[i] == '\r' && i + 1 < run.out.size() && run.out[i + 1] == '\n')) lf += run.out[i];
    run.out = lf;
    return run;
}

#else

// Runs kivutil with `args` (already quoted for the shell); stderr joins stdout.
inline ToolRun Kivutil(const std::string& args) {
    ToolRun run;
    FILE* pipe = ::popen((std::string(KIVUTIL_EXE) + " " + args + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return run;
    char buffer[256];
    while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) run.out += buffer;
    const int status = ::pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

#endif

}  // namespace kivutil_test
