// Points, vectors and directions: FRPosition, FRVector and FRUnitVector, three doubles each.
//
// They are plain values in one right-handed frame: copying costs three doubles, nothing is allocated, nothing fails,
// and any thread may use its own. Default-built values are (0, 0, 0). Comparisons are within a tolerance of
// constants.h, so equality is not transitive. Points and directions stand on the left of a transform: p * T.
//
// Infinities and NaN go through sums and products by the rules of doubles and are equal to nothing. A vector with one
// of them has no direction.
#pragma once

#include <cmath>

#include "companions/geometry/constants.h"

class FRMatrix;
class FRTransf;
class FRUnitVector;

// A free vector: a difference of positions, a size, an axis of any length.
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
  // Brings the vector to length 1; one shorter than RESNOR, or not finite, has no direction and becomes (0, 0, 0).
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
  // The row times the matrix.
  KVSHARE_API friend FRVector operator*(const FRVector& row, const FRMatrix& matrix);
  // Equal if the tips are no further apart than RESABS.
  friend bool operator==(const FRVector& a, const FRVector& b) {
    return FRVector(a.x() - b.x(), a.y() - b.y(), a.z() - b.z()).len() <= RESABS;
  }

 private:
  double c_[3] = {0, 0, 0};
};

// A direction: a vector of length 1, or (0, 0, 0) where there is none, which callers test for.
class KVSHARE_API FRUnitVector : public FRVector {
 public:
  constexpr FRUnitVector() = default;
  // The direction of (x, y, z), which may have any length; (0, 0, 0) if that is below RESNOR.
  FRUnitVector(double x, double y, double z) : FRVector(x, y, z) { normalize(); }
  // Takes components that are known to have length 1 bit for bit.
  static constexpr FRUnitVector AsGiven(double x, double y, double z) { return FRUnitVector(FRVector(x, y, z)); }

  constexpr FRUnitVector operator-() const { return FRUnitVector(FRVector::operator-()); }
  // Equal within RESNOR, which is tighter than for vectors of any length.
  friend bool operator==(const FRUnitVector& a, const FRUnitVector& b) {
    return FRVector(a.x() - b.x(), a.y() - b.y(), a.z() - b.z()).len() <= RESNOR;
  }
  // The direction after the transform: only its affine part counts, and the result has length 1 again.
  KVSHARE_API friend FRUnitVector operator*(const FRUnitVector& direction, const FRTransf& transform);
  FRUnitVector& operator*=(const FRTransf& transform);

 private:
  explicit constexpr FRUnitVector(const FRVector& unit) : FRVector(unit) {}
};

// The axes of the frame; constants before any initialiser of a static object runs.
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
  // The foot of the perpendicular on the plane through the point; a normal of (0, 0, 0) gives this position itself.
  FRPosition project_on_plane(const FRPosition& point_on_plane, const FRUnitVector& normal) const;

  friend constexpr FRVector operator-(const FRPosition& a, const FRPosition& b) {
    return {a.x() - b.x(), a.y() - b.y(), a.z() - b.z()};
  }
  friend constexpr FRPosition operator+(const FRPosition& a, const FRVector& b) {
    return {a.x() + b.x(), a.y() + b.y(), a.z() + b.z()};
  }
  // Each coordinate divided; dividing by 0 follows the rules of doubles.
  friend constexpr FRPosition operator/(const FRPosition& a, double divisor) {
    return {a.x() / divisor, a.y() / divisor, a.z() / divisor};
  }
  KVSHARE_API friend FRPosition operator*(const FRPosition& point, const FRTransf& transform);
  FRPosition& operator*=(const FRTransf& transform);
  // Equal if no further apart than RESABS.
  friend bool operator==(const FRPosition& a, const FRPosition& b) { return a.distance(b) <= RESABS; }

 private:
  double c_[3] = {0, 0, 0};
};

// The direction of the vector; (0, 0, 0) if it is shorter than RESNOR.
KVSHARE_API FRUnitVector normalise(const FRVector& vector);
// 1 if the vectors point the same way, -1 if they are opposite, 0 if they are not parallel, that is if the sine of the
// angle between them is above RESNOR. A vector shorter than RESNOR is parallel to nothing.
KVSHARE_API int parallel(const FRVector& a, const FRVector& b);
