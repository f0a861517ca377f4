// The INI handlers: their files, the bytes that they write, and the version of a file.
#include "share/utilities/ini_handlers.h"

#include "share/core/registry_keys.h"
#include "tests/registry_calls.h"
#include "tests/utilities/files_fixture.h"

namespace {

using namespace std::string_literals;

class IniHandlers : public kvtest::FilesTest {
 protected:
  static void PutDataPath(HKEY hive, const CString& path) {
    kvtest::Put(hive, kVersionKey, _T("KVDataPath"), {REG_SZ, kvtest::Wide(kvtest::Text(path) + _T('\0'))});
  }
};

TEST_F(IniHandlers, ShopFloorEmptiesItsFileAndWritesUtf16) {
  folder.Write("f.ini", "[old]\nk=1\n");
  QFShopFloorINIHandler handler(At("f.ini"));
  EXPECT_EQ(Bytes("f.ini"), "\xFF\xFE");
  handler.SetValue(_T("A"), _T("k"), _T("€"));
  EXPECT_EQ(Bytes("f.ini"), "\xFF\xFE[\0A\0]\0\r\0\n\0k\0=\0\xAC\x20\r\0\n\0"s);
  EXPECT_EQ(ToUtf8(handler.GetValue(_T("a"), _T("K"))), "€");
  handler.SetINIFileName(At("g.ini"));
  EXPECT_EQ(Bytes("g.ini"), "\xFF\xFE");
  EXPECT_EQ(ToUtf8(handler.GetValue(_T("a"), _T("K"))), "");
}

TEST_F(IniHandlers, NumbersAreWrittenInTheirFormats) {
  QFTBMINIHandler handler(At("f.ini"));
  handler.SetValue(_T("A"), _T("int"), -2147483647 - 1);
  const std::pair<double, const char*> rows[] = {
      {1234567, "1.23457e+06"}, {123456, "123456"}, {-0.00001, "-1e-05"}, {1.0 / 3, "0.333333"}};
  for (const auto& [value, wanted] : rows) {
    handler.SetValue(_T("A"), _T("d"), value);
    EXPECT_EQ(Bytes("f.ini"), "[A]\r\nint=-2147483648\r\nd="s + wanted + "\r\n");
  }
}

TEST_F(IniHandlers, ListsAndRemovesSections) {
  folder.Write("f.ini", "[A]\nk=1\nl=2\n;c\n[b]\nm=3\n[A]\nn=4\n");
  QFTBMINIHandler handler(At("f.ini"));
  EXPECT_EQ(Bytes("f.ini").size(), 31U) << "this handler empties nothing";
  CList<CString> list;
  list.AddTail(_T("before"));
  handler.GetSections(list);
  handler.GetKeys(_T("a"), list);
  EXPECT_EQ(Joined(list), "before A b A k l ");
  handler.RemoveSection(_T("a"));
  EXPECT_EQ(Bytes("f.ini"), "[b]\nm=3\n[A]\nn=4\n");
  EXPECT_EQ(ToUtf8(handler.GetValue(_T("b"), _T("none"))), "");
}

TEST_F(IniHandlers, BuffersBoundWhatIsRead) {
  std::string bytes = "[A]\nk=" + std::string(1023, 'x') + "yz\n";
  for (int i = 0; i < 8000; ++i) bytes += "k" + std::to_string(i) + "=\n";
  folder.Write("f.ini", bytes);
  const QFTBMINIHandler handler(At("f.ini"));
  EXPECT_EQ(ToUtf8(handler.GetValue(_T("A"), _T("k"))), std::string(1023, 'x'));
  CList<CString> keys;
  handler.GetKeys(_T("A"), keys);
  // k and k0 to k9, k10 to k99, k100 to k999 take 4892 units with their NULs; 4645 names of 6 units fit in the rest
  // of 32765, and three units of one more.
  EXPECT_EQ(keys.GetCount(), 1 + 10 + 90 + 900 + 4645 + 1);
  EXPECT_EQ(ToUtf8(keys.GetTail()), "k56");
}

TEST_F(IniHandlers, WithoutANameNothingHappens) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path());
  QFTBMINIHandler handler;
  handler.SetValue(_T("A"), _T("k"), _T("v"));
  handler.RemoveSection(_T("A"));
  CList<CString> list;
  handler.GetSections(list);
  handler.GetKeys(_T("A"), list);
  EXPECT_EQ(Joined(list), "");
  EXPECT_EQ(ToUtf8(handler.GetValue(_T("A"), _T("k"))), "");
  EXPECT_EQ(handler.GetFileVersion(CString()), 0.0);
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
  std::filesystem::current_path(before);
}

TEST_F(IniHandlers, FileVersionFollowsFromTheFirstCondition) {
  const std::pair<const char*, double> rows[] = {
      {"[StrategyCondition1]\nFeatureIndex=3\nFeatureCatalog=c\n", 2.3},
      {"[StrategyCondition1]\nFeatureIndex=\nFeatureCatalog=c\n", 2.0},
      {"[StrategyCondition1]\n[FileInformation]\nVersion=4.5\n", 1.0},
  };
  RegDeleteTreeW(HKEY_CURRENT_USER, kVersionKey);
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, kVersionKey);
  PutDataPath(HKEY_LOCAL_MACHINE, At("machine"));
  for (const auto& [bytes, wanted] : rows) {
    folder.Write("machine/KVTBM/t.ini", bytes);
    EXPECT_EQ(QFTBMINIHandler().GetFileVersion(_T("t.ini")), wanted) << bytes;
  }
  EXPECT_EQ(QFTBMINIHandler().GetFileVersion(_T("missing.ini")), 1.0);
  PutDataPath(HKEY_CURRENT_USER, At("user"));
  std::filesystem::create_directories(folder.Path() / "user" / "KVTBM");
  QFTBMINIHandler handler;
  handler.SetINIFileName(_T("t.ini"));
  EXPECT_FALSE(std::filesystem::exists(folder.Path() / "user/KVTBM/t.ini"));
  handler.SetValue(_T("A"), _T("k"), 1);
  EXPECT_EQ(Bytes("user/KVTBM/t.ini"), "[A]\r\nk=1\r\n");
  RegDeleteTreeW(HKEY_CURRENT_USER, kVersionKey);
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, kVersionKey);
}

}  // namespace
