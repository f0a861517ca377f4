// What the tests of profile files share: a scratch folder with a new file for each content, and lists with their NULs
// shown.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <vector>

#include "platform/paths.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "tests/platform/status.h"
#include "tests/scratch.h"

namespace kvtest {

inline constexpr LPCWSTR kNoValue = _T("(none)");  // a default that no file has

using namespace std::string_literals;

// The bytes of a text in UTF-16LE, without a mark.
inline std::string Utf16(TextView text) {
  std::string bytes;
  for (const TCHAR unit : text) bytes += {char(unit & 0xFF), char(unit >> 8)};
  return bytes;
}

class ProfileTest : public testing::Test {
 protected:
  // Writes the content to a file of its own: a system may keep what it has read of a file for a while.
  void Put(const std::string& bytes) {
    file = folder.Write(std::to_string(++files) + ".ini", bytes);
    path = ProductPathFromSystem(file.string());
  }
  std::string Bytes() const { return ReadFile(file); }
  LPCWSTR Path() const { return path.c_str(); }

  // What the call gives, kNoValue by default.
  Text Value(LPCWSTR section, LPCWSTR key) const {
    std::vector<TCHAR> buffer(1000, _T('~'));
    const DWORD length = GetPrivateProfileStringW(section, key, kNoValue, buffer.data(), DWORD(buffer.size()), Path());
    return {buffer.data(), length};
  }
  // The number of the key "k" in section "A" of a file; -1 if there is none.
  static int Number(const Text& file) {
    TCHAR text[16];
    if (GetPrivateProfileStringW(_T("A"), _T("k"), nullptr, text, 16, file.c_str()) == 0) return -1;
    int number = 0;
    for (const TCHAR* digit = text; *digit; ++digit) number = number * 10 + (*digit - '0');
    return number;
  }
  // The list of keys, or of sections for null, with '|' for its NULs.
  Text List(LPCWSTR section) const { return Shown(Value(section, nullptr)); }
  Text Lines(LPCWSTR section) const {
    std::vector<TCHAR> buffer(1000, _T('~'));
    return Shown({buffer.data(), GetPrivateProfileSectionW(section, buffer.data(), 1000, Path())});
  }

  // A row of an expected search: bytes, section, key, value.
  using Search = std::tuple<std::string, LPCWSTR, LPCWSTR, LPCWSTR>;
  void ExpectFound(std::initializer_list<Search> rows) {
    for (const auto& [bytes, section, key, wanted] : rows) {
      SCOPED_TRACE(testing::PrintToString(bytes));
      Put(bytes);
      EXPECT_EQ(Value(section, key), wanted);
    }
  }
  struct Change {
    const char* what;
    std::string bytes;
    LPCWSTR section, key, value;
    std::string wanted;
  };
  void ExpectChanges(std::initializer_list<Change> rows) {
    for (const Change& row : rows) {
      SCOPED_TRACE(row.what);
      Put(row.bytes);
      EXPECT_TRUE(WritePrivateProfileStringW(row.section, row.key, row.value, Path()));
      EXPECT_EQ(Bytes(), row.wanted);
    }
  }

  static Text Shown(Text text) {
    std::replace(text.begin(), text.end(), _T('\0'), _T('|'));
    return text;
  }

  const ScratchFolder folder{FastFolder()};  // each write goes to the disk
  int files = 0;
  std::filesystem::path file = folder.Path() / "f.ini";  // the latest one; at first missing
  Text path = ProductPathFromSystem(file.string());
};

}  // namespace kvtest
