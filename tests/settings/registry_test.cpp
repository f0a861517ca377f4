// What a settings tree leaves in the registry, byte by byte, and what it takes from there.
#include <gtest/gtest.h>

#include <functional>

#include "share/settings/settings_key.h"

namespace {

constexpr LPCTSTR kPath = _T("Software\\SettingsTest");

struct Stored {
  DWORD type = 0;
  std::string bytes;
  bool operator==(const Stored&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Stored& stored) {
  out << "type " << stored.type << ":";
  for (const char byte : stored.bytes) out << ' ' << int(BYTE(byte));
  return out;
}

std::string Wide(std::u16string_view text) { return {reinterpret_cast<const char*>(text.data()), text.size() * 2}; }

template <class T>
std::string Raw(T value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

void Put(LPCTSTR name, const Stored& stored) {
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kPath, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr), 0);
  EXPECT_EQ(RegSetValueExW(key, name, 0, stored.type, reinterpret_cast<const BYTE*>(stored.bytes.data()),
                           DWORD(stored.bytes.size())),
            0);
  RegCloseKey(key);
}

Stored Get(LPCTSTR name) {
  HKEY key = nullptr;
  Stored stored;
  DWORD size = 4096;
  stored.bytes.resize(size);
  EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, kPath, 0, KEY_READ, &key), 0);
  EXPECT_EQ(RegQueryValueExW(key, name, nullptr, &stored.type, reinterpret_cast<BYTE*>(stored.bytes.data()), &size), 0);
  stored.bytes.resize(size);
  RegCloseKey(key);
  return stored;
}

bool Exists(LPCTSTR path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, KEY_READ, &key) != 0) return false;
  RegCloseKey(key);
  return true;
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

  const struct {
    LPCTSTR name;
    Stored stored;
  } rows[] = {
      {_T("double"), {REG_BINARY, Raw(-1.5)}},
      {_T("text"), {REG_SZ, Wide(std::u16string_view(u"Ä\u20AC\0", 3))}},
      {_T("empty"), {REG_SZ, Wide(std::u16string_view(u"\0", 1))}},
      {_T("int"), {REG_DWORD, std::string("\xFE\xFF\xFF\xFF", 4)}},
      {_T("color"), {REG_DWORD, std::string("\x01\x80\xFF\x00", 4)}},
      {_T("point"), {REG_SZ, Wide(std::u16string_view(u"-3 2147483647\0", 14))}},
      {_T("rect"), {REG_SZ, Wide(std::u16string_view(u"1 -2 3 4\0", 9))}},
      {_T("time"), {REG_SZ, Wide(std::u16string_view(u"1721037600\0", 11))}},
      {_T("late"), {REG_SZ, Wide(std::u16string_view(u"-1294967296\0", 12))}},
      {_T("real"), {REG_SZ, Wide(std::u16string_view(u"1.234568\0", 9))}},
      {_T("array"), {REG_BINARY, Raw(1) + Raw(-2)}},
      {_T("no array"), {REG_BINARY, ""}},
  };
  for (const auto& row : rows) EXPECT_EQ(Get(row.name), row.stored) << ToUtf8(CString(row.name));
}

TEST_F(SettingsRegistry, RestoresWhatIsThereAndKeepsTheRest) {
  const auto text = [](std::u16string_view value) { return Stored{REG_SZ, Wide(value)}; };
  const std::string kTwelve(12, '\x01');
  struct Row {
    const char* what;
    Stored stored;
    int result;
    std::function<void(QFSettingsKey&)> add;
    std::function<std::string(QFSettingsKey&)> read;
    const char* expected;
  };
  const auto asInt = [](auto value) {
    return [value](QFSettingsKey& key) mutable {
      key.GetValue(_T("v"), value);
      return std::to_string(value);
    };
  };
  const auto add = [](auto value) { return [value](QFSettingsKey& key) { key.AddValue(_T("v"), value); }; };
  const auto asPoint = [](QFSettingsKey& key) {
    CPoint point;
    key.GetValue(_T("v"), point);
    return std::to_string(point.x) + "," + std::to_string(point.y);
  };
  const auto asRect = [](QFSettingsKey& key) {
    CRect r;
    key.GetValue(_T("v"), r);
    return std::to_string(r.left) + "," + std::to_string(r.top) + "," + std::to_string(r.right) + "," +
           std::to_string(r.bottom);
  };
  const auto asTime = [](QFSettingsKey& key) {
    CTime time;
    key.GetValue(_T("v"), time);
    return std::to_string(time.GetTime());
  };
  const auto asText = [](QFSettingsKey& key) {
    CString value;
    key.GetValue(_T("v"), value);
    return ToUtf8(value);
  };
  const Row rows[] = {
      {"int", {REG_DWORD, Raw(-7)}, 1, add(5), asInt(0), "-7"},
      {"int, zero is a value", {REG_DWORD, Raw(0)}, 1, add(5), asInt(1), "0"},
      {"int of another type", {REG_BINARY, Raw(9)}, 1, add(5), asInt(0), "9"},
      {"int too long", {REG_BINARY, kTwelve}, 0, add(5), asInt(0), "5"},
      {"double too long", {REG_BINARY, kTwelve}, 0, add(2.5), asInt(0.0), "2.500000"},
      {"double", {REG_BINARY, Raw(-1.25)}, 1, add(2.5), asInt(0.0), "-1.250000"},
      {"color", {REG_DWORD, Raw(0xFFFFFFFFu)}, 1, add(5ul), asInt(0ul), "4294967295"},
      {"text up to its terminator", text({u"ab\0cd", 5}), 1, add(CString(_T("x"))), asText, "ab"},
      {"text without one", text(u"abc"), 1, add(CString(_T("xxxxxxxxxx"))), asText, "abc"},
      {"text of no bytes", text(u""), 1, add(CString(_T("x"))), asText, ""},
      {"point", text({u"3 -4\0", 5}), 1, add(CPoint(8, 9)), asPoint, "3,-4"},
      {"point that doesn't scan", text({u"abc\0", 4}), 1, add(CPoint(8, 9)), asPoint, "8,9"},
      {"half a point", text(u"  +3 x"), 1, add(CPoint(8, 9)), asPoint, "3,9"},
      {"rect", text(u"1 2 3 4"), 1, add(CRect(9, 9, 9, 9)), asRect, "1,2,3,4"},
      {"half a rect", text(u"1 2"), 1, add(CRect(9, 9, 9, 9)), asRect, "1,2,9,9"},
      {"time", text(u"1721037600"), 1, add(CTime(5)), asTime, "1721037600"},
      {"time below zero", text(u"-1"), 1, add(CTime(5)), asTime, "4294967295"},
      {"time beyond 32 bits", text(u"4294967297"), 1, add(CTime(5)), asTime, "1"},
      {"time that doesn't scan", text(u"soon"), 1, add(CTime(5)), asTime, "0"},
      {"real", text(u" 1.5e1mm"), 1, add(2.0L), asInt(0.0L), "15.000000"},
      {"real that doesn't scan", text(u"x"), 1, add(2.0L), asInt(0.0L), "2.000000"},
      {"real too small", text(u"-1e-999"), 1, add(2.0L), asInt(0.0L), "-0.000000"},
      {"real too large", text(u"1e999"), 1, add(2.0L), asInt(0.0L), "inf"},
      {"real too large behind zeros", text(u"0.0000001e400"), 1, add(2.0L), asInt(0.0L), "inf"},
  };
  for (const Row& row : rows) {
    Put(_T("v"), row.stored);
    QFSettingsKey key(_T("key"), kPath);
    row.add(key);
    EXPECT_EQ(key.RestoreValuesFromRegistry(), row.result) << row.what;
    EXPECT_EQ(row.read(key), row.expected) << row.what;
  }
}

TEST_F(SettingsRegistry, ArrayTakesBinaryOnly) {
  const auto restored = [](const Stored& stored) {
    CArray<int, int> numbers;
    numbers.Add(5);
    Put(_T("v"), stored);
    QFSettingsKey key(_T("key"), kPath);
    key.AddValue(_T("v"), numbers);
    EXPECT_EQ(key.RestoreValuesFromRegistry(), 1) << stored;
    key.GetValue(_T("v"), numbers);
    return std::vector<int>(numbers.begin(), numbers.end());
  };
  EXPECT_EQ(restored({REG_SZ, Wide(u"12")}), std::vector<int>({5}))
      << "of another type: as it was, and the result is 1";
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
  // One that fails makes the whole 0, and the others are read all the same.
  root.AddValue(_T("missing"), 3);
  root.SetValue(_T("a"), 10);
  EXPECT_EQ(root.RestoreValuesFromRegistry(), 0);
  int a = 0;
  root.GetValue(_T("a"), a);
  EXPECT_EQ(a, 1);
}

TEST_F(SettingsRegistry, HiveIsTheKeysOwn) {
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
  Put(_T("v"), {REG_DWORD, Raw(1)});
  const QFSettingsKey key;
  HKEY handle = key.GetHandleToKey(/*create=*/0, /*readOnly=*/1);
  ASSERT_NE(handle, nullptr);
  HKEY below = nullptr;
  EXPECT_EQ(RegOpenKeyExW(handle, kPath, 0, KEY_READ, &below), 0);
  RegCloseKey(below);
  RegCloseKey(handle);
}

TEST_F(SettingsRegistry, SavingWhereNothingCanBeOpenedGivesZero) {
  QFSettingsKey key(_T("key"), _T("\\no such path"));
  key.AddValue(_T("a"), 1);
  EXPECT_EQ(key.SaveValuesToRegistry(), 0);
  EXPECT_EQ(QFSettingsValue(_T("v")).SaveValueToRegistry(&key), 0) << "a value without a datum";
  EXPECT_EQ(QFIntValue(_T("v"), 1).RestoreValueFromRegistry(nullptr), 0);
}
