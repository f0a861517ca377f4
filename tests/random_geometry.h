// Random numbers and directions for tests of geometry, from a seed that is shown when a test fails.
#pragma once

#include <gtest/gtest.h>

#include <random>

#include "companions/geometry/vectors.h"

namespace kvtest {

class RandomGeometry : public testing::Test {
 protected:
  RandomGeometry() : seed_(std::random_device()()), trace_(__FILE__, __LINE__, seed_), random_(seed_) {}

  double Number(double low, double high) { return std::uniform_real_distribution<double>(low, high)(random_); }
  FRUnitVector Direction() {
    FRVector v;
    do v = {Number(-1, 1), Number(-1, 1), Number(-1, 1)};
    while (v.len() < 0.1 || v.len() > 1);
    return normalise(v);
  }

  const unsigned seed_;
  const testing::ScopedTrace trace_;
  std::mt19937 random_;
};

}  // namespace kvtest
