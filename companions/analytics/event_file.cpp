#include "companions/analytics/event_file.h"

#include "companions/analytics/internal/event_line.h"
#include "platform/process.h"
#include "platform/user_folders.h"

SharedLines EventFile() { return {UserStateFolder(), _T("analytics"), kMostEventBytes}; }

bool IsTrackingForbidden() {
  TCHAR value[3] = {};
  const DWORD length = GetEnvironmentVariableW(_T("DO_NOT_TRACK"), value, 3);
  return length > 0 && TextView(value) != _T("0");
}

int AppendTextEvent(const char* category, const char* name, const char* value, DWORD process) noexcept {
  const auto text = [](const char* utf8) { return utf8 ? std::string_view(utf8) : std::string_view(); };
  return AppendEvent("text", process, {{"category", text(category)}, {"name", text(name)}, {"value", text(value)}});
}
