// One event as a line of JSON. docs/analytics.md describes the fields.
#pragma once

#include <initializer_list>
#include <string_view>
#include <variant>

#include "platform/types.h"

struct EventField {
  const char* name;
  std::variant<std::string_view, TextView, double> value;  // narrow text is UTF-8; other bytes become U+FFFD
};

// Appends an event of a process with its time, unless tracking is forbidden. 1 if its line is in the file, else 0.
int AppendEvent(const char* kind, DWORD process, std::initializer_list<EventField> fields) noexcept;
