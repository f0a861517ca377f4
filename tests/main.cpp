// Runs one folder's tests in shuffled order with a printed seed, with a private registry.
#include <gtest/gtest.h>

#include "tests/scratch.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  testing::GTEST_FLAG(shuffle) = true;
  kvtest::ScratchFolder registry;
  kvtest::UseRegistry(registry.Path());
  return RUN_ALL_TESTS();
}
