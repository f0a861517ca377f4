#include "platform/linux/utf8.h"

#include "platform/text.h"

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

DWORD CopyToBuffer(std::u16string_view text, LPWSTR buffer, DWORD units) {
  if (text.size() >= units || !buffer) return DWORD(text.size()) + 1;
  text.copy(buffer, text.size());
  buffer[text.size()] = 0;
  return DWORD(text.size());
}
