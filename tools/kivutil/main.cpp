// kivutil: the library's capabilities on the command line. Each command lives in its own
// file and registers itself; this file only assembles and runs them.
#include <algorithm>
#include <cstdio>
#include <iostream>
#include <vector>

#include "tools/kivutil/Command.h"

namespace kivutil {
namespace {
std::vector<std::pair<int, CommandSetup>>& Setups() {
    static std::vector<std::pair<int, CommandSetup>> setups;
    return setups;
}
}  // namespace

Registration::Registration(int order, CommandSetup setup) { Setups().emplace_back(order, std::move(setup)); }

int BadInput(const std::string& message) {
    std::cerr << "kivutil: " << message << "\n";
    return kExitBadInput;
}

}  // namespace kivutil

int main(int argc, char** argv) {
    CLI::App app{"kivutil: convert and parse survey values, inspect settings, history and vector files"};
    app.require_subcommand(1);
    std::function<int()> run;
    auto setups = kivutil::Setups();
    std::stable_sort(setups.begin(), setups.end(), [](auto& a, auto& b) { return a.first < b.first; });
    for (auto& [order, setup] : setups) setup(app, run);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        const int code = app.exit(e);
        return code == 0 ? 0 : kivutil::kExitBadInput;
    }
    return run ? run() : kivutil::kExitOk;
}
