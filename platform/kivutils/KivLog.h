// The family's logs. kiv_err_log is the error log of the unit library, the other two
// are the general message log and the debug trace; all reach the host's log sink.
#pragma once

#include "platform/host/Host.h"

// An error entry (level 0) naming its source unit and line.
void kiv_err_log(const char* source, int line, const wchar_t* message);

// A printf-style entry (wide format, Windows meaning of %s) at the given level; the
// source is the stem of the calling file's name.
void kiv_log_message(int level, const char* file, int line, const wchar_t* format, ...);

#define LOGMESSAGE(level, ...) kiv_log_message((level), __FILE__, __LINE__, __VA_ARGS__)
#define KIV_TRACE_DEBUG(...) kiv_log_message(kiv_host::kLogDebug, __FILE__, __LINE__, __VA_ARGS__)
