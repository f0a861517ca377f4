// Registry text, the ".reg" form in which support staff pass settings on: reading it into steps, carrying the steps out
// all or none, and writing a key with all below it.
//
// A text begins with the line "Windows Registry Editor Version 5.00". "[HKEY_CURRENT_USER\Key]" makes a key and is
// followed by its values, "[-HKEY_CURRENT_USER\Key]" deletes one with all below it. "name"="text",
// "name"=dword:0000002a, "name"=hex:01,02 (binary) and "name"=hex(2):... (type 2 by its bytes) write a value, "name"=-
// deletes it, @ stands for the default value. "\" before the end of a line continues hex on the next one; ";" begins a
// comment. Reading takes UTF-16LE with its mark, or UTF-8 with or without one; writing gives UTF-16LE with the mark and
// lines ending in CR LF.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"

namespace registry_text {

// Bounds of a text that is read: what exceeds them is refused.
inline constexpr std::size_t kMostBytes = std::size_t{64} << 20;
inline constexpr std::size_t kMostSteps = 1'000'000;
inline constexpr std::size_t kMostLineUnits = std::size_t{4} << 20;

// Why a text or an operation was refused. line counts from 1; 0 means that no line of the text is to blame. The texts
// are for people, in UTF-8: the reason without a stop at the end, and what to do about it.
struct Error {
  int line = 0;
  std::string reason;
  std::string remedy;
};

// A key by its hive and its path below it; an empty path is the hive itself.
struct KeyName {
  HKEY hive = nullptr;
  std::basic_string<TCHAR> path;
};

// Takes a name such as "HKCU\Software" apart: the hives' short and long names, in any case; one trailing "\" is left
// out. False if it names neither hive, or a name in it is empty or too long, or there are too many levels.
KVSHARE_API bool ParseKeyName(std::basic_string_view<TCHAR> text, KeyName& key);

// The full name, which begins with the hive's long name.
KVSHARE_API std::basic_string<TCHAR> FullName(const KeyName& key);

// The error for a registry call on a key that gave a status other than 0.
KVSHARE_API Error ErrorOf(LSTATUS status, const KeyName& key, int line = 0);

// One thing that a text asks for. name, type and data mean something for the kinds that speak of a value only.
struct Step {
  enum class Kind { kCreateKey, kDeleteKey, kSetValue, kDeleteValue };

  Kind kind = Kind::kCreateKey;
  int line = 0;
  KeyName key;
  std::basic_string<TCHAR> name;
  DWORD type = REG_NONE;
  std::vector<BYTE> data;
};

// Reads a whole text. True with its steps in order, or false with the error and no steps.
KVSHARE_API bool Parse(std::string_view bytes, std::vector<Step>& steps, Error& error);

// Carries out the steps in one transaction: true, or false with the error and the registry as it was. Deleting what is
// not there is no error.
KVSHARE_API bool Apply(const std::vector<Step>& steps, Error& error);

// Gives the bytes of a text with the key and all below it: values in the order in which they were made, sub-keys in the
// order of their names. False if the key is missing or cannot be read, or a name in it has a line break, which the form
// cannot hold.
KVSHARE_API bool Write(const KeyName& key, std::string& bytes, Error& error);

}  // namespace registry_text
