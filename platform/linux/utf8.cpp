#include "platform/linux/utf8.h"

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <cstdint>

#include "platform/text.h"

namespace {

constexpr char16_t kByteUnits = 0xDC00;  // the unit of a byte is this plus the byte, which is 0x80 or more

bool IsByteUnit(UChar32 unit) { return unit >= kByteUnits + 0x80 && unit <= kByteUnits + 0xFF; }

}  // namespace

std::string Utf8FromWide(std::u16string_view text) {
  std::string bytes(text.size() * 3, '\0');
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), int(text.size()), bytes.data(), int(bytes.size()), nullptr, nullptr);
  bytes.resize(std::size_t(size));
  return bytes;
}

std::string Utf8FromWide(LPCWSTR text) { return text ? Utf8FromWide(std::u16string_view(text)) : std::string(); }

std::u16string WideFromUtf8(std::string_view bytes) {
  std::u16string text(bytes.size(), u'\0');
  const int size = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), int(bytes.size()), text.data(), int(text.size()));
  text.resize(std::size_t(size));
  return text;
}

std::u16string WideFromSystem(std::string_view bytes) {
  std::u16string text;
  text.reserve(bytes.size());
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t start = at;
    UChar32 character = 0;
    U8_NEXT(reinterpret_cast<const std::uint8_t*>(bytes.data()), at, bytes.size(), character);
    if (character > 0xFFFF) {
      text += {U16_LEAD(character), U16_TRAIL(character)};
    } else if (character >= 0) {
      text += static_cast<char16_t>(character);
    } else {
      for (const char byte : bytes.substr(start, at - start))
        text += static_cast<char16_t>(kByteUnits + static_cast<unsigned char>(byte));
    }
  }
  return text;
}

std::string SystemFromWide(std::u16string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    UChar32 character = 0;
    U16_NEXT(text.data(), at, text.size(), character);
    if (IsByteUnit(character)) {
      bytes += static_cast<char>(character - kByteUnits);
      continue;
    }
    if (U_IS_SURROGATE(character)) character = 0xFFFD;
    std::uint8_t encoded[U8_MAX_LENGTH];
    int size = 0;
    U8_APPEND_UNSAFE(encoded, size, character);
    bytes.append(reinterpret_cast<const char*>(encoded), std::size_t(size));
  }
  return bytes;
}

std::string SystemFromWide(LPCWSTR text) { return text ? SystemFromWide(std::u16string_view(text)) : std::string(); }

DWORD CopyToBuffer(std::u16string_view text, LPWSTR buffer, DWORD units) {
  if (text.size() >= units || !buffer) return DWORD(text.size()) + 1;
  text.copy(buffer, text.size());
  buffer[text.size()] = 0;
  return DWORD(text.size());
}
