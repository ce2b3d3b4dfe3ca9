// kivutil's commands register themselves here; main() builds the CLI11 application from
// every registered command, so a new command is one new file.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

namespace kivutil {

// Exit statuses: 0 success, 1 a failed check or load, 2 bad input (usage, unit, text).
constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;
constexpr int kExitBadInput = 2;

// A command adds its subcommand to the application and sets `run` to the action that
// the subcommand performs when chosen; the action's result is the exit status.
using CommandSetup = std::function<void(CLI::App& app, std::function<int()>& run)>;

// Commands are made, and listed, by `order`. Each command has an order of its own: the
// registrations of equal orders run in the order the linker placed their files, which
// differs between builds.
struct Registration {
    Registration(int order, CommandSetup setup);
};

// Prints one line to stderr and returns kExitBadInput.
int BadInput(const std::string& message);

}  // namespace kivutil
