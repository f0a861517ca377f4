// A settings tree in the registry: the bytes that it writes, and the values that it reads.
#include "share/settings/feed_colors.h"
#include "share/settings/settings_key.h"
#include "tests/host/run_command.h"
#include "tests/registry_calls.h"

namespace {

using kvtest::Raw, kvtest::Stored, kvtest::Wide;

constexpr LPCTSTR kPath = _T("Software\\SettingsTest");

Stored TextOf(TextView text) { return {REG_SZ, Wide(text)}; }
bool Exists(LPCTSTR path) { return kvtest::Open(HKEY_CURRENT_USER, path) == ERROR_SUCCESS; }

// Restores a value of that class from the registry value.
template <class Value, class Datum>
void ExpectRestored(const char* what, const Stored& stored, int result, const Datum& before, const Datum& after) {
  kvtest::Put(HKEY_CURRENT_USER, kPath, _T("v"), stored);
  QFSettingsKey key(_T("key"), kPath);
  Value value(_T("v"), before);
  EXPECT_EQ(value.RestoreValueFromRegistry(&key), result) << what;
  EXPECT_TRUE(value.GetValue() == after) << what << ": " << testing::PrintToString(value.GetValue());
}

class SettingsRegistry : public testing::Test {
 protected:
  void SetUp() override { RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software")); }
};

}  // namespace

TEST_F(SettingsRegistry, EveryTypeHasItsExactBytes) {
  CArray<int, int> numbers, none;
  numbers.Add(1);
  numbers.Add(-2);
  QFSettingsKey key(_T("key"), kPath);
  key.AddValue(_T("double"), -1.5);
  key.AddValue(_T("text"), CString(_T("Ä\u20AC")));
  key.AddValue(_T("empty"), CString());
  key.AddValue(_T("int"), -2);
  key.AddValue(_T("color"), 0xFF8001ul);
  key.AddValue(_T("point"), CPoint(-3, 2147483647));
  key.AddValue(_T("rect"), CRect(1, -2, 3, 4));
  key.AddValue(_T("time"), CTime(LONGLONG(1721037600)));
  key.AddValue(_T("late"), CTime(LONGLONG(3000000000)));
  key.AddValue(_T("real"), 1.23456789L);
  key.AddValue(_T("array"), numbers);
  key.AddValue(_T("no array"), none);
  ASSERT_EQ(key.SaveValuesToRegistry(), 1);

  const std::pair<LPCTSTR, Stored> rows[] = {{_T("double"), {REG_BINARY, Raw(-1.5)}},
                                             {_T("text"), TextOf({_T("Ä\u20AC\0"), 3})},
                                             {_T("empty"), TextOf({_T("\0"), 1})},
                                             {_T("int"), {REG_DWORD, std::string("\xFE\xFF\xFF\xFF", 4)}},
                                             {_T("color"), {REG_DWORD, std::string("\x01\x80\xFF\x00", 4)}},
                                             {_T("point"), TextOf({_T("-3 2147483647\0"), 14})},
                                             {_T("rect"), TextOf({_T("1 -2 3 4\0"), 9})},
                                             {_T("time"), TextOf({_T("1721037600\0"), 11})},
                                             {_T("late"), TextOf({_T("-1294967296\0"), 12})},
                                             {_T("real"), TextOf({_T("1.234568\0"), 9})},
                                             {_T("array"), {REG_BINARY, Raw(1) + Raw(-2)}},
                                             {_T("no array"), {REG_BINARY, ""}}};
  for (const auto& [name, stored] : rows)
    EXPECT_EQ(kvtest::Get(HKEY_CURRENT_USER, kPath, name), stored) << ToUtf8(CString(name));
}

TEST_F(SettingsRegistry, RestoresReadableFieldsAndKeepsTheOthers) {
  const std::string twelve(12, '\x01');
  ExpectRestored<QFIntValue>("int", {REG_DWORD, Raw(-7)}, 1, 5, -7);
  ExpectRestored<QFIntValue>("int of another type", {REG_BINARY, Raw(9)}, 1, 5, 9);
  ExpectRestored<QFIntValue>("int too long", {REG_BINARY, twelve}, 0, 5, 5);
  ExpectRestored<QFDoubleValue>("double", {REG_BINARY, Raw(-1.25)}, 1, 2.5, -1.25);
  ExpectRestored<QFColorValue>("color", {REG_DWORD, Raw(0xFFFFFFFFu)}, 1, 5ul, 0xFFFFFFFFul);
  const CString x(_T("xxxxxxxxxx"));
  ExpectRestored<QFStringValue>("up to its terminator", TextOf({_T("ab\0cd"), 5}), 1, x, CString(_T("ab")));
  ExpectRestored<QFStringValue>("text without one", TextOf(_T("abc")), 1, x, CString(_T("abc")));
  ExpectRestored<QFPointValue>("point", TextOf({_T("3 -4\0"), 5}), 1, CPoint(8, 9), CPoint(3, -4));
  ExpectRestored<QFPointValue>("point that doesn't scan", TextOf({_T("abc\0"), 4}), 1, CPoint(8, 9), CPoint(8, 9));
  ExpectRestored<QFPointValue>("half a point", TextOf(_T("  +3 x")), 1, CPoint(8, 9), CPoint(3, 9));
  ExpectRestored<QFRectValue>("rect", TextOf(_T("1 2 3 4")), 1, CRect(9, 9, 9, 9), CRect(1, 2, 3, 4));
  ExpectRestored<QFRectValue>("half a rect", TextOf(_T("1 2")), 1, CRect(9, 9, 9, 9), CRect(1, 2, 9, 9));
  ExpectRestored<QFTimeValue>("time", TextOf(_T("1721037600")), 1, CTime(5), CTime(1721037600));
  ExpectRestored<QFTimeValue>("time below zero", TextOf(_T("-1")), 1, CTime(5), CTime(4294967295));
  ExpectRestored<QFTimeValue>("time beyond 32 bits", TextOf(_T("4294967297")), 1, CTime(5), CTime(1));
  ExpectRestored<QFTimeValue>("time that doesn't scan", TextOf(_T("soon")), 1, CTime(5), CTime(LONGLONG(0)));
  ExpectRestored<QFLongDoubleStrValue>("real", TextOf(_T(" 1.5e1mm")), 1, 2.0L, 15.0L);
  ExpectRestored<QFLongDoubleStrValue>("real that doesn't scan", TextOf(_T("x")), 1, 2.0L, 2.0L);
  ExpectRestored<QFLongDoubleStrValue>("real too small", TextOf(_T("-1e-999")), 1, 2.0L, 0.0L);
  ExpectRestored<QFLongDoubleStrValue>("too large behind zeros", TextOf(_T("0.0000001e400")), 1, 2.0L,
                                       std::numeric_limits<long double>::infinity());
}

TEST_F(SettingsRegistry, ArrayTakesBinaryOnly) {
  const auto restored = [](const Stored& stored) {
    CArray<int, int> numbers;
    numbers.Add(5);
    kvtest::Put(HKEY_CURRENT_USER, kPath, _T("v"), stored);
    QFSettingsKey key(_T("key"), kPath);
    QFIntArrayValue value(_T("v"), numbers);
    EXPECT_EQ(value.RestoreValueFromRegistry(&key), 1) << stored;
    return std::vector<int>(value.GetValue().begin(), value.GetValue().end());
  };
  EXPECT_EQ(restored({REG_SZ, Wide(_T("12"))}), std::vector<int>({5})) << "unchanged, with result 1";
  EXPECT_EQ(restored({REG_BINARY, ""}), std::vector<int>());
  EXPECT_EQ(restored({REG_BINARY, Raw(1) + Raw(2)}), std::vector<int>({1, 2}));
  EXPECT_EQ(restored({REG_BINARY, Raw(1) + "xy"}), std::vector<int>({1}));
}

TEST_F(SettingsRegistry, RestoringCreatesNothingAndSavingCreatesEveryKey) {
  QFSettingsKey root(_T("root"), _T("Software\\SettingsTest\\Root"));
  auto* child = new QFSettingsKey(_T("child"), _T("Software\\SettingsTest\\Elsewhere"));
  root.AddValue(_T("a"), 1);
  root.AddKey(child);
  child->AddValue(_T("b"), 2);
  EXPECT_EQ(root.RestoreValuesFromRegistry(), 0);
  EXPECT_FALSE(Exists(_T("Software")));
  EXPECT_EQ(root.SaveValuesToRegistry(), 1);
  EXPECT_TRUE(Exists(_T("Software\\SettingsTest\\Root")));
  EXPECT_TRUE(Exists(_T("Software\\SettingsTest\\Elsewhere")));
  EXPECT_EQ(root.RestoreValuesFromRegistry(), 1);
  // A failure makes the result 0; the other values are read all the same.
  root.AddValue(_T("missing"), 3);
  root.SetValue(_T("a"), 10);
  EXPECT_EQ(root.RestoreValuesFromRegistry(), 0);
  int a = 0;
  root.GetValue(_T("a"), a);
  EXPECT_EQ(a, 1);
}

TEST_F(SettingsRegistry, HiveBelongsToOneKey) {
  QFSettingsKey root(_T("root"), kPath);
  auto* child = new QFSettingsKey(_T("child"), _T("Software\\SettingsTest\\Child"));
  root.AddKey(child);
  child->AddValue(_T("b"), 2);
  EXPECT_EQ(root.SetKey(HKEY_LOCAL_MACHINE), HKEY_CURRENT_USER);
  EXPECT_EQ(root.SetKey(HKEY_LOCAL_MACHINE), HKEY_LOCAL_MACHINE);
  EXPECT_EQ(root.SaveValuesToRegistry(), 1);
  EXPECT_TRUE(Exists(_T("Software\\SettingsTest\\Child"))) << "the child's hive is still the user's";
  EXPECT_EQ(QFSettingsKey::GetHasPermissionsToWriteToHKLM(), 1);
}

TEST_F(SettingsRegistry, EmptyPathOpensTheHiveItself) {
  ASSERT_EQ(kvtest::Create(HKEY_CURRENT_USER, kPath), ERROR_SUCCESS);
  kvtest::Key hive;
  *&hive = QFSettingsKey().GetHandleToKey(/*create=*/0, /*readOnly=*/1);
  EXPECT_EQ(kvtest::Open(hive, kPath), ERROR_SUCCESS);
}

TEST_F(SettingsRegistry, SavingWhereNothingCanBeOpenedGivesZero) {
  QFSettingsKey key(_T("key"), _T("\\no such path"));
  key.AddValue(_T("a"), 1);
  EXPECT_EQ(key.SaveValuesToRegistry(), 0);
  EXPECT_EQ(QFSettingsValue(_T("v")).SaveValueToRegistry(&key), 0) << "a value without a datum";
  EXPECT_EQ(QFIntValue(_T("v"), 1).RestoreValueFromRegistry(nullptr), 0);
}

namespace {

// Adds enough values for a transaction.
void AddMany(QFSettingsKey& key, int value) {
  for (int i = 0; i < 50; ++i) {
    CString name;
    name.Format(_T("v%d"), i);
    key.AddValue(name, value);
  }
}

// A module's key. It reads the registry when it is saved.
class ModuleKey : public QFSettingsKey {
 public:
  int SaveValuesToRegistry() override {
    found = kvtest::Get(HKEY_CURRENT_USER, kPath, _T("v0"));
    kvtest::Put(HKEY_CURRENT_USER, kPath, _T("own"), found);
    return 1;
  }
  Stored found;
};

}  // namespace

TEST_F(SettingsRegistry, UnwritableValueStopsNoOther) {
  QFSettingsKey key(_T("key"), kPath);
  AddMany(key, 3);
  key.AddValue(CString(_T('x'), 16384), 1);
  AddMany(key, 4);
  EXPECT_EQ(key.SaveValuesToRegistry(), 0);
  for (LPCTSTR name : {_T("v0"), _T("v49")})
    EXPECT_EQ(kvtest::Get(HKEY_CURRENT_USER, kPath, name), (Stored{REG_DWORD, Raw(3)})) << "the value declared first";
}

TEST_F(SettingsRegistry, WritesAgainWhatAnotherProcessHasChanged) {
  constexpr LPCTSTR kTable = _T("Software\\Zemlor\\Kestrova\\FeedColors\\Mill");
  QFSettingsKey root(_T("root"), kPath);
  auto* table = new QFMillFeedColorsSettings;
  AddMany(root, 1);
  root.AddValue(_T("V7"), 2);  // another declaration of v7, which the first one overwrites
  root.AddKey(table);
  for (const double feed : {3.0, 2.0, 1.0}) table->AddValue(feed, 5);
  const Stored one{REG_DWORD, Raw(1)}, five{REG_DWORD, Raw(5)};
  const struct {
    LPCTSTR path, name;  // without a name the key is deleted
    DWORD number;
  } rows[] = {{kPath, _T("other"), 1}, {kPath, _T("v3"), 5}, {kPath, _T("v7"), 2}, {kTable, _T("4.00"), 5},
              {kTable, _T("2.00"), 1}, {kTable, nullptr, 0}, {kPath, nullptr, 0}};
  const auto change = [](const auto& row) {
    const std::string path = "HKCU\\" + ToUtf8(row.path);
    if (!row.name) return kvtest::RunCommand({"reg", "delete", path, "/f"});
    return kvtest::RunCommand(
        {"reg", "add", path, "/v", ToUtf8(row.name), "/t", "REG_DWORD", "/d", std::to_string(row.number), "/f"});
  };
  for (int i = 0; i < 2 * int(std::size(rows)); ++i) {
    EXPECT_EQ(root.SaveValuesToRegistry(), 1);
    EXPECT_EQ(change(rows[i / 2]).exit_code, 0) << i;
    if (i % 2) root.SetValue(_T("v0"), i);  // with a change of its own, too
    EXPECT_EQ(root.SaveValuesToRegistry(), 1) << i;
    EXPECT_EQ(kvtest::Get(HKEY_CURRENT_USER, kPath, _T("v0")).bytes, Raw(i % 2 ? i : std::max(1, i - 1))) << i;
    for (LPCTSTR name : {_T("v3"), _T("v7")}) EXPECT_EQ(kvtest::Get(HKEY_CURRENT_USER, kPath, name), one) << i;
    const kvtest::Key key(HKEY_CURRENT_USER, kTable);
    EXPECT_EQ(kvtest::ValueNames(key), (std::vector<kvtest::Text>{_T("1.00"), _T("2.00"), _T("3.00")})) << i;
    EXPECT_EQ(kvtest::Get(HKEY_CURRENT_USER, kTable, _T("2.00")), five) << i;
  }
}

TEST_F(SettingsRegistry, KeyOfAModuleFindsTheItemsBeforeItSaved) {
  QFSettingsKey root(_T("root"), kPath);
  auto* own = new ModuleKey;
  AddMany(root, 1);
  root.AddKey(own);
  AddMany(root, 2);
  EXPECT_EQ(root.SaveValuesToRegistry(), 1);
  EXPECT_EQ(own->found, (Stored{REG_DWORD, Raw(2)}));
  EXPECT_EQ(kvtest::Get(HKEY_CURRENT_USER, kPath, _T("v0")), (Stored{REG_DWORD, Raw(1)}));
}
