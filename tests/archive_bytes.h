// Hexadecimal bytes, and archives in memory.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "framework/archive.h"

namespace kvtest {

// Converts "FF FE 00" to bytes, ignoring blanks, and bytes to such a text.
std::string Bytes(std::string_view hex);
std::string Hex(std::string_view bytes);

// Returns the bytes that the callable writes.
std::string Store(const std::function<void(CArchive&)>& write, int bufferBytes = CArchive::kBufferBytes);
// Lets the callable read the bytes. CauseOf returns the cause of the archive exception that it raises, or
// CArchiveException::none.
void Load(std::string_view bytes, const std::function<void(CArchive&)>& read, int bufferBytes = CArchive::kBufferBytes);
int CauseOf(std::string_view bytes, const std::function<void(CArchive&)>& read);
// The same for any call.
int CauseOf(const std::function<void()>& call);

// Stores or loads a value, as the archive does.
template <class Value>
void Exchange(CArchive& ar, Value& value) {
  if (ar.IsStoring()) {
    ar << value;
  } else {
    ar >> value;
  }
}

// Expects that reading each proper prefix of the bytes raises endOfFile; calls `behind` after each.
void ExpectPrefixesRaise(
    std::string_view bytes, const std::function<void(CArchive&)>& read, const std::function<void()>& behind = [] {});

}  // namespace kvtest
