// What a crashed process hands over to the writer of its files: plain data, complete in itself, so that it can go to
// another process. Texts are UTF-8 and end with a NUL.
#pragma once

#include <cstddef>
#include <string_view>
#include <type_traits>

#include "platform/crash_helper.h"
#include "platform/crash_snapshot.h"

inline constexpr std::size_t kCrashPathBytes = 4400;

struct CrashRequest {
  CrashFault fault;
  MINIDUMP_TYPE dumpType;
  int showMessage;
  int isEventWanted;
  LONGLONG localOffset;  // seconds from universal to local time
  // The system's paths; empty for a file that is not wanted. Then the same as the product shows them.
  char reportFile[kCrashPathBytes];
  char dumpFile[kCrashPathBytes];
  char reportName[kCrashPathBytes];
  char dumpName[kCrashPathBytes];
  char versions[1024];  // the section of the report
  char comment[1024];   // for the dump
  char dumpMessage[4096];
  char saveAsMessage[4096];
};
static_assert(std::is_trivially_copyable_v<CrashRequest> && sizeof(CrashRequest) <= kMostRequestBytes);

// Copies a text into a field and cuts it to the field's size. Safe in a translator.
template <std::size_t kBytes>
void SetField(char (&field)[kBytes], std::string_view text) {
  const std::size_t length = text.size() < kBytes ? text.size() : kBytes - 1;
  for (std::size_t i = 0; i < length; ++i) field[i] = text[i];
  field[length] = '\0';
}
