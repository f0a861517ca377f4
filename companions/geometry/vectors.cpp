// The global numbers, and the longer functions of points, vectors and directions.
#include "companions/geometry/vectors.h"

#include <algorithm>

constinit double PI = 3.14159265358979323846;
constinit double PI_2 = 1.57079632679489661923;
constinit double RADIAN_TO_DEGREE = 57.29577951308232087680;
constinit double RESABS = 1e-6;
constinit double RESNOR = 1e-10;

constinit const FRUnitVector FRXAxis = FRUnitVector::AsGiven(1, 0, 0);
constinit const FRUnitVector FRYAxis = FRUnitVector::AsGiven(0, 1, 0);
constinit const FRUnitVector FRZAxis = FRUnitVector::AsGiven(0, 0, 1);

FRVector& FRVector::normalize() {
  double length = len();
  // The square of a component above 1e154 overflows; dividing by the largest component first avoids that.
  if (std::isinf(length)) {
    const double largest = std::max({std::abs(c_[0]), std::abs(c_[1]), std::abs(c_[2])});
    *this = {c_[0] / largest, c_[1] / largest, c_[2] / largest};
    length = len();
  }
  // A NaN length fails both comparisons. The first one also guards a zero length if RESNOR was set to 0.
  const bool has_direction = length > 0 && length >= RESNOR;
  return *this = has_direction ? FRVector(c_[0] / length, c_[1] / length, c_[2] / length) : FRVector();
}

FRPosition FRPosition::project_on_plane(const FRPosition& point_on_plane, const FRUnitVector& normal) const {
  const double height = (*this - point_on_plane) % normal;
  return {x() - height * normal.x(), y() - height * normal.y(), z() - height * normal.z()};
}

FRUnitVector normalise(const FRVector& vector) { return {vector.x(), vector.y(), vector.z()}; }

int parallel(const FRVector& a, const FRVector& b) {
  const FRUnitVector u = normalise(a);
  const FRUnitVector v = normalise(b);
  const double cosine = u % v;
  // The cosine is tested too, because the sine is also 0 for a vector without direction.
  if (cosine == 0 || (u * v).len() > RESNOR) return 0;
  return cosine > 0 ? 1 : -1;
}
