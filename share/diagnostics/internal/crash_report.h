// The text of a crash report, section by section. Support reads it with scripts: no word and no blank may change.
#pragma once

#include <memory_resource>
#include <optional>
#include <string>

#include "platform/crash_snapshot.h"
#include "share/diagnostics/internal/crash_request.h"

struct GraphicsTexts {
  std::string card, adapter, chip, dac;
  int megabytes = 0;
};

// What only a healthy process can find out.
struct SystemTexts {
  std::string user, system, version, language;
  std::optional<GraphicsTexts> graphics;  // none: the section is left out
};

SystemTexts GatherSystemTexts();

// The section with the product's and the host's versions.
std::string VersionSection();

// The file name of the module at the fault; "Unknown dll" if there is none.
std::string_view FaultingModule(const CrashSnapshot& snapshot, const CrashFault& fault);

// The whole report, in the arena. A null `system` leaves out what only a healthy process knows, and marks the report as
// partial; then the function is safe in a translator.
std::pmr::string CrashReport(const CrashRequest& request, const CrashSnapshot& snapshot, const SystemTexts* system,
                             std::pmr::memory_resource* arena);
