#include "framework/text.h"

#include <gtest/gtest.h>

TEST(Text, IsEmptyWithoutAnAllocation) { EXPECT_TRUE(CString().IsEmpty()); }
