// LaunchExe: starts a program of the device with an argument text.
#pragma once

#include <string>
#include <vector>

// Starts `program` (a device path, mapped to the host) with `arguments` split as the
// device shell splits a command line, and waits for it to end: `result` receives its
// exit code (128 + the signal number when a signal ended it). False, with `result`
// untouched, when the program could not be started.
bool LaunchExe(const wchar_t* program, const wchar_t* arguments, unsigned long& result);

namespace kiv_launch {
// The device shell's rules: blanks and tabs separate arguments outside double quotes;
// 2n backslashes before a quote give n backslashes and the quote opens or closes a
// quoted part, 2n+1 give n backslashes and a literal quote; other backslashes are literal.
std::vector<std::wstring> SplitArguments(const wchar_t* arguments);
}  // namespace kiv_launch
