// The table of a storing archive compared with a plain map, for adjacent and scattered addresses.
#include "framework/internal/stored_numbers.h"
#include "tests/scratch.h"

#include <gtest/gtest.h>

#include <random>
#include <unordered_map>
#include <vector>

namespace {

const void* Key(std::uintptr_t address) { return reinterpret_cast<const void*>(address); }

TEST(StoredNumbers, AgreesWithAMap) {
  std::mt19937_64 random(kvtest::PrintedSeed());
  const auto address = [&random] {
    const std::uintptr_t group = random() % 3 == 0 ? random() % (std::uintptr_t(1) << 44) : 1000 + random() % 20;
    return group << 12 | (random() % 512) << 3;
  };
  StoredNumbers numbers;
  std::unordered_map<std::uintptr_t, DWORD> expected;
  for (int i = 0; i < 20000; ++i) {
    const std::uintptr_t at = address();
    const auto known = expected.find(at);
    ASSERT_EQ(numbers.NumberOf(Key(at)), known == expected.end() ? 0 : known->second);
    if (known != expected.end()) continue;
    const auto next = DWORD(expected.size() + 1);
    ASSERT_EQ(numbers.Enter(Key(at)), next);
    expected[at] = next;
    if (random() % 2000 != 0) continue;
    const auto kept = DWORD(random() % (next + 1));
    numbers.RollBack(kept);
    std::erase_if(expected, [kept](const auto& item) { return item.second > kept; });
  }
  EXPECT_EQ(numbers.GetCount(), expected.size());
  for (const auto& [at, number] : expected) EXPECT_EQ(numbers.NumberOf(Key(at)), number);
}

}  // namespace
