// Registry text, the ".reg" files in which support staff exchange settings: parse a text into steps, apply the steps in
// one transaction, write a key with everything below it as text.
//
// A text begins with the line "Windows Registry Editor Version 5.00". "[HKEY_CURRENT_USER\Key]" creates a key; lines
// for its values follow. "[-HKEY_CURRENT_USER\Key]" deletes a key with everything below it. "name"="text",
// "name"=dword:0000002a, "name"=hex:01,02 (binary) and "name"=hex(2):... (the bytes of type 2) write a value; "name"=-
// deletes it; @ is the name of the default value. A "\" at the end of a line continues hex data on the next line; ";"
// begins a comment. Parsing accepts UTF-16LE with a byte order mark and UTF-8 with or without one; writing produces
// UTF-16LE with a mark and CR LF line ends.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"

namespace registry_text {

// Limits of a text to parse. Parse refuses a larger one.
inline constexpr std::size_t kMostBytes = std::size_t{64} << 20;
inline constexpr std::size_t kMostSteps = 1'000'000;
inline constexpr std::size_t kMostLineUnits = std::size_t{4} << 20;

// Why a text or a call failed. line counts from 1; 0: the error belongs to no line. The texts are UTF-8 for people: the
// reason, without a full stop, and the remedy.
struct Error {
  int line = 0;
  std::string reason;
  std::string remedy;
};

// A hive and a path below it. An empty path is the hive itself.
struct KeyName {
  HKEY hive = nullptr;
  std::basic_string<TCHAR> path;
};

// Splits a name such as "HKCU\Software". Takes the short and the long name of a hive, in any case, and ignores one "\"
// at the end. False if the hive is unknown, a part is empty or longer than 255 characters, or there are more than 512
// levels.
KVSHARE_API bool ParseKeyName(std::basic_string_view<TCHAR> text, KeyName& key);

// The full name with the long name of the hive.
KVSHARE_API std::basic_string<TCHAR> FullName(const KeyName& key);

// The error for a failed registry call on the key. status is the call's result. Where the hive's file is the cause, the
// reason names it as a system path.
KVSHARE_API Error ErrorOf(LSTATUS status, const KeyName& key, int line = 0);

// One change that a text asks for. name is used for values only; type and data for kSetValue only.
struct Step {
  enum class Kind { kCreateKey, kDeleteKey, kSetValue, kDeleteValue };

  Kind kind = Kind::kCreateKey;
  int line = 0;
  KeyName key;
  std::basic_string<TCHAR> name;
  DWORD type = REG_NONE;
  std::vector<BYTE> data;
};

// Parses a whole text. True and its steps, in order; or false, the error and no steps.
KVSHARE_API bool Parse(std::string_view bytes, std::vector<Step>& steps, Error& error);

// Applies the steps in one transaction. False and the error if a step fails; the registry is then unchanged. Deleting a
// missing key or value is no error.
KVSHARE_API bool Apply(const std::vector<Step>& steps, Error& error);

// Writes the key and everything below it, in one state, as the bytes of a text: values in the order of their creation,
// sub-keys by name. False and the error if the key is missing or can't be read, or if a name has a line break, for
// which the format has no form.
KVSHARE_API bool Write(const KeyName& key, std::string& bytes, Error& error);

}  // namespace registry_text
