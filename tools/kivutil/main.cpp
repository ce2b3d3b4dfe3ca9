// kivutil: the library's capabilities on the command line. Each command lives in its own
// file and registers itself; this file only assembles and runs them.
#include <algorithm>
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "tools/kivutil/Command.h"

#ifdef _WIN32
#include "platform/win32/Win32.h"

#include <shellapi.h>

#include "platform/host/TextCodec.h"
#endif

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

namespace {
// What CLI11 refused, on one line with what is accepted: the commands when a word names
// none, else where the chosen command's options are described.
std::string ParseErrorLine(CLI::App& app, const CLI::ParseError& e, const std::vector<std::string>& words) {
    std::string path;
    CLI::App* deepest = &app;
    while (true) {
        const auto chosen = deepest->get_subcommands();
        if (chosen.empty()) break;
        deepest = chosen.front();
        path += " " + deepest->get_name();
    }
    const auto commands = deepest->get_subcommands([](CLI::App*) { return true; });
    // The word after the chosen commands, when it is not an option, was meant as a command.
    std::size_t depth = 0;
    for (const CLI::App* at = deepest; at != &app; at = at->get_parent()) ++depth;
    if (!commands.empty() && depth < words.size() && !words[depth].empty() && words[depth][0] != '-') {
        std::string names;
        for (const CLI::App* command : commands) names += (names.empty() ? "" : ", ") + command->get_name();
        return "no command \"" + words[depth] + "\" in kivutil" + path + "; the commands are " + names;
    }
    std::string what = e.what();
    std::replace(what.begin(), what.end(), '\n', ' ');
    return what + "; \"kivutil" + path + " --help\" says what is accepted";
}
}  // namespace

}  // namespace kivutil

int main(int argc, char** argv) {
#ifdef _WIN32
    // Windows hands main its words in the ANSI code page, which cannot carry every name or
    // text; the commands take UTF-8, as on Linux, so the words come from the wide command line.
    std::vector<std::string> words;
    int wideCount = 0;
    if (wchar_t** wide = ::CommandLineToArgvW(::GetCommandLineW(), &wideCount)) {
        for (int i = 0; i < wideCount; ++i) words.push_back(kiv_text::ToUtf8(wide[i]));
        ::LocalFree(wide);
    }
    std::vector<char*> utf8Argv;
    for (std::string& word : words) utf8Argv.push_back(word.data());
    utf8Argv.push_back(nullptr);
    if (!words.empty()) {
        argc = wideCount;
        argv = utf8Argv.data();
    }
#endif
    // Named, not taken from how it was started, so that its help reads the same from any
    // folder and on every host.
    CLI::App app{"kivutil: convert and parse survey values, inspect settings, history and vector files", "kivutil"};
    app.require_subcommand(1);
    // Options are spelled "-x" and "--name" on every host: a word that begins with '/' is
    // a host path, never an option, so a command reads the same everywhere. Set before
    // the commands are made, which take it from here.
    app.allow_windows_style_options(false);
    std::function<int()> run;
    auto setups = kivutil::Setups();
    std::stable_sort(setups.begin(), setups.end(), [](auto& a, auto& b) { return a.first < b.first; });
    for (auto& [order, setup] : setups) setup(app, run);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        if (e.get_exit_code() == 0) return app.exit(e);  // --help and its kin
        return kivutil::BadInput(kivutil::ParseErrorLine(app, e, std::vector<std::string>(argv + 1, argv + argc)));
    }
    return run ? run() : kivutil::kExitOk;
}
