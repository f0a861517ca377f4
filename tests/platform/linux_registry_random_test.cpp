// The registry's keys and values beyond what every system promises: their order, handles that are never used again, and
// text as it was given; and a plain model: keys and values changed in random order, from this connection and in
// transactions, and asked by name and by number in between.
#include <iterator>
#include <map>
#include <random>
#include <set>

#include "platform/handles.h"
#include "tests/platform/registry_support.h"

using kvtest::Key;
using kvtest::RegistryTest;
using LinuxRegistryKeys = kvtest::RegistryTest;
using kvtest::Text;

namespace {

// Names compare without case and keep the one that they were made with.
struct WithoutCase {
  bool operator()(const Text& a, const Text& b) const { return (a[0] | 0x20) < (b[0] | 0x20); }
};

class RegistryRandom : public RegistryTest {
 protected:
  static constexpr unsigned kNames = 12;

  Text Name() { return Text(1, TCHAR((random_() % 2 ? 'a' : 'A') + random_() % kNames)); }

  void Set(HKEY key, const Text& name, int number) {
    ASSERT_EQ(kvtest::SetNumber(key, name.c_str(), DWORD(number)), ERROR_SUCCESS);
    if (values_.insert_or_assign(name, number).second) order_.push_back(name);
  }
  bool Forget(const Text& name) {
    std::erase_if(order_, [&](const Text& kept) { return (kept[0] | 0x20) == (name[0] | 0x20); });
    return values_.erase(name) == 1;
  }

  void Change(int step) {
    const Text name = Name();
    switch (random_() % 4) {
      case 0:
        ASSERT_EQ(Create(name.c_str()), ERROR_SUCCESS);
        keys_.insert(name);
        break;
      case 1: ASSERT_EQ(RegDeleteTreeW(key_, name.c_str()) == ERROR_SUCCESS, keys_.erase(name) == 1); break;
      case 2: ASSERT_EQ(RegDeleteValueW(key_, name.c_str()) == ERROR_SUCCESS, Forget(name)); break;
      default: Set(key_, name, step);
    }
  }

  // Changes through another connection, that of a transaction which commits or doesn't.
  void ChangeOutside(int step) {
    const HANDLE transaction = CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr);
    const bool commits = random_() % 2, deletes = random_() % 4 == 0;
    const auto values = values_;
    const auto order = order_;
    {
      Key inside;
      ASSERT_EQ(RegOpenKeyTransactedW(HKEY_CURRENT_USER, kPath, 0, KEY_ALL_ACCESS, &inside, transaction, nullptr), 0);
      for (int i = 0; i < 3; ++i) Set(inside, Name(), step + i);
      const Text name = Name();
      if (deletes) {
        ASSERT_EQ(RegDeleteValueW(inside, name.c_str()) == ERROR_SUCCESS, Forget(name));
      }
    }
    if (commits) {
      ASSERT_TRUE(CommitTransaction(transaction));
    } else {
      values_ = values;
      order_ = order;
    }
    CloseHandle(transaction);
  }

  // Asks for something by its name, and for the items of a number.
  void Ask(DWORD index) {
    const auto named = [](LSTATUS status, LPCTSTR given) { return status == ERROR_SUCCESS ? Text(given) : Text(); };
    TCHAR given[8];
    DWORD units = 8, number = 0, bytes = sizeof number;
    LSTATUS status =
        RegEnumValueW(key_, index, given, &units, nullptr, nullptr, reinterpret_cast<BYTE*>(&number), &bytes);
    ASSERT_EQ(named(status, given), index < order_.size() ? order_[index] : Text());
    ASSERT_EQ(number, index < order_.size() ? DWORD(values_[order_[index]]) : 0);
    const Text name = Name();
    const auto value = values_.find(name);
    ASSERT_EQ(Number(name.c_str()), value == values_.end() ? -ERROR_FILE_NOT_FOUND : value->second);
    ASSERT_EQ(Open(name.c_str()), keys_.contains(name) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND);
    units = 8;
    status = RegEnumKeyExW(key_, index, given, &units, nullptr, nullptr, nullptr, nullptr);
    ASSERT_EQ(named(status, given), index < keys_.size() ? *std::next(keys_.begin(), index) : Text());
  }

  std::mt19937 random_;
  std::set<Text, WithoutCase> keys_;
  std::map<Text, LONGLONG, WithoutCase> values_;
  std::vector<Text> order_;  // of the values, as they were made
};

TEST_F(RegistryRandom, AnswersAsTheModelWhoeverMadeTheLastChange) {
  random_.seed(kvtest::PrintedSeed());
  DWORD index = 0;
  for (int step = 0; step < 4000 && !HasFatalFailure(); ++step) {
    const unsigned kind = random_() % 16;
    if (kind == 0) ChangeOutside(step);
    if (kind == 1) Change(step);
    index = random_() % 8 == 0 ? random_() % kNames : index + random_() % 2;  // walks, with a jump now and then
    Ask(index % (kNames + 1));
  }
}

TEST_F(LinuxRegistryKeys, SubKeysComeInOrderOfTheirNamesWithoutCase) {
  for (const LPCTSTR name : {_T("b"), _T("C"), _T("a_"), _T("A"), _T("ab"), _T("_"), _T("10"), _T("9"), _T("A\\x")})
    ASSERT_EQ(Create(name), ERROR_SUCCESS);
  EXPECT_EQ(SubKeys(), (std::vector<Text>{_T("10"), _T("9"), _T("A"), _T("ab"), _T("a_"), _T("b"), _T("C"), _T("_")}));
}

TEST_F(LinuxRegistryKeys, ClosedHandleIsInvalid) {
  HKEY opened = nullptr;
  ASSERT_EQ(RegOpenKeyExW(key_, nullptr, 0, KEY_READ, &opened), ERROR_SUCCESS);
  EXPECT_EQ(RegCloseKey(opened), ERROR_SUCCESS);
  Key other;
  ASSERT_EQ(RegOpenKeyExW(key_, nullptr, 0, KEY_READ, &other), ERROR_SUCCESS);
  EXPECT_EQ(RegCloseKey(opened), ERROR_INVALID_HANDLE);
  EXPECT_EQ(RegQueryValueExW(opened, _T("V"), nullptr, nullptr, nullptr, nullptr), ERROR_INVALID_HANDLE);
  EXPECT_EQ(RegCloseKey(nullptr), ERROR_INVALID_HANDLE);
  EXPECT_EQ(RegCloseKey(HKEY_CURRENT_USER), ERROR_SUCCESS);
}

// Readers cope with a missing terminator: tests/settings/registry_test.cpp.
TEST_F(LinuxRegistryKeys, TextIsStoredWithoutATerminatorOfItsOwn) {
  for (const std::string& bytes : {kvtest::Wide(_T("ab")), std::string("a\0\7", 3), std::string()}) {
    EXPECT_EQ(kvtest::Set(key_, _T("V"), {REG_SZ, bytes}), ERROR_SUCCESS);
    EXPECT_EQ(kvtest::Get(key_, nullptr, _T("V")).bytes, bytes);
  }
}

}  // namespace
