#include "platform/utf8.h"

#include "platform/text.h"

std::string Utf8FromWide(TextView text) {
  std::string bytes(text.size() * 3, '\0');
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), int(text.size()), bytes.data(), int(bytes.size()), nullptr, nullptr);
  bytes.resize(std::size_t(size));
  return bytes;
}

Text WideFromUtf8(std::string_view bytes) {
  Text text(bytes.size(), 0);
  const int size = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), int(bytes.size()), text.data(), int(text.size()));
  text.resize(std::size_t(size));
  return text;
}
