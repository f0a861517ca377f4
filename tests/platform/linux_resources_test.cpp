// Resource-only libraries that this system reads itself: running modules, damaged files, languages and 32 bits.
#include <cstring>

#include "tests/platform/resources_support.h"

namespace {

using kvtest::LibraryBytes;
using LinuxResources = kvtest::ResourcesTest;

TEST_F(LinuxResources, RunningModulesHaveNoStringsAndStay) {
  ASSERT_NE(Load(LibraryBytes()), nullptr);
  TCHAR buffer[16];
  for (const HMODULE other : {HMODULE(nullptr), GetModuleHandleW(_T("KVSHAREu"))}) {
    EXPECT_EQ(StatusOf(LoadStringW(other, 1, buffer, 16) != 0), ERROR_RESOURCE_DATA_NOT_FOUND);
    EXPECT_FALSE(FreeLibrary(other));
  }
  const HMODULE freed = module;
  EXPECT_TRUE(FreeLibrary(module));
  module = nullptr;
  EXPECT_FALSE(FreeLibrary(freed));
}

// Missing files and files without an extension: resources_test.cpp.
TEST_F(LinuxResources, WhatIsNoLibraryFailsToLoad) {
  const std::string head = "MZ" + std::string(58, '\0');  // and the place of the next header
  for (const std::string& bytes :
       {std::string(), std::string("MZ"), head + "\xFF\xFF\xFF\x7F", head + "\xFF\xFF\xFF\xFF"})
    EXPECT_EQ(StatusOf(Load(bytes) != nullptr), ERROR_BAD_EXE_FORMAT) << bytes;
}

// Each row damages one 32-bit number of the library.
TEST_F(LinuxResources, EveryPlaceIsCheckedAgainstItsPiece) {
  constexpr std::size_t kResources = 0x800;  // the section's place in the built library, checked below
  ASSERT_EQ(LibraryBytes().substr(kResources + 12, 8), std::string("\0\0\2\0\5\0\0\0", 8));
  // What, the offset from the start of the resources, the value there, whether the library loads, string 1.
  const std::tuple<const char*, std::size_t, DWORD, bool, Text> rows[] = {
      {"nothing changed", 8, 0, true, _T("Kestrova")},
      {"more entries than the section holds", 12, 0xFFFFFFFF, false, _T("")},
      {"the dialogs point at a leaf", 20, 0x18, false, _T("")},
      {"the strings point at a leaf", 28, 0x18, false, _T("")},
      {"the strings point just after the end", 28, 0x80000000 | DWORD(LibraryBytes().size() - kResources - 15), false,
       _T("")},
      {"another kind of resource", 24, 7, true, _T("")},
  };
  for (const auto& [what, offset, value, loads, string1] : rows) {
    std::string bytes = LibraryBytes();
    std::memcpy(bytes.data() + kResources + offset, &value, sizeof value);
    EXPECT_EQ(Load(bytes) != nullptr, loads) << what;
    EXPECT_EQ(String(1), string1) << what;
  }
}

TEST_F(LinuxResources, NeutralLanguageComesFirstThenTheUsers) {
  const std::string bytes = kvtest::ReadFile(kvtest::SourceFile("fuzz/seeds/resources/languages.dll"));
  const std::pair<const TCHAR*, Text> rows[] = {
      {_T("de_DE.UTF-8"), _T("Hallo")}, {_T("de_AT.UTF-8"), _T("Hallo")}, {_T("en_US.UTF-8"), _T("Hello")}};
  for (const auto& [user, string1] : rows) {
    SetEnvironmentVariableW(_T("LC_ALL"), user);
    ASSERT_NE(Load(bytes), nullptr);
    EXPECT_EQ(String(1), string1);
    EXPECT_EQ(String(20), _T("neutral"));
  }
  SetEnvironmentVariableW(_T("LC_ALL"), nullptr);
}

TEST_F(LinuxResources, LibraryOf32BitsReadsTheSame) {
  std::string bytes = LibraryBytes();
  DWORD header = 0;
  std::memcpy(&header, bytes.data() + 0x3C, sizeof header);
  char* fields = bytes.data() + header + 24;
  std::memcpy(fields, "\x0B\x01", 2);
  // The table of directories and its length stand 16 bytes earlier in the smaller header.
  std::memmove(fields + 92, fields + 108, 4 + 16 * 8);
  ASSERT_NE(Load(bytes), nullptr);
  EXPECT_EQ(String(2554), _T("Warning"));
}

}  // namespace
