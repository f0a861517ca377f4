// Memory straight from the system.
#include "platform/memory.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/platform/status.h"

namespace {

constexpr DWORD kBoth = MEM_RESERVE | MEM_COMMIT;

TEST(Memory, RegionsAreZeroedAlignedAndGoBackWhole) {
  for (const SIZE_T bytes : {SIZE_T(1), SIZE_T(100'000), SIZE_T(5) << 20}) {
    auto* region = static_cast<BYTE*>(VirtualAlloc(nullptr, bytes, kBoth, PAGE_READWRITE));
    ASSERT_NE(region, nullptr) << bytes;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(region) % (64 * 1024), 0u) << bytes;
    EXPECT_TRUE(std::all_of(region, region + bytes, [](BYTE byte) { return byte == 0; })) << bytes;
    std::fill_n(region, bytes, BYTE(0xAB));
    EXPECT_EQ(StatusOf(VirtualFree(region, bytes, MEM_RELEASE)), ERROR_INVALID_PARAMETER) << "a part can't be released";
    EXPECT_TRUE(VirtualFree(region, 0, MEM_RELEASE)) << bytes;
    EXPECT_FALSE(VirtualFree(region, 0, MEM_RELEASE)) << "it has gone";
  }
  EXPECT_EQ(StatusOf(VirtualAlloc(nullptr, ~SIZE_T(0), kBoth, PAGE_READWRITE) != nullptr), ERROR_INVALID_PARAMETER)
      << "more than the address space";
}

TEST(Memory, ARegionThatWasResetCanBeWrittenAgain) {
  constexpr SIZE_T kBytes = SIZE_T(4) << 20;
  auto* region = static_cast<BYTE*>(VirtualAlloc(nullptr, kBytes, kBoth, PAGE_READWRITE));
  ASSERT_NE(region, nullptr);
  std::fill_n(region, kBytes, BYTE(0xAB));
  EXPECT_EQ(VirtualAlloc(region, kBytes, MEM_RESET, PAGE_READWRITE), region);
  std::fill_n(region, kBytes, BYTE(0xCD));
  EXPECT_TRUE(std::all_of(region, region + kBytes, [](BYTE byte) { return byte == 0xCD; }));
  EXPECT_EQ(VirtualAlloc(region + kBytes / 2, kBytes / 2, MEM_RESET, PAGE_READWRITE), region + kBytes / 2) << "a part";
  EXPECT_TRUE(std::all_of(region, region + kBytes / 2, [](BYTE byte) { return byte == 0xCD; }));
  EXPECT_EQ(VirtualAlloc(region, kBytes * 2, MEM_RESET, PAGE_READWRITE), nullptr) << "beyond the region";
  EXPECT_TRUE(VirtualFree(region, 0, MEM_RELEASE));
}

}  // namespace
