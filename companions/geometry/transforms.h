// Matrices and transforms: FRMatrix, FRTransf, and functions that make a rotation, translation or scaling.
//
// Points are row vectors: p * (A * B) equals (p * A) * B, so the left factor acts first. Both classes are plain values
// and allocate nothing. Row and column numbers are 0, 1 or 2 and are not checked. Angles are in radians, right-handed
// about the axis.
#pragma once

#include "companions/geometry/vectors.h"

// A 3x3 matrix. The default is the identity.
class KVSHARE_API FRMatrix {
 public:
  constexpr FRMatrix() = default;
  // The three vectors are the rows: the images of the X, Y and Z axes.
  constexpr FRMatrix(const FRVector& row0, const FRVector& row1, const FRVector& row2)
      : e_{{row0.x(), row0.y(), row0.z()}, {row1.x(), row1.y(), row1.z()}, {row2.x(), row2.y(), row2.z()}} {}

  constexpr double element(int row, int column) const { return e_[row][column]; }
  constexpr void set_element(int row, int column, double value) { e_[row][column] = value; }
  FRMatrix transpose() const;

 private:
  double e_[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
};

KVSHARE_API FRMatrix operator*(const FRMatrix& a, const FRMatrix& b);

// An affine map: p * T is (p * affine) * scaling + translation. The scaling factor is separate, so the affine part of a
// rigid motion remains a rotation after any scaling. The flags describe the affine part (0 or 1: it rotates, reflects,
// shears). They are stored and combined by products, but no result depends on them.
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

  // The same as get_scaling_part; kept for existing modules.
  constexpr double GetScalingMatrix() const { return scale_; }

  // The inverse map. The result is the identity if there is no inverse (the affine part is singular, or the scale is 0)
  // or if a number of the transform or of its inverse is not finite.
  FRTransf inverse() const;
  FRTransf& operator*=(const FRTransf& next);
  KVSHARE_API friend FRTransf operator*(const FRTransf& first, const FRTransf& next);
  // Equal if affine part and scaling agree within RESNOR and the translation within RESABS. Flags are ignored.
  KVSHARE_API friend bool operator==(const FRTransf& a, const FRTransf& b);

 private:
  FRMatrix affine_;
  FRVector translation_;
  double scale_ = 1;
  int rotate_ = 0;
  int reflect_ = 0;
  int shear_ = 0;
};

// Moves the position to the origin and turns the normal to the Z axis by the smallest angle. A normal opposite to the Z
// axis is turned by 180 degrees about the Y axis. With a normal of (0, 0, 0) the result is only the translation.
//
// With n = (a, b, c) and the axis n x Z, Rodrigues' formula becomes, since cos = c and sin^2 = a^2 + b^2, the rows
// (1 - a a f, -a b f, a), (-a b f, 1 - b b f, b), (-a, -b, c) with f = 1 / (1 + c).
KVSHARE_API FRTransf get_transform_to_xy_plane(const FRUnitVector& normal, const FRPosition& position);
// The rotation about an axis through the origin. The axis may have any length; one shorter than RESNOR or not finite
// gives the identity. An infinite or NaN angle gives a matrix of NaN.
//
// Rodrigues' formula: v cos + (u x v) sin + u (u . v) (1 - cos) for the unit axis u.
KVSHARE_API FRTransf GetRotateTransf(double angle_radians, const FRVector& axis);
KVSHARE_API FRTransf GetTranslateTransf(const FRVector& vector);
// The uniform scaling about the origin.
KVSHARE_API FRTransf GetScaleTransf(double scale);
// The diagonal matrix with the factor in each place of the diagonal.
KVSHARE_API FRMatrix GetScalingMatrix(double scale);
