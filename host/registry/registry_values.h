// Values of the registry as the command line shows and takes them: type names, and data as text.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "share/settings/registry_text.h"

namespace kestrova {

struct RegistryValue {
  std::basic_string<TCHAR> name;
  DWORD type = REG_NONE;
  std::vector<BYTE> data;
};

// What a key holds, or the one value that was asked for.
struct KeyContent {
  registry_text::KeyName key;
  std::vector<RegistryValue> values;
  std::vector<std::basic_string<TCHAR>> sub_keys;
};

// "REG_SZ" and so on; a type without a name as "0x1234".
std::string TypeName(DWORD type);
// The type of a name, in any case.
std::vector<std::string> TypeNames();
std::optional<DWORD> TypeOf(std::string_view name);

// Data on one line: texts as they are (those of a list with \0 between), numbers as 0x2a, all else, and what doesn't
// have its type's size, as hexadecimal digits in upper case.
std::string DataText(const RegistryValue& value);
// Keys as JSON, in which data is a text, a number, an array of texts, or a text of hexadecimal digits.
std::string ContentsJson(const std::vector<KeyContent>& contents);

// The bytes for a text given on the command line; WrongUsage if it is none of the type. Numbers are decimal or 0x2a, a
// negative one counts from the top; binary is pairs of hexadecimal digits; a list is divided by the separator.
std::vector<BYTE> DataFromText(DWORD type, std::string_view text, std::string_view separator);

}  // namespace kestrova
