// Registry values as the command line shows and reads them: type names, and data as text.
#pragma once

#include <nlohmann/json_fwd.hpp>
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

// The contents of a key, or the one value that the user asked for.
struct KeyContent {
  registry_text::KeyName key;
  std::vector<RegistryValue> values;
  std::vector<std::basic_string<TCHAR>> sub_keys;
};

// "REG_SZ" and so on; a type without a name as "0x1234".
std::string TypeName(DWORD type);
std::vector<std::string> TypeNames();
// The type with that name, in any case; nullopt for an unknown name.
std::optional<DWORD> TypeOf(std::string_view name);

// Data on one line: a text as it is, the texts of a list with \0 between them, a number as 0x2a. All other data, and a
// number of the wrong size, as hexadecimal digits in upper case.
std::string DataText(const RegistryValue& value);
// The keys as JSON. Data is a text, a number, an array of texts, or a text of hexadecimal digits.
nlohmann::ordered_json ContentsJson(const std::vector<KeyContent>& contents);

// The bytes of a text from the command line. A number is decimal or 0x2a, and may be negative (two's complement);
// binary data is pairs of hexadecimal digits; the separator divides a list. Throws WrongUsage if the text is not of the
// type.
std::vector<BYTE> DataFromText(DWORD type, std::string_view text, std::string_view separator);

}  // namespace kestrova
