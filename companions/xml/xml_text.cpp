#include "companions/xml/internal/xml_text.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "framework/text.h"
#include "platform/text.h"

namespace kvxml {
namespace {

// Names of one-byte encodings in an XML declaration, in lower case. All are read as windows-1252, as browsers do: it
// differs from iso-8859-1 only in 32 control characters, which XML files do not use.
constexpr std::string_view kWesternNames[] = {"iso-8859-1", "windows-1252", "latin1"};
constexpr UINT kWesternCodePage = 1252;

std::string FromUtf16(std::string_view bytes, bool bigEndian) {
  Text units(bytes.size() / 2, _T('\0'));
  for (std::size_t i = 0; i < units.size(); ++i) {
    const auto first = BYTE(bytes[2 * i]);
    const auto second = BYTE(bytes[2 * i + 1]);
    units[i] = TCHAR(bigEndian ? first << 8 | second : second << 8 | first);
  }
  return ToUtf8(TextView(units));
}

std::string FromWestern(std::string_view bytes) {
  const int units = MultiByteToWideChar(kWesternCodePage, 0, bytes.data(), int(bytes.size()), nullptr, 0);
  Text wide(std::size_t(units), _T('\0'));
  MultiByteToWideChar(kWesternCodePage, 0, bytes.data(), int(bytes.size()), wide.data(), units);
  return ToUtf8(TextView(wide));
}

std::string ToUtf16(std::string_view text, bool bigEndian) {
  std::string bytes;
  const CString wide = FromUtf8(text);
  bytes.reserve(2 * std::size_t(wide.GetLength()));
  for (const TCHAR unit : wide.View()) {
    const char low = char(unit & 0xFF), high = char(unit >> 8);
    bytes += bigEndian ? high : low;
    bytes += bigEndian ? low : high;
  }
  return bytes;
}

std::string ToWestern(std::string_view text) {
  const CString wide = FromUtf8(text);
  const int bytes = WideCharToMultiByte(kWesternCodePage, 0, wide, wide.GetLength(), nullptr, 0, nullptr, nullptr);
  std::string narrow(std::size_t(bytes), '\0');
  WideCharToMultiByte(kWesternCodePage, 0, wide, wide.GetLength(), narrow.data(), bytes, nullptr, nullptr);
  return narrow;
}

char Lower(char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; }

bool SameName(std::string_view name, std::string_view lower) { return std::ranges::equal(name, lower, {}, Lower); }

}  // namespace

DeclaredEncoding DeclaredEncodingOf(std::string_view text) {
  const std::size_t mark = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  if (!text.substr(mark).starts_with("<?xml")) return {};
  const std::string_view declaration = text.substr(0, text.find("?>"));
  const std::size_t key = declaration.find("encoding", mark);
  if (key == std::string_view::npos) return {};
  const std::size_t open = declaration.find_first_of("\"'", key);
  if (open == std::string_view::npos) return {};
  const std::size_t close = declaration.find(declaration[open], open + 1);
  if (close == std::string_view::npos) return {};
  return {std::string(declaration.substr(open + 1, close - open - 1)), open + 1};
}

const char* NameOf(Encoding encoding) {
  switch (encoding) {
    case Encoding::kUtf16LittleEndian:
    case Encoding::kUtf16BigEndian: return "UTF-16";
    case Encoding::kWestern: return "windows-1252";
    case Encoding::kUtf8: break;
  }
  return "UTF-8";
}

bool IsNameOf(std::string_view declared, Encoding encoding) {
  constexpr std::pair<std::string_view, Encoding> kOthers[] = {
      {"utf-8", Encoding::kUtf8},
      {"utf8", Encoding::kUtf8},
      {"us-ascii", Encoding::kUtf8},
      {"utf-16", Encoding::kUtf16LittleEndian},
      {"utf-16le", Encoding::kUtf16LittleEndian},
      {"utf-16", Encoding::kUtf16BigEndian},
      {"utf-16be", Encoding::kUtf16BigEndian},
  };
  const auto isSame = [&](const auto& row) { return row.second == encoding && SameName(declared, row.first); };
  if (encoding != Encoding::kWestern) return std::ranges::any_of(kOthers, isSame);
  return std::ranges::any_of(kWesternNames, [&](std::string_view name) { return SameName(declared, name); });
}

Encoding EncodingOf(std::string_view bytes) {
  if (bytes.starts_with(std::string_view("\xFF\xFE", 2)) || bytes.starts_with(std::string_view("<\0", 2)))
    return Encoding::kUtf16LittleEndian;
  if (bytes.starts_with(std::string_view("\xFE\xFF", 2)) || bytes.starts_with(std::string_view("\0<", 2)))
    return Encoding::kUtf16BigEndian;
  const bool marked = bytes.starts_with("\xEF\xBB\xBF");
  return !marked && IsNameOf(DeclaredEncodingOf(bytes).name, Encoding::kWestern) ? Encoding::kWestern : Encoding::kUtf8;
}

std::string Decode(std::string_view bytes, Encoding encoding) {
  switch (encoding) {
    case Encoding::kUtf8: return std::string(bytes);
    case Encoding::kUtf16LittleEndian: return FromUtf16(bytes, /*bigEndian=*/false);
    case Encoding::kUtf16BigEndian: return FromUtf16(bytes, /*bigEndian=*/true);
    case Encoding::kWestern: return FromWestern(bytes);
  }
  return {};
}

std::string Encode(std::string_view text, Encoding encoding) {
  switch (encoding) {
    case Encoding::kUtf8: return std::string(text);
    case Encoding::kUtf16LittleEndian: return ToUtf16(text, /*bigEndian=*/false);
    case Encoding::kUtf16BigEndian: return ToUtf16(text, /*bigEndian=*/true);
    case Encoding::kWestern: return ToWestern(text);
  }
  return {};
}

std::string EscapeAttribute(TextView value) {
  constexpr std::string_view kPlainToo = " !#$%()*+,-./:;=?@[]\\^_`{|}~";
  std::string out;
  for (std::size_t i = 0; i < value.size(); ++i) {
    char32_t c = value[i];
    if (c >= 0xD800 && c < 0xDC00 && i + 1 < value.size() && value[i + 1] >= 0xDC00 && value[i + 1] < 0xE000)
      c = 0x10000 + ((c - 0xD800) << 10) + (char32_t(value[++i]) - 0xDC00);
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    if (letter || (c < 0x80 && kPlainToo.find(char(c)) != std::string_view::npos)) {
      out += char(c);
    } else {
      out += "&#" + std::to_string(std::uint32_t(c)) + ';';
    }
  }
  return out;
}

std::vector<std::uint32_t> LineStarts(std::string_view text) {
  std::vector<std::uint32_t> starts;
  starts.reserve(std::size_t(std::ranges::count(text, '\n')) + 1);
  starts.push_back(0);
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at != end && (at = static_cast<const char*>(std::memchr(at, '\n', std::size_t(end - at))))) {
    starts.push_back(std::uint32_t(++at - text.data()));
  }
  return starts;
}

}  // namespace kvxml
