// The failures of the hives' files, and the check of a whole hive.
#include <cstdlib>
#include <string_view>
#include <utility>

#include "platform/linux/registry_handles.h"
#include "platform/linux/registry_query.h"
#include "platform/linux/registry_stores.h"
#include "platform/registry_files.h"

namespace kvregistry {

namespace {

constexpr Sql kCheckPages{6, "PRAGMA integrity_check(1)"};
// A key that no walk reaches, a value without a key, or one with another kind of data than is ever written.
constexpr Sql kFindLost{
    7,
    "SELECT 1 FROM key AS own LEFT JOIN key AS above ON above.id = own.parent WHERE own.id <> 1 AND"
    " (above.id IS NULL OR typeof(own.path) <> 'text' OR typeof(own.name) <> 'text' OR own.name = ''"
    "  OR length(own.path) <> length(above.path) + 1 + length(own.name)"
    "  OR substr(own.path, 1, length(above.path) + 1) <> above.path || '\\')"
    " UNION ALL SELECT 1 FROM value WHERE key NOT IN (SELECT id FROM key) OR typeof(data) <> 'blob'"
    "  OR typeof(type) <> 'integer' OR type NOT BETWEEN 0 AND 4294967295 LIMIT 1"};

// The status of a finding of kCheckPages: it also finds pages that could not be read without memory.
LSTATUS StatusOfFinding(std::string_view finding) {
  constexpr std::string_view kMark = "error code=";
  const std::size_t at = finding.find(kMark);
  if (at == finding.npos) return ERROR_BADDB;
  const LSTATUS status = StatusOf(nullptr, std::atoi(finding.data() + at + kMark.size()));
  return status == ERROR_SUCCESS ? ERROR_BADDB : status;
}

struct Faults {
  std::mutex mutex;
  HiveFault first[2][2];  // by hive, by During
};

// Never destroyed: destructors of other static objects may use the registry.
Faults& AllFaults() {
  static Faults* const faults = new Faults;
  return *faults;
}

// The failures that belong to the file. The others are the caller's, or no failures.
bool IsOfFile(LSTATUS status) {
  switch (status) {
    case ERROR_BADDB:
    case ERROR_UNKNOWN_REVISION:
    case ERROR_ACCESS_DENIED:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_DISK_FULL:
    case ERROR_REGISTRY_IO_FAILED:
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_BUSY: return true;
    default: return false;
  }
}

}  // namespace

LSTATUS Store::Note(LSTATUS status, HiveFault::During during) const {
  if (!IsOfFile(status)) return status;
  if (status == ERROR_BADDB || status == ERROR_UNKNOWN_REVISION) during = HiveFault::During::kReading;
  Faults& faults = AllFaults();
  const std::lock_guard lock(faults.mutex);
  HiveFault& first = faults.first[WhichHive() == Hive::kMachine][during == HiveFault::During::kWriting];
  if (first.status == ERROR_SUCCESS || status == ERROR_BADDB) first = {status, connection_.File()};
  return status;
}

}  // namespace kvregistry

using namespace kvregistry;

LSTATUS UseRegistryOfEnvironment() { return ERROR_SUCCESS; }

std::string HiveFile(HKEY key) {
  Hive hive;
  return IsPredefined(key, hive) ? CurrentStore(hive)->Link().File() : std::string();
}

LSTATUS CheckHive(HKEY key) {
  Hive hive;
  if (!IsPredefined(key, hive)) return ERROR_INVALID_HANDLE;
  const std::shared_ptr<Store> store = CurrentStore(hive);
  const std::lock_guard lock(store->Mutex());
  if (const LSTATUS status = store->ReadyToRead()) return status;
  Query check(*store, kCheckPages);
  if (!check.Next()) return check.Status() == ERROR_SUCCESS ? store->NoteDamage() : check.Status();
  if (check.Text(0) != "ok") return store->Note(StatusOfFinding(check.Text(0)), HiveFault::During::kReading);
  Query lost(*store, kFindLost);
  return lost.Next() ? store->NoteDamage() : lost.Status();
}

HiveFault TakeHiveFault(HKEY key, HiveFault::During during) {
  Hive hive;
  if (!IsPredefined(key, hive)) return {};
  Faults& faults = AllFaults();
  const std::lock_guard lock(faults.mutex);
  return std::exchange(faults.first[hive == Hive::kMachine][during == HiveFault::During::kWriting], {});
}
