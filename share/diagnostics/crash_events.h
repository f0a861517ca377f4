// The helper of a crashed process, and the function that gets an event for each crash.
#pragma once

#include "framework/text.h"

// Gets category, name and text of an event.
using CrashEventFunction = void (*)(const CString& category, const CString& name, const CString& text);

// Sets the function that records a crash, and returns the former one; null: none. It runs in the helper process, where
// there is one, otherwise in the crashed process.
KVSHARE_API CrashEventFunction SetCrashEventFunction(CrashEventFunction function);

// The main function of the helper process (platform/crash_helper.h). Returns its exit code.
KVSHARE_API int RunCrashHelper(int argc, char** argv);
