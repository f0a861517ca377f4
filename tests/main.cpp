// Runs one folder's tests in shuffled order with a printed seed, with a private registry and
// folder of state.
#include <gtest/gtest.h>

#include "tests/scratch.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  testing::GTEST_FLAG(shuffle) = true;
  kvtest::ScratchFolder registry, state;
  kvtest::UseRegistry(registry.Path());
  kvtest::UseState(state.Path());
  return RUN_ALL_TESTS();
}
