// Compound files as other programs write them, cut files, and streams that are changed at random.
#include "tests/platform/storage_bytes.h"

namespace kvtest {
namespace {

TEST_F(CompoundBytes, AreReadInBothVersions) {
  EXPECT_EQ(WhatOf(WholeFile()), "opens, whole, whole");
  EXPECT_EQ(WhatOf(WholeFileOfVersion4()), "opens, whole, whole");
}

TEST_F(CompoundBytes, NoTruncatedPrefixIsWhole) {
  const std::string whole = WholeFile();
  for (std::size_t bytes = 0; bytes < kFat; bytes += 100)  // without its allocation table
    EXPECT_NE(WhatOf(whole.substr(0, bytes)), "opens, whole, whole") << bytes;
}

TEST_F(CompoundBytes, RandomChangesOfAStreamMatchATextsOwn) { ChangeAtRandom(/*with_gaps=*/false); }

}  // namespace
}  // namespace kvtest
