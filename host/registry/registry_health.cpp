#include "host/registry/registry_health.h"

#include <fmt/format.h>

#include <utility>

#include "host/registry/registry_reader.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "platform/registry_files.h"

namespace kestrova {

namespace {

std::string CauseOf(LSTATUS status, HKEY hive) { return TextOf(registry_text::ErrorOf(status, {hive, {}})); }

// Whether the file has values that no command can read.
bool IsUnreadable(LSTATUS status) { return status == ERROR_BADDB || status == ERROR_UNKNOWN_REVISION; }

}  // namespace

void CheckWhole(HKEY hive) { CheckStatus(CheckHive(hive), {hive, {}}); }

void CheckWholeRegistry() {
  for (const HKEY hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
    if (const LSTATUS status = CheckHive(hive); IsUnreadable(status)) throw Failure(CauseOf(status, hive));
}

// The machine's hive is the installer's: most users can't write it.
void ReportRegistry(Needs needs) {
  static bool reported[2] = {};
  if (needs == Needs::kNoReport) return;
  for (const HKEY hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
    const HiveFault unread = TakeHiveFault(hive, HiveFault::During::kReading);
    const HiveFault unwritten = TakeHiveFault(hive, HiveFault::During::kWriting);
    if (unread.status != ERROR_SUCCESS) {
      const std::string cause = CauseOf(unread.status, hive);
      if (IsUnreadable(unread.status) || needs == Needs::kAllStoredValues) throw Failure(cause);
      if (std::exchange(reported[hive == HKEY_LOCAL_MACHINE], true)) continue;
      PrintNote(fmt::format("{}; the command goes on with the defaults", cause));
    } else if (unwritten.status != ERROR_SUCCESS && hive == HKEY_CURRENT_USER && !std::exchange(reported[0], true)) {
      PrintNote(fmt::format("{}; the start of the product has saved nothing", CauseOf(unwritten.status, hive)));
    }
  }
}

}  // namespace kestrova
