// Points, vectors and directions: FRPosition, FRVector and FRUnitVector, three doubles each.
//
// They are plain values in one right-handed frame: nothing is allocated, no operation fails, and there is no shared
// state. The default is (0, 0, 0). Comparisons use a tolerance of constants.h, so equality is not transitive. Points
// and directions are the left operand of a transform: p * T.
//
// Infinity and NaN follow the rules of doubles in sums and products. A value that contains one equals nothing, and a
// vector that contains one has no direction.
#pragma once

#include <cmath>

#include "companions/geometry/constants.h"

class FRMatrix;
class FRTransf;
class FRUnitVector;

// A free vector: for example a difference of positions, or an axis of any length.
class KVSHARE_API FRVector {
 public:
  constexpr FRVector() = default;
  constexpr FRVector(double x, double y, double z) : c_{x, y, z} {}

  constexpr double x() const { return c_[0]; }
  constexpr double y() const { return c_[1]; }
  constexpr double z() const { return c_[2]; }
  constexpr void set_x(double x) { c_[0] = x; }
  constexpr void set_y(double y) { c_[1] = y; }
  constexpr void set_z(double z) { c_[2] = z; }
  // The index is 0, 1 or 2.
  constexpr double operator[](int index) const { return c_[index]; }
  constexpr double& operator[](int index) { return c_[index]; }
  constexpr void get_coords(double& x, double& y, double& z) const { x = c_[0], y = c_[1], z = c_[2]; }

  double len() const { return std::sqrt(c_[0] * c_[0] + c_[1] * c_[1] + c_[2] * c_[2]); }
  // Scales the vector to length 1. A vector shorter than RESNOR, or not finite, has no direction: it becomes (0, 0, 0).
  FRVector& normalize();

  constexpr FRVector operator-() const { return {-c_[0], -c_[1], -c_[2]}; }
  // The cross product.
  friend constexpr FRVector operator*(const FRVector& a, const FRVector& b) {
    return {a.y() * b.z() - a.z() * b.y(), a.z() * b.x() - a.x() * b.z(), a.x() * b.y() - a.y() * b.x()};
  }
  // The dot product.
  friend constexpr double operator%(const FRVector& a, const FRVector& b) {
    return a.x() * b.x() + a.y() * b.y() + a.z() * b.z();
  }
  // The row vector times the matrix.
  KVSHARE_API friend FRVector operator*(const FRVector& row, const FRMatrix& matrix);
  // Equal if the tips are no further apart than RESABS.
  friend bool operator==(const FRVector& a, const FRVector& b) {
    return FRVector(a.x() - b.x(), a.y() - b.y(), a.z() - b.z()).len() <= RESABS;
  }

 private:
  double c_[3] = {0, 0, 0};
};

// A direction: a vector of length 1, or (0, 0, 0) for "no direction". Test for (0, 0, 0) where the input may have no
// direction.
class KVSHARE_API FRUnitVector : public FRVector {
 public:
  constexpr FRUnitVector() = default;
  // The direction of (x, y, z), which may have any length; (0, 0, 0) as FRVector::normalize says.
  FRUnitVector(double x, double y, double z) : FRVector(x, y, z) { normalize(); }
  // Stores the components unchanged. Their length must be 1.
  static constexpr FRUnitVector AsGiven(double x, double y, double z) { return FRUnitVector(FRVector(x, y, z)); }

  constexpr FRUnitVector operator-() const { return FRUnitVector(FRVector::operator-()); }
  // Equal if the tips are no further apart than RESNOR. FRVector uses the larger RESABS.
  friend bool operator==(const FRUnitVector& a, const FRUnitVector& b) {
    return FRVector(a.x() - b.x(), a.y() - b.y(), a.z() - b.z()).len() <= RESNOR;
  }
  // The direction after the transform. Only the affine part of the transform is applied; the result is normalised.
  KVSHARE_API friend FRUnitVector operator*(const FRUnitVector& direction, const FRTransf& transform);
  FRUnitVector& operator*=(const FRTransf& transform);

 private:
  explicit constexpr FRUnitVector(const FRVector& unit) : FRVector(unit) {}
};

// The axes of the frame. They are set before any static object is initialised.
extern KVSHARE_API const FRUnitVector FRXAxis;
extern KVSHARE_API const FRUnitVector FRYAxis;
extern KVSHARE_API const FRUnitVector FRZAxis;

// A point.
class KVSHARE_API FRPosition {
 public:
  constexpr FRPosition() = default;
  constexpr FRPosition(double x, double y, double z) : c_{x, y, z} {}

  constexpr double x() const { return c_[0]; }
  constexpr double y() const { return c_[1]; }
  constexpr double z() const { return c_[2]; }
  constexpr double& x() { return c_[0]; }
  constexpr double& y() { return c_[1]; }
  constexpr double& z() { return c_[2]; }
  constexpr void set_x(double x) { c_[0] = x; }
  constexpr void set_y(double y) { c_[1] = y; }
  constexpr void set_z(double z) { c_[2] = z; }
  constexpr void get_coords(double& x, double& y, double& z) const { x = c_[0], y = c_[1], z = c_[2]; }

  double distance(const FRPosition& other) const { return (*this - other).len(); }
  // The foot of the perpendicular from this position to the plane through point_on_plane. A normal of (0, 0, 0) gives
  // this position.
  FRPosition project_on_plane(const FRPosition& point_on_plane, const FRUnitVector& normal) const;

  friend constexpr FRVector operator-(const FRPosition& a, const FRPosition& b) {
    return {a.x() - b.x(), a.y() - b.y(), a.z() - b.z()};
  }
  friend constexpr FRPosition operator+(const FRPosition& a, const FRVector& b) {
    return {a.x() + b.x(), a.y() + b.y(), a.z() + b.z()};
  }
  // Divides each coordinate. Division by 0 follows the rules of doubles.
  friend constexpr FRPosition operator/(const FRPosition& a, double divisor) {
    return {a.x() / divisor, a.y() / divisor, a.z() / divisor};
  }
  KVSHARE_API friend FRPosition operator*(const FRPosition& point, const FRTransf& transform);
  FRPosition& operator*=(const FRTransf& transform);
  // Equal if the distance is not above RESABS.
  friend bool operator==(const FRPosition& a, const FRPosition& b) { return a.distance(b) <= RESABS; }

 private:
  double c_[3] = {0, 0, 0};
};

// The direction of the vector; (0, 0, 0) as FRVector::normalize says.
KVSHARE_API FRUnitVector normalise(const FRVector& vector);
// 1 if the vectors have the same direction, -1 if the opposite one, else 0. They are parallel if the sine of their
// angle is not above RESNOR. A vector without direction is not parallel to any vector.
KVSHARE_API int parallel(const FRVector& a, const FRVector& b);
