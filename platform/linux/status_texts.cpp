// The texts of statuses as the platform's call gives them.
#include <algorithm>
#include <string>

#include "platform/errors.h"
#include "platform/linux/errno_status.h"
#include "platform/linux/utf8.h"
#include "platform/windows.h"

DWORD FormatMessageW(DWORD flags, const void* source, DWORD status, DWORD, LPWSTR buffer, DWORD units,
                     void* arguments) {
  if (flags != (FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS) || source || arguments || !buffer)
    return DWORD(FailWithStatus(ERROR_INVALID_PARAMETER));
  std::string text = ErrorText(status);
  if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = char(text[0] - 'a' + 'A');
  text += '.';
  const std::u16string wide = WideFromUtf8(text);
  if (wide.size() >= units) return DWORD(FailWithStatus(ERROR_INSUFFICIENT_BUFFER));
  std::copy(wide.c_str(), wide.c_str() + wide.size() + 1, buffer);
  return DWORD(wide.size());
}
