#include "companions/analytics/internal/event_line.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

#include "companions/analytics/event_file.h"
#include "framework/text.h"
#include "platform/clock.h"
#include "platform/errors.h"

namespace {

// In UTC, such as "2026-11-22T16:46:20.123Z".
std::string TimeText() {
  SYSTEMTIME time = {};
  CurrentClock().systemTime(&time);
  char text[64];
  std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u.%03uZ", unsigned(time.wYear), unsigned(time.wMonth),
                unsigned(time.wDay), unsigned(time.wHour), unsigned(time.wMinute), unsigned(time.wSecond),
                unsigned(time.wMilliseconds));
  return text;
}

std::string LineOf(const char* kind, DWORD process, std::initializer_list<EventField> fields) {
  nlohmann::ordered_json event = {{"time", TimeText()}, {"process", process}, {"kind", kind}};
  for (const EventField& field : fields) {
    if (const auto* utf8 = std::get_if<std::string_view>(&field.value)) event[field.name] = *utf8;
    if (const auto* text = std::get_if<TextView>(&field.value)) event[field.name] = ToUtf8(*text);
    if (const auto* number = std::get_if<double>(&field.value)) event[field.name] = *number;
  }
  return event.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace

int AppendEvent(const char* kind, DWORD process, std::initializer_list<EventField> fields) noexcept {
  if (IsTrackingForbidden()) return 0;
  try {
    return EventFile().Append(LineOf(kind, process, fields)) == ERROR_SUCCESS;
  } catch (const std::exception&) {  // no memory: the event is not in the file, and the caller learns it
    return 0;
  }
}
