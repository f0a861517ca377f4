// The registry against a plain model: keys and values changed in random order, from this connection
// and from another, and asked by name and by number in between.
#include <cstdio>
#include <iterator>
#include <map>
#include <random>
#include <set>

#include "platform/handles.h"
#include "tests/platform/registry_support.h"

using kvtest::Key;
using kvtest::RegistryTest;
using kvtest::Text;

namespace {

class RegistryRandom : public RegistryTest {
 protected:
  static constexpr unsigned kNames = 12;

  Text Name() { return Text(1, TCHAR('a' + random_() % kNames)); }

  void Set(HKEY key, const Text& name, int number) {
    ASSERT_EQ(RegSetValueExW(key, name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), 4), 0);
    if (values_.insert_or_assign(name, number).second) order_.push_back(name);
  }
  bool Forget(const Text& name) {
    std::erase(order_, name);
    return values_.erase(name) == 1;
  }

  void Change(int step) {
    const Text name = Name();
    switch (random_() % 4) {
      case 0:
        ASSERT_EQ(Create(name.c_str()), ERROR_SUCCESS);
        keys_.insert(name);
        break;
      case 1: ASSERT_EQ(RegDeleteKeyExW(key_, name.c_str(), 0, 0) == ERROR_SUCCESS, keys_.erase(name) == 1); break;
      case 2: ASSERT_EQ(RegDeleteValueW(key_, name.c_str()) == ERROR_SUCCESS, Forget(name)); break;
      default: Set(key_, name, step);
    }
  }
  // A change as another process makes it: through another connection.
  void ChangeOutside(int step) {
    const HANDLE transaction = CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr);
    {
      Key inside;
      ASSERT_EQ(RegOpenKeyTransactedW(HKEY_CURRENT_USER, kPath, 0, KEY_ALL_ACCESS, &inside, transaction, nullptr), 0);
      Set(inside, Name(), step);
    }
    ASSERT_TRUE(CommitTransaction(transaction));
    CloseHandle(transaction);
  }

  // Asks for the item number `index`, or for one beside it.
  void Ask(DWORD index) {
    const Text name = Name();
    const auto value = values_.find(name);
    ASSERT_EQ(Number(name.c_str()), value == values_.end() ? -ERROR_FILE_NOT_FOUND : value->second);
    ASSERT_EQ(Open(name.c_str()), keys_.contains(name) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND);
    TCHAR given[8];
    DWORD units = 8;
    if (RegEnumKeyExW(key_, index, given, &units, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS) {
      ASSERT_LT(index, keys_.size());
      ASSERT_EQ(Text(given), *std::next(keys_.begin(), index));
    } else {
      ASSERT_GE(index, keys_.size());
    }
    units = 8;
    if (RegEnumValueW(key_, index, given, &units, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS) {
      ASSERT_LT(index, order_.size());
      ASSERT_EQ(Text(given), order_[index]);
    } else {
      ASSERT_GE(index, order_.size());
    }
  }

  std::mt19937 random_;
  std::set<Text> keys_;
  std::map<Text, LONGLONG> values_;
  std::vector<Text> order_;  // of the values
};

TEST_F(RegistryRandom, AnswersAsTheModelWhoeverMadeTheLastChange) {
  const auto seed = std::random_device()();
  std::printf("seed %u\n", seed);
  random_.seed(seed);
  DWORD index = 0;
  for (int step = 0; step < 4000 && !HasFatalFailure(); ++step) {
    SCOPED_TRACE(testing::Message() << "seed " << seed << ", step " << step);
    const unsigned kind = random_() % 16;
    if (kind == 0) ChangeOutside(step);
    if (kind == 1) Change(step);
    index = random_() % 8 == 0 ? random_() % kNames : index + random_() % 2;  // walks, with a jump now and then
    Ask(index % (kNames + 1));
  }
}

}  // namespace
