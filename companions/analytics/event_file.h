// The file of usage events: one line of JSON for each, in the order in which they were written by all processes.
//
// analytics.jsonl in the user's state folder (platform/user_folders.h), and analytics.old.jsonl with the events before
// it. Each has at most 8 MiB; older events are lost. Only the user can read them.
#pragma once

#include "platform/shared_lines.h"

inline constexpr ULONGLONG kMostEventBytes = 8 << 20;

// The file, by the environment of this moment. If the user has no state folder, there is no file, and Append fails.
KVSHARE_API SharedLines EventFile();

// Whether the environment variable DO_NOT_TRACK forbids events: it has a text other than "0".
KVSHARE_API bool IsTrackingForbidden();

// Appends a text event of a process, this or another, without any state of this process but its environment: for a
// program that reports the crash of another, and for a forked child. Null counts as empty. The caller checks the switch
// "LogAnalyticsData" while the process is sound. Returns 1 if the event is in the file; 0 if not, or if tracking is
// forbidden. The texts are UTF-8.
KVSHARE_API int AppendTextEvent(const char* category, const char* name, const char* value, DWORD process) noexcept;
