// Bytes in hexadecimal, and archives that are stored to memory and loaded from it.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "framework/archive.h"

namespace kvtest {

// Bytes from "FF FE 00", blanks ignored, and back with blanks.
std::string Bytes(std::string_view hex);
std::string Hex(std::string_view bytes);

// What the callable writes.
std::string Store(const std::function<void(CArchive&)>& write, int bufferBytes = CArchive::kBufferBytes);
// Lets the callable read the bytes. CauseOf gives the cause of the archive exception that it raises, or none.
void Load(std::string_view bytes, const std::function<void(CArchive&)>& read, int bufferBytes = CArchive::kBufferBytes);
int CauseOf(std::string_view bytes, const std::function<void(CArchive&)>& read);
// The same for anything that may raise one.
int CauseOf(const std::function<void()>& call);

// Each shorter beginning of the bytes raises endOfFile; `behind` is called after each.
void ExpectPrefixesRaise(
    std::string_view bytes, const std::function<void(CArchive&)>& read, const std::function<void()>& behind = [] {});

}  // namespace kvtest
