#include "host/logs/log_kinds.h"

#include "framework/file_find.h"
#include "host/registry/debug_values.h"
#include "platform/paths.h"
#include "share/core/registry_access.h"
#include "share/core/registry_keys.h"
#include "share/diagnostics/log_files.h"

namespace kestrova {

namespace {

int Stored(LPCTSTR key, LPCTSTR value) {
  int found = 0;
  const int number = GetRegSettingDwordValue(HKEY_CURRENT_USER, key, value, &found);
  return found ? number : 0;
}

bool Is(const LogKind& kind, LPCTSTR value) { return TextView(kind.value) == value; }

// The kind of a file; null if it is none of a log.
const LogKind* KindOf(TextView name) {
  const auto is = [&](LPCTSTR file) { return name == file; };
  for (const LogKind& kind : LogKinds()) {
    if ((Is(kind, kTurretLogSwitch) && is(kTurretLogFile)) || (Is(kind, kAsmTurnLogSwitch) && is(kAsmTurnLogFile)) ||
        (Is(kind, kFunctionLogSwitch) && is(kFunctionLogFile)) ||
        (Is(kind, kMemoryLeakLogSwitch) && is(kMemoryLeakLogFile)))
      return &kind;
    if (kind.type == KV_LOG_PLAIN) continue;
    const Text file = kTimeLogFiles[kind.type];
    if (name == file || (name.starts_with(file + _T("_")) && name.ends_with(_T(".txt")))) return &kind;
  }
  const bool plain =
      is(kTimeLogFiles[KV_LOG_PLAIN]) || (name.starts_with(kTimeLogStem + Text(_T("_"))) && name.ends_with(_T(".txt")));
  return plain ? LogKinds().data() : nullptr;
}

}  // namespace

// The plain log is the first.
const std::vector<LogKind>& LogKinds() {
  static const std::vector<LogKind> kinds = {
      {"plain", kProductDebugKey, kTimeLogSwitch, KV_LOG_PLAIN},
      {"deserialize", kProductDebugKey, kTimeLogSwitch, KV_LOG_DESERIALIZE},
      {"events", kProductDebugKey, kTimeLogSwitch, KV_LOG_EVENTS},
      {"commands", kProductDebugKey, kTimeLogSwitch, KV_LOG_COMMANDS},
      {"turret", kProductDebugKey, kTurretLogSwitch, 0},
      {"asmturn", kProductDebugKey, kAsmTurnLogSwitch, 0},
      {"function", kVersionDebugKey, kFunctionLogSwitch, 0},
      {"memory", kProductDebugKey, kMemoryLeakLogSwitch, 0},
  };
  return kinds;
}

bool IsOn(const LogKind& kind) {
  const bool on = Stored(kind.key, kind.value) != 0;
  return on && (kind.type == KV_LOG_PLAIN || Stored(kind.key, kTimeLogTypeSwitch) == kind.type);
}

void SwitchOn(const LogKind& kind) {
  WriteDebugValue(kind.key, kind.value, 1);
  if (kind.type != KV_LOG_PLAIN) WriteDebugValue(kind.key, kTimeLogTypeSwitch, kind.type);
}

void SwitchOff(const LogKind& kind) {
  if (IsOn(kind)) WriteDebugValue(kind.key, kind.type == KV_LOG_PLAIN ? kind.value : kTimeLogTypeSwitch, 0);
}

std::vector<LogFile> LogFiles(const LogKind* kind) {
  std::vector<LogFile> files;
  CFileFind find;
  BOOL more = find.FindFile(CString(kLogFolder) + _T("*"));
  while (more) {
    more = find.FindNextFile();
    const LogKind* const found = find.IsDirectory() ? nullptr : KindOf(find.GetFileName().View());
    if (!found || (kind && found != kind)) continue;
    const CString path = CString(kLogFolder) + find.GetFileName();
    files.push_back({found, path, SystemPathFromProduct(path), find.GetLength()});
  }
  return files;
}

}  // namespace kestrova
