// What the tests of profile files share: one file in a scratch folder, and lists with their NULs shown.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/numbers.h"
#include "platform/paths.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "tests/scratch.h"

namespace kvtest {

using namespace std::string_literals;

// The bytes of a text in UTF-16LE, without a mark.
inline std::string Utf16(std::u16string_view text) {
  std::string bytes;
  for (const char16_t unit : text) bytes += {char(unit & 0xFF), char(unit >> 8)};
  return bytes;
}

class ProfileTest : public testing::Test {
 protected:
  void Put(const std::string& bytes) const { folder.Write("f.ini", bytes); }
  std::string Bytes() const { return ReadFile(folder.Path() / "f.ini"); }
  LPCWSTR Path() const { return path.c_str(); }

  // What the call gives, with a default that no file has.
  std::u16string Value(LPCWSTR section, LPCWSTR key) const {
    std::vector<TCHAR> buffer(1000, u'~');
    const DWORD length =
        GetPrivateProfileStringW(section, key, _T("(none)"), buffer.data(), DWORD(buffer.size()), Path());
    return {buffer.data(), length};
  }
  // The number of the key "k" in section "A" of a file; -1 if there is none.
  static int Number(const std::u16string& file) {
    TCHAR text[16];
    GetPrivateProfileStringW(_T("A"), _T("k"), _T("-1"), text, 16, file.c_str());
    return _wtoi(text);
  }
  // The list of keys, or of sections for null, with '|' for its NULs.
  std::u16string List(LPCWSTR section) const { return Shown(Value(section, nullptr)); }
  std::u16string Lines(LPCWSTR section) const {
    std::vector<TCHAR> buffer(1000, u'~');
    return Shown({buffer.data(), GetPrivateProfileSectionW(section, buffer.data(), 1000, Path())});
  }

  static std::u16string Shown(std::u16string text) {
    std::replace(text.begin(), text.end(), u'\0', u'|');
    return text;
  }

  const ScratchFolder folder{FastFolder()};  // each write goes to the disk
  const std::u16string path = ProductPathFromSystem((folder.Path() / "f.ini").string());
};

}  // namespace kvtest
