// The names that a crash report has for exceptions, months, systems and languages.
#pragma once

#include <string>
#include <string_view>

#include "platform/crash_system.h"
#include "platform/types.h"

// "an Access Violation"; "an Unknown exception type" for other codes.
std::string_view ExceptionName(DWORD code);

// From 1; empty for other numbers.
std::string_view MonthName(int month);

// By the primary language number; "An Unknown Language" for other numbers.
std::string_view LanguageName(int language);

// The system's own name if it has one, otherwise the name by its version; "Could not detect Windows version" for a
// version without a name.
std::string SystemName(const SystemVersion& version);
