// No helper: the system lets the crashed process write its own files.
#include "platform/crash_helper.h"

bool StartCrashHelper() { return false; }

bool AskCrashHelper(const void*, std::size_t, DWORD) { return false; }

int ServeCrashRequests(int, char**, void (*)(DWORD, const void*, std::size_t, void (*)())) { return 2; }
