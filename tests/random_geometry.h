// Random numbers and directions for tests of geometry, from a printed seed.
#pragma once

#include <gtest/gtest.h>

#include <random>

#include "companions/geometry/vectors.h"
#include "tests/scratch.h"

namespace kvtest {

class RandomGeometry : public testing::Test {
 protected:
  double Number(double low, double high) { return std::uniform_real_distribution<double>(low, high)(random_); }
  FRUnitVector Direction() {
    FRVector v;
    do v = {Number(-1, 1), Number(-1, 1), Number(-1, 1)};
    while (v.len() < 0.1 || v.len() > 1);
    return normalise(v);
  }

  std::mt19937 random_{PrintedSeed()};
};

}  // namespace kvtest
