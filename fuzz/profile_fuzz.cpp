// Reads any bytes as a profile file without access outside them. A written value must be read back, and no other line
// may change.
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files.h"
#include "platform/profile.h"

namespace {

void Require(bool held) {
  if (!held) __builtin_trap();
}

std::string BytesOf(LPCWSTR path) {
  FILE* const file = _wfopen(path, _T("rb"));
  if (!file) return {};
  std::string bytes(1 << 14, '\0');
  bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
  std::fclose(file);
  return bytes;
}

// Requires that at most one line was replaced: between the common start and the common end of both texts, the old text
// has at most one line end.
void RequireOneLineChanged(std::string_view before, std::string_view after) {
  while (!before.empty() && !after.empty() && before.front() == after.front())
    before.remove_prefix(1), after.remove_prefix(1);
  while (!before.empty() && !after.empty() && before.back() == after.back())
    before.remove_suffix(1), after.remove_suffix(1);
  for (const char end : {'\r', '\n'}) Require(std::count(before.begin(), before.end(), end) <= 1);
}

// A write that is refused because of the encoding must leave the file.
bool IsRefused(BOOL written, std::string_view before, LPCWSTR path) {
  if (written) return false;
  Require(GetLastError() == ERROR_NOT_SUPPORTED || GetLastError() == ERROR_NO_UNICODE_TRANSLATION);
  Require(BytesOf(path) == before);
  return true;
}

void WriteAndReadBack(LPCWSTR section, LPCWSTR key, LPCWSTR path) {
  const std::string before = BytesOf(path);
  if (IsRefused(WritePrivateProfileStringW(section, key, _T("new value"), path), before, path)) return;
  if (!before.starts_with("\xFF\xFE")) RequireOneLineChanged(before, BytesOf(path));
  TCHAR value[32];
  Require(GetPrivateProfileStringW(section, key, nullptr, value, 32, path) == 9);
  Require(std::u16string_view(value) == _T("new value"));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static TCHAR path[MAX_PATH];
  static TCHAR temporary[MAX_PATH];
  static const UINT made = GetTempPathW(MAX_PATH, temporary) ? GetTempFileNameW(temporary, _T("kvp"), 0, path) : 0;
  FILE* const file = made ? _wfopen(path, _T("wb")) : nullptr;
  Require(file && std::fwrite(bytes, 1, size, file) == size && std::fclose(file) == 0);

  std::vector<TCHAR> sections(300);
  std::vector<TCHAR> list(40);
  GetPrivateProfileSectionNamesW(sections.data(), 300, path);
  for (LPCWSTR section = sections.data(); *section; section += std::u16string_view(section).size() + 1) {
    Require(GetPrivateProfileSectionW(section, list.data(), 40, path) <= 39);
    Require(GetPrivateProfileStringW(section, nullptr, nullptr, list.data(), 40, path) <= 39);
    TCHAR value[9];
    Require(GetPrivateProfileStringW(section, list.data(), _T("d"), value, 9, path) <= 8);
  }
  WriteAndReadBack(_T("A"), _T("k"), path);
  WriteAndReadBack(_T("ä"), _T("Ö"), path);
  const std::string before = BytesOf(path);
  if (IsRefused(WritePrivateProfileStringW(_T("a"), _T("K"), nullptr, path), before, path)) return 0;
  if (!before.starts_with("\xFF\xFE")) RequireOneLineChanged(before, BytesOf(path));
  Require(WritePrivateProfileSectionW(_T("A"), _T("m=1\0n=2\0"), path));
  TCHAR written[4];
  Require(GetPrivateProfileStringW(_T("a"), _T("N"), nullptr, written, 4, path) == 1 && written[0] == '2');
  Require(WritePrivateProfileStringW(_T("A"), nullptr, nullptr, path));
  return 0;
}
