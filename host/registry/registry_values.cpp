#include "host/registry/registry_values.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <nlohmann/json.hpp>

#include "framework/text.h"
#include "host/shell/failure.h"

namespace kestrova {

namespace {

using Text = std::basic_string<TCHAR>;
using TextView = std::basic_string_view<TCHAR>;

struct TypeRow {
  DWORD type;
  const char* name;
};
constexpr TypeRow kTypes[] = {
    {REG_NONE, "REG_NONE"},           {REG_SZ, "REG_SZ"},
    {REG_EXPAND_SZ, "REG_EXPAND_SZ"}, {REG_BINARY, "REG_BINARY"},
    {REG_DWORD, "REG_DWORD"},         {REG_DWORD_BIG_ENDIAN, "REG_DWORD_BIG_ENDIAN"},
    {REG_LINK, "REG_LINK"},           {REG_MULTI_SZ, "REG_MULTI_SZ"},
    {REG_QWORD, "REG_QWORD"},
};

bool IsText(DWORD type) { return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_LINK; }

Text Units(const std::vector<BYTE>& data) {
  Text text;
  for (std::size_t i = 0; i + 1 < data.size(); i += 2) text.push_back(TCHAR(data[i] | data[i + 1] << 8));
  return text;
}

std::string UpToTerminator(TextView text) { return ToUtf8(text.substr(0, text.find(TCHAR(0)))); }

std::vector<std::string> List(const std::vector<BYTE>& data) {
  const Text units = Units(data);
  std::vector<std::string> texts;
  for (TextView rest = units; !rest.empty() && rest.front() != 0;) {
    const std::size_t end = std::min(rest.find(TCHAR(0)), rest.size());
    texts.push_back(ToUtf8(rest.substr(0, end)));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return texts;
}

// The value of a numeric type; nullopt for another type or a wrong size.
std::optional<std::uint64_t> Number(const RegistryValue& value) {
  const std::size_t size = value.type == REG_QWORD ? 8 : 4;
  const bool numeric = value.type == REG_DWORD || value.type == REG_QWORD || value.type == REG_DWORD_BIG_ENDIAN;
  if (!numeric || value.data.size() != size) return std::nullopt;
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < size; ++i) {
    number = number << 8 | value.data[value.type == REG_DWORD_BIG_ENDIAN ? i : size - 1 - i];
  }
  return number;
}

std::string Hex(const std::vector<BYTE>& data) {
  std::string text;
  for (const BYTE byte : data) text += fmt::format("{:02X}", byte);
  return text;
}

std::vector<BYTE> BytesOf(TextView text) {
  std::vector<BYTE> data;
  for (const TCHAR unit : text) {
    data.push_back(BYTE(unit));
    data.push_back(BYTE(unit >> 8));
  }
  return data;
}

std::vector<BYTE> BytesOfNumber(DWORD type, std::string_view text) {
  const int bits = type == REG_QWORD ? 64 : 32;
  std::string_view digits = text;
  const bool negative = digits.starts_with('-');
  if (negative) digits.remove_prefix(1);
  const bool hex = digits.starts_with("0x") || digits.starts_with("0X");
  if (hex) digits.remove_prefix(2);
  std::uint64_t number = 0;
  const auto [end, problem] = std::from_chars(digits.data(), digits.data() + digits.size(), number, hex ? 16 : 10);
  const std::uint64_t most = negative ? std::uint64_t{1} << (bits - 1) : ~std::uint64_t{0} >> (64 - bits);
  if (problem != std::errc() || end != digits.data() + digits.size() || number > most) {
    throw WrongUsage(fmt::format("/d {} is not a number of {} bits; give it in decimal or as 0x2a", text, bits));
  }
  if (negative) number = 0 - number;
  std::vector<BYTE> data;
  for (int i = 0; i < bits / 8; ++i)
    data.push_back(BYTE(number >> (type == REG_DWORD_BIG_ENDIAN ? 24 - 8 * i : 8 * i)));
  return data;
}

std::vector<BYTE> BytesOfHex(std::string_view text) {
  std::vector<BYTE> data;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    BYTE byte = 0;
    const char* const stop = text.data() + std::min(i + 2, text.size());
    const auto [end, problem] = std::from_chars(text.data() + i, stop, byte, 16);
    if (problem != std::errc() || end != stop || stop - text.data() != std::ptrdiff_t(i + 2)) {
      throw WrongUsage(fmt::format("/d {} is not binary data; give pairs of hexadecimal digits", text));
    }
    data.push_back(byte);
  }
  return data;
}

std::vector<BYTE> BytesOfList(std::string_view text, std::string_view separator) {
  Text list;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    if (end == 0) throw WrongUsage("a list cannot hold an empty text; check /d and /s");
    list += FromUtf8(text.substr(0, end)).View();
    list += TCHAR(0);
    text.remove_prefix(std::min(end + separator.size(), text.size()));
  }
  list += TCHAR(0);
  return BytesOf(list);
}

}  // namespace

std::string TypeName(DWORD type) {
  for (const TypeRow& row : kTypes) {
    if (row.type == type) return row.name;
  }
  return fmt::format("0x{:x}", type);
}

std::vector<std::string> TypeNames() {
  std::vector<std::string> names;
  for (const TypeRow& row : kTypes) names.emplace_back(row.name);
  return names;
}

std::optional<DWORD> TypeOf(std::string_view name) {
  const auto same = [](char a, char b) { return a == (b >= 'a' && b <= 'z' ? b - 'a' + 'A' : b); };
  for (const TypeRow& row : kTypes) {
    const std::string_view known = row.name;
    if (std::equal(known.begin(), known.end(), name.begin(), name.end(), same)) return row.type;
  }
  return std::nullopt;
}

std::string DataText(const RegistryValue& value) {
  if (IsText(value.type)) return UpToTerminator(Units(value.data));
  if (value.type == REG_MULTI_SZ) return fmt::format("{}", fmt::join(List(value.data), "\\0"));
  if (const auto number = Number(value)) return fmt::format("0x{:x}", *number);
  return Hex(value.data);
}

static nlohmann::json DataJson(const RegistryValue& value) {
  if (IsText(value.type)) return UpToTerminator(Units(value.data));
  if (value.type == REG_MULTI_SZ) return List(value.data);
  if (const auto number = Number(value)) return *number;
  return Hex(value.data);
}

nlohmann::ordered_json ContentsJson(const std::vector<KeyContent>& contents) {
  nlohmann::ordered_json keys = nlohmann::ordered_json::array();
  for (const KeyContent& content : contents) {
    nlohmann::ordered_json values = nlohmann::ordered_json::array();
    for (const RegistryValue& value : content.values) {
      values.push_back({{"name", ToUtf8(value.name)}, {"type", TypeName(value.type)}, {"data", DataJson(value)}});
    }
    nlohmann::ordered_json sub_keys = nlohmann::ordered_json::array();
    for (const Text& sub_key : content.sub_keys) sub_keys.push_back(ToUtf8(sub_key));
    keys.push_back({{"key", ToUtf8(registry_text::FullName(content.key))}, {"values", values}, {"subKeys", sub_keys}});
  }
  return {{"keys", keys}};
}

std::vector<BYTE> DataFromText(DWORD type, std::string_view text, std::string_view separator) {
  switch (type) {
    case REG_DWORD:
    case REG_DWORD_BIG_ENDIAN:
    case REG_QWORD: return BytesOfNumber(type, text.empty() ? "0" : text);
    case REG_BINARY: return BytesOfHex(text);
    case REG_MULTI_SZ: return BytesOfList(text, separator);
    default: {
      const CString wide = FromUtf8(text);
      return BytesOf({wide.GetString(), std::size_t(wide.GetLength()) + 1});
    }
  }
}

}  // namespace kestrova
