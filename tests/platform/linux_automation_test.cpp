// Automation arrays that only other systems make.
#include <gtest/gtest.h>

#include <climits>

#include "platform/automation.h"

namespace {

TEST(LinuxAutomation, ArraysOfValuesAndOfTwoDimensionsAreRefused) {
  SAFEARRAYBOUND bound = {2, 0};
  EXPECT_EQ(SafeArrayCreate(/*type=*/12, 1, &bound), nullptr);
  EXPECT_EQ(SafeArrayCreate(VT_R8, 2, &bound), nullptr);
  bound = {2, INT_MAX};
  EXPECT_EQ(SafeArrayCreate(VT_R8, 1, &bound), nullptr) << "an index beyond LONG";
}

}  // namespace
