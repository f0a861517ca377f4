// String tables of resource-only libraries: the built English library, and copies of it damaged by hand.
#include "platform/resources.h"

#include <gtest/gtest.h>

#include <cstring>

#include "platform/paths.h"
#include "platform/process.h"
#include "tests/folders.h"
#include "tests/scratch.h"

namespace {

std::string LibraryBytes() {
  static const std::string bytes = kvtest::ReadFile(kvtest::BuiltFile("lib/lang/English/KVRESu.DLL"));
  return bytes;
}

class Resources : public testing::Test {
 protected:
  ~Resources() override {
    if (module) FreeLibrary(module);
  }
  // Loads a library made of these bytes, freeing the one before.
  HMODULE Load(const std::string& bytes) {
    if (module) FreeLibrary(module);
    const auto file = folder.Write("Test.DLL", bytes);
    return module = LoadLibraryExW(ProductPathFromSystem(file.string()).c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
  }
  std::u16string String(UINT id) const {
    LPCWSTR text = nullptr;
    const int length = LoadStringW(module, id, reinterpret_cast<LPWSTR>(&text), 0);
    return {text, std::size_t(length)};
  }

  kvtest::ScratchFolder folder;
  HMODULE module = nullptr;
};

TEST_F(Resources, StringsAreFoundByNumber) {
  ASSERT_NE(Load(LibraryBytes()), nullptr);
  const std::pair<UINT, const TCHAR*> rows[] = {
      {1, u"Kestrova"}, {2553, u"Information"}, {58237, u"English"}, {65536 + 1, u"Kestrova"}, {65493, u"Barrel"}};
  for (const auto& [id, wanted] : rows) EXPECT_EQ(String(id), wanted) << id;
  for (const UINT id : {0u, 2u, 2556u, 65535u}) EXPECT_EQ(String(id), u"") << id;
}

TEST_F(Resources, CopyIsCutAndTerminated) {
  ASSERT_NE(Load(LibraryBytes()), nullptr);
  TCHAR buffer[16];
  const std::u16string whole = u"Kestrova";
  for (const int units : {9, 8, 1}) {
    const std::u16string wanted = whole.substr(0, std::size_t(units - 1));
    EXPECT_EQ(LoadStringW(module, 1, buffer, units), int(wanted.size()));
    EXPECT_EQ(buffer, wanted);
  }
  buffer[0] = 'x';
  EXPECT_EQ(LoadStringW(module, 2, buffer, 16), 0);
  EXPECT_EQ(buffer[0], 0);
  EXPECT_EQ(GetLastError(), DWORD(ERROR_RESOURCE_NAME_NOT_FOUND));
}

TEST_F(Resources, DataModuleIsNoRunningModule) {
  ASSERT_NE(Load(LibraryBytes()), nullptr);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(module) & 1, 1U);
  EXPECT_EQ(GetModuleHandleW(_T("Test.DLL")), nullptr);
  TCHAR path[MAX_PATH];
  ASSERT_GT(GetModuleFileNameW(module, path, MAX_PATH), 0U);
  EXPECT_EQ(path, ProductPathFromSystem((folder.Path() / "Test.DLL").string()));
  TCHAR buffer[16];
  for (const HMODULE other : {HMODULE(nullptr), GetModuleHandleW(_T("KVSHAREu"))}) {
    EXPECT_EQ(LoadStringW(other, 1, buffer, 16), 0);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_RESOURCE_DATA_NOT_FOUND));
    EXPECT_FALSE(FreeLibrary(other));
  }
  const HMODULE freed = module;
  EXPECT_TRUE(FreeLibrary(module));
  module = nullptr;
  EXPECT_FALSE(FreeLibrary(freed));
}

TEST_F(Resources, WhatIsNoLibraryFailsToLoad) {
  const std::string head = "MZ" + std::string(58, '\0');  // and the place of the next header
  for (const std::string& bytes : {std::string(), std::string("MZ"), std::string(100, 'x'), head + "\xFF\xFF\xFF\x7F",
                                   head + "\xFF\xFF\xFF\xFF"}) {
    EXPECT_EQ(Load(bytes), nullptr) << bytes;
    EXPECT_EQ(GetLastError(), DWORD(ERROR_BAD_EXE_FORMAT)) << bytes;
  }
  const std::u16string none = ProductPathFromSystem((folder.Path() / "None").string());
  EXPECT_EQ(LoadLibraryExW(none.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE), nullptr);
  EXPECT_EQ(GetLastError(), DWORD(ERROR_FILE_NOT_FOUND));
  const std::u16string noExtension = ProductPathFromSystem((folder.Path() / "test").string());
  folder.Write("Test.DLL", LibraryBytes());
  EXPECT_NE(module = LoadLibraryExW(noExtension.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE), nullptr);
}

// Each row damages one 32-bit number of the library.
TEST_F(Resources, EveryPlaceIsCheckedAgainstItsPiece) {
  constexpr std::size_t kResources = 0x800;  // the section's place in the built library, checked below
  ASSERT_EQ(LibraryBytes().substr(kResources + 12, 8), std::string("\0\0\1\0\6\0\0\0", 8));
  const struct {
    const char* what;
    std::size_t offset;  // from the start of the resources
    DWORD value;
    bool loads;
    std::u16string string1;
  } rows[] = {
      {"nothing changed", 8, 0, true, u"Kestrova"},
      {"more entries than the section holds", 12, 0xFFFFFFFF, false, u""},
      {"the kinds point at a leaf", 20, 0x18, false, u""},
      {"the kinds point just behind the end", 20, 0x80000000 | DWORD(LibraryBytes().size() - kResources - 15), false,
       u""},
      {"another kind of resource", 16, 5, true, u""},
  };
  for (const auto& row : rows) {
    std::string bytes = LibraryBytes();
    std::memcpy(bytes.data() + kResources + row.offset, &row.value, sizeof row.value);
    EXPECT_EQ(Load(bytes) != nullptr, row.loads) << row.what;
    EXPECT_EQ(String(1), row.string1) << row.what;
  }
}

TEST_F(Resources, NeutralLanguageComesFirstThenTheUsers) {
  const std::string bytes = kvtest::ReadFile(kvtest::SourceFile("fuzz/seeds/resources/languages.dll"));
  const struct {
    const TCHAR* user;
    std::u16string string1;
  } rows[] = {{_T("de_DE.UTF-8"), u"Hallo"}, {_T("de_AT.UTF-8"), u"Hallo"}, {_T("en_US.UTF-8"), u"Hello"}};
  for (const auto& row : rows) {
    SetEnvironmentVariableW(_T("LC_ALL"), row.user);
    ASSERT_NE(Load(bytes), nullptr);
    EXPECT_EQ(String(1), row.string1);
    EXPECT_EQ(String(20), u"neutral");
  }
  SetEnvironmentVariableW(_T("LC_ALL"), nullptr);
}

TEST_F(Resources, LibraryOf32BitsReadsTheSame) {
  std::string bytes = LibraryBytes();
  DWORD header = 0;
  std::memcpy(&header, bytes.data() + 0x3C, sizeof header);
  char* fields = bytes.data() + header + 24;
  std::memcpy(fields, "\x0B\x01", 2);
  // The table of directories and its length stand 16 bytes earlier in the smaller header.
  std::memmove(fields + 92, fields + 108, 4 + 16 * 8);
  ASSERT_NE(Load(bytes), nullptr);
  EXPECT_EQ(String(2554), u"Warning");
}

}  // namespace
