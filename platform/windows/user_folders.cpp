#include "platform/user_folders.h"

#include <algorithm>

namespace {

Text Variable(LPCWSTR name) {
  Text value(GetEnvironmentVariableW(name, nullptr, 0), 0);
  value.resize(GetEnvironmentVariableW(name, value.data(), DWORD(value.size())));
  return value;
}

}  // namespace

Text UserStateFolder() {
  Text folder = Variable(L"KV_STATE");
  if (folder.empty()) {
    folder = Variable(L"LOCALAPPDATA");
    if (!folder.empty()) folder += L"\\Kestrova";
  }
  std::replace(folder.begin(), folder.end(), L'/', L'\\');
  if (!folder.empty() && folder.back() != L'\\') folder += L'\\';
  return folder;
}
