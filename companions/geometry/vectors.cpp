// The global numbers, and what of points, vectors and directions is too long for the header.
#include "companions/geometry/vectors.h"

constinit double PI = 3.14159265358979323846;
constinit double PI_2 = 1.57079632679489661923;
constinit double RADIAN_TO_DEGREE = 57.29577951308232087680;
constinit double RESABS = 1e-6;
constinit double RESNOR = 1e-10;

constinit const FRUnitVector FRXAxis = FRUnitVector::AsGiven(1, 0, 0);
constinit const FRUnitVector FRYAxis = FRUnitVector::AsGiven(0, 1, 0);
constinit const FRUnitVector FRZAxis = FRUnitVector::AsGiven(0, 0, 1);

FRVector& FRVector::normalize() {
  const double length = len();
  *this = length < RESNOR ? FRVector() : FRVector(c_[0] / length, c_[1] / length, c_[2] / length);
  return *this;
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
  // The sine alone would be 0 for a vector without direction as well.
  if (cosine == 0 || (u * v).len() > RESNOR) return 0;
  return cosine > 0 ? 1 : -1;
}
