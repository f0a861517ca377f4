#include "companions/xml/xml_text.h"

#include <cstring>

#include "framework/text.h"
#include "platform/text.h"

namespace kvxml {
namespace {

// Narrow encodings that a declaration may name, without case. The first is read as the second, its superset, as
// browsers do: its 32 extra places are control characters that no definition holds.
constexpr std::string_view kWesternNames[] = {"iso-8859-1", "windows-1252", "latin1"};
constexpr UINT kWesternCodePage = 1252;

std::string FromUtf16(std::string_view bytes, bool bigEndian) {
  std::u16string units(bytes.size() / 2, u'\0');
  for (std::size_t i = 0; i < units.size(); ++i) {
    const auto first = BYTE(bytes[2 * i]);
    const auto second = BYTE(bytes[2 * i + 1]);
    units[i] = char16_t(bigEndian ? first << 8 | second : second << 8 | first);
  }
  return ToUtf8(std::u16string_view(units));
}

std::string FromWestern(std::string_view bytes) {
  const int units = MultiByteToWideChar(kWesternCodePage, 0, bytes.data(), int(bytes.size()), nullptr, 0);
  std::u16string wide(std::size_t(units), u'\0');
  MultiByteToWideChar(kWesternCodePage, 0, bytes.data(), int(bytes.size()), wide.data(), units);
  return ToUtf8(std::u16string_view(wide));
}

char Lower(char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; }

// The encoding that the declaration names, in lower case; empty if there is none.
std::string DeclaredEncoding(std::string_view text) {
  if (!text.starts_with("<?xml")) return {};
  std::string_view declaration = text.substr(0, text.find("?>"));
  const std::size_t key = declaration.find("encoding");
  if (key == std::string_view::npos) return {};
  const std::size_t open = declaration.find_first_of("\"'", key);
  if (open == std::string_view::npos) return {};
  const std::size_t close = declaration.find(declaration[open], open + 1);
  if (close == std::string_view::npos) return {};
  std::string name(declaration.substr(open + 1, close - open - 1));
  for (char& c : name) c = Lower(c);
  return name;
}

}  // namespace

std::optional<std::string> ConvertToUtf8(std::string_view text) {
  if (text.starts_with(std::string_view("\xFF\xFE", 2)) || text.starts_with(std::string_view("<\0", 2))) {
    return FromUtf16(text, /*bigEndian=*/false);
  }
  if (text.starts_with(std::string_view("\xFE\xFF", 2)) || text.starts_with(std::string_view("\0<", 2))) {
    return FromUtf16(text, /*bigEndian=*/true);
  }
  const std::string encoding = DeclaredEncoding(text);
  for (const std::string_view western : kWesternNames) {
    if (encoding == western) return FromWestern(text);
  }
  return std::nullopt;
}

std::vector<std::size_t> LineStarts(std::string_view text) {
  std::vector<std::size_t> starts{0};
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at != end && (at = static_cast<const char*>(std::memchr(at, '\n', std::size_t(end - at))))) {
    starts.push_back(std::size_t(++at - text.data()));
  }
  return starts;
}

}  // namespace kvxml
