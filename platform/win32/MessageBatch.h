// Posting many messages at once, for a thread that posts a batch at a time. Kept out of
// Windows.h, which nearly every unit includes; the queues it fills are Windows.cpp's.
#pragma once

#include "platform/win32/Win32.h"

namespace kiv_win32 {
// Posts `count` messages, each as PostMessageW would post it (its window, message and
// parameters), in order. Messages in a row for windows of one thread are queued under
// one lock and wake that thread once, so a caller with many messages at a time (the
// tick timer) pays for about one post. A null or broadcast window is posted as
// PostMessageW posts it; a message for a window that is gone or whose thread has ended
// is left out. Returns how many were posted.
int PostMessages(const MSG* messages, int count);
}  // namespace kiv_win32
