// Runs the kivutil binary as a user does and collects its exit status and output.
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <string>

namespace kivutil_test {

struct ToolRun {
    int status = -1;
    std::string out;
};

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

}  // namespace kivutil_test
