// Matrices and transforms: FRMatrix, FRTransf, and the functions that make transforms of one kind.
//
// Points are row vectors, so p * (A * B) equals (p * A) * B: the left factor acts first. Both classes are plain values
// without allocations. Row and column numbers are 0, 1 or 2; angles are in radians, right-handed about the axis.
#pragma once

#include "companions/geometry/vectors.h"

// A 3x3 matrix; default-built it is the identity.
class KVSHARE_API FRMatrix {
 public:
  constexpr FRMatrix() = default;
  // The three vectors are the rows, that is the images of the axes.
  constexpr FRMatrix(const FRVector& row0, const FRVector& row1, const FRVector& row2)
      : e_{{row0.x(), row0.y(), row0.z()}, {row1.x(), row1.y(), row1.z()}, {row2.x(), row2.y(), row2.z()}} {}

  constexpr double element(int row, int column) const { return e_[row][column]; }
  constexpr void set_element(int row, int column, double value) { e_[row][column] = value; }
  FRMatrix transpose() const;

 private:
  double e_[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
};

KVSHARE_API FRMatrix operator*(const FRMatrix& a, const FRMatrix& b);

// An affine map: p * T is (p * affine) * scaling + translation. The scaling factor stands apart, so that the affine
// part of a rigid motion stays a rotation however often it is scaled. The flags tell a reader what the affine part is
// made of; they are stored and combined by products but never believed: no result depends on them.
class KVSHARE_API FRTransf {
 public:
  // The identity, with no flag set.
  constexpr FRTransf() = default;
  constexpr FRTransf(const FRMatrix& affine, const FRVector& translation, double scale, int rotate_flag,
                     int reflect_flag, int shear_flag)
      : affine_(affine),
        translation_(translation),
        scale_(scale),
        rotate_(rotate_flag),
        reflect_(reflect_flag),
        shear_(shear_flag) {}

  constexpr const FRMatrix& affine() const { return affine_; }
  constexpr const FRVector& translation() const { return translation_; }
  constexpr FRMatrix get_affine_part() const { return affine_; }
  constexpr FRVector get_translation_part() const { return translation_; }
  constexpr double get_scaling_part() const { return scale_; }
  constexpr int get_rotate_flag() const { return rotate_; }
  constexpr int get_reflect_flag() const { return reflect_; }
  constexpr int get_shear_flag() const { return shear_; }
  constexpr void set_affine_part(const FRMatrix& affine) { affine_ = affine; }
  constexpr void set_translation_part(const FRVector& translation) { translation_ = translation; }
  constexpr void set_scaling_part(double scale) { scale_ = scale; }
  constexpr void set_rotate_flag(int flag) { rotate_ = flag; }
  constexpr void set_reflect_flag(int flag) { reflect_ = flag; }
  constexpr void set_shear_flag(int flag) { shear_ = flag; }

  // The scaling factor; the name is the older one.
  constexpr double GetScalingMatrix() const { return scale_; }

  // The map back. A transform that flattens space has none, nor has one whose numbers or whose inverse's numbers are
  // not finite: the result is the identity.
  FRTransf inverse() const;
  FRTransf& operator*=(const FRTransf& next);
  KVSHARE_API friend FRTransf operator*(const FRTransf& first, const FRTransf& next);
  // Equal if they move points alike: affine part and scaling within RESNOR, translation within RESABS. The flags don't
  // count.
  KVSHARE_API friend bool operator==(const FRTransf& a, const FRTransf& b);

 private:
  FRMatrix affine_;
  FRVector translation_;
  double scale_ = 1;
  int rotate_ = 0;
  int reflect_ = 0;
  int shear_ = 0;
};

// Moves the position to the origin and turns the normal to the Z axis by the smallest angle; the opposite of the Z
// axis is turned by a half turn about the Y axis. A normal of (0, 0, 0) gives the move alone.
//
// With n = (a, b, c) and the axis n x Z, Rodrigues' formula becomes, since cos = c and sin^2 = a^2 + b^2, the rows
// (1 - a a f, -a b f, a), (-a b f, 1 - b b f, b), (-a, -b, c) with f = 1 / (1 + c).
KVSHARE_API FRTransf get_transform_to_xy_plane(const FRUnitVector& normal, const FRPosition& position);
// The rotation about an axis through the origin, of any length; the identity for an axis without direction. An angle
// that is not finite gives NaN throughout.
//
// Rodrigues' formula: v cos + (u x v) sin + u (u . v) (1 - cos) for the unit axis u.
KVSHARE_API FRTransf GetRotateTransf(double angle_radians, const FRVector& axis);
KVSHARE_API FRTransf GetTranslateTransf(const FRVector& vector);
// The scaling about the origin; GetScaleTransf(1.0) is the identity.
KVSHARE_API FRTransf GetScaleTransf(double scale);
// The matrix with the factor on its diagonal.
KVSHARE_API FRMatrix GetScalingMatrix(double scale);
