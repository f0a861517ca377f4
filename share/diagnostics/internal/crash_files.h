// Writes the files of a crash, from the helper or from the crashed process itself.
#pragma once

#include "share/diagnostics/internal/crash_report.h"

// Writes what the request wants. A null `system` makes a partial report; then the call is safe in a translator. Sets
// module to the faulting module's name. False if the crashed process can't be seen: then nothing is written.
bool WriteCrashFiles(const CrashRequest& request, const SystemTexts* system, char (&module)[1024]);

// What follows the files: the event, and the box if the request wants it. Not in a translator on Linux.
void ReportCrash(const CrashRequest& request, std::string_view module);
