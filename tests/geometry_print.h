// Helpers for geometry tests: printing of values, and rotation computed by hand.
#pragma once

#include <gtest/gtest.h>

#include <cmath>

#include "companions/geometry/transforms.h"

inline void PrintTo(const FRVector& v, std::ostream* out) {
  *out << '(' << v.x() << ", " << v.y() << ", " << v.z() << ')';
}
inline void PrintTo(const FRPosition& p, std::ostream* out) { PrintTo(p - FRPosition(), out); }

namespace kvtest {

inline void ExpectNear(const FRPosition& got, const FRPosition& wanted, double tolerance) {
  EXPECT_LE(got.distance(wanted), tolerance)
      << testing::PrintToString(got) << " is not " << testing::PrintToString(wanted);
}
inline void ExpectNear(const FRVector& got, const FRVector& wanted, double tolerance) {
  ExpectNear(FRPosition() + got, FRPosition() + wanted, tolerance);
}

// Rotates a point about a unit axis through the origin, right-handed: the part along the axis stays, the part across it
// turns in its plane.
inline FRPosition TurnByHand(const FRPosition& p, const FRVector& u, double angle) {
  const double along = p.x() * u.x() + p.y() * u.y() + p.z() * u.z();
  const double across[] = {p.x() - along * u.x(), p.y() - along * u.y(), p.z() - along * u.z()};
  const double ahead[] = {u.y() * p.z() - u.z() * p.y(), u.z() * p.x() - u.x() * p.z(), u.x() * p.y() - u.y() * p.x()};
  const double c = std::cos(angle), s = std::sin(angle);
  return {along * u.x() + across[0] * c + ahead[0] * s, along * u.y() + across[1] * c + ahead[1] * s,
          along * u.z() + across[2] * c + ahead[2] * s};
}

}  // namespace kvtest
