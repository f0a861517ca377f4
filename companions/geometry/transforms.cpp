// Matrices and transforms with Eigen. Eigen rotates column vectors, so its rotations are transposed here.
#include "companions/geometry/transforms.h"

#include <Eigen/Dense>

namespace {

using Matrix = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
using Row = Eigen::RowVector3d;

Matrix ToEigen(const FRMatrix& matrix) {
  Matrix result;
  for (int row = 0; row < 3; ++row)
    for (int column = 0; column < 3; ++column) result(row, column) = matrix.element(row, column);
  return result;
}

FRMatrix FromEigen(const Matrix& matrix) {
  FRMatrix result;
  for (int row = 0; row < 3; ++row)
    for (int column = 0; column < 3; ++column) result.set_element(row, column, matrix(row, column));
  return result;
}

Row ToEigen(const FRVector& vector) { return {vector.x(), vector.y(), vector.z()}; }

FRVector VectorFrom(const Row& row) { return {row.x(), row.y(), row.z()}; }

FRVector Times(const FRVector& vector, double factor) {
  return {vector.x() * factor, vector.y() * factor, vector.z() * factor};
}

}  // namespace

FRVector operator*(const FRVector& row, const FRMatrix& matrix) { return VectorFrom(ToEigen(row) * ToEigen(matrix)); }

FRMatrix FRMatrix::transpose() const { return FromEigen(ToEigen(*this).transpose()); }

FRMatrix operator*(const FRMatrix& a, const FRMatrix& b) { return FromEigen(ToEigen(a) * ToEigen(b)); }

FRPosition operator*(const FRPosition& point, const FRTransf& transform) {
  const FRVector turned = FRVector(point.x(), point.y(), point.z()) * transform.affine();
  const double scale = transform.get_scaling_part();
  const FRVector& move = transform.translation();
  return {turned.x() * scale + move.x(), turned.y() * scale + move.y(), turned.z() * scale + move.z()};
}

FRPosition& FRPosition::operator*=(const FRTransf& transform) { return *this = *this * transform; }

FRUnitVector operator*(const FRUnitVector& direction, const FRTransf& transform) {
  return normalise(direction * transform.affine());
}

FRUnitVector& FRUnitVector::operator*=(const FRTransf& transform) { return *this = *this * transform; }

FRTransf operator*(const FRTransf& first, const FRTransf& next) {
  const FRPosition moved = FRPosition() + first.translation_;
  return {first.affine_ * next.affine_,
          moved * next - FRPosition(),
          first.scale_ * next.scale_,
          first.rotate_ || next.rotate_,
          (first.reflect_ != 0) != (next.reflect_ != 0),
          first.shear_ || next.shear_};
}

FRTransf& FRTransf::operator*=(const FRTransf& next) { return *this = *this * next; }

FRTransf FRTransf::inverse() const {
  const Matrix matrix = ToEigen(affine_);
  Matrix back = matrix.transpose();
  // The transpose of a rotation is its exact inverse; any other matrix is inverted numerically.
  if (!(matrix * back).isIdentity(RESNOR)) {
    bool invertible = false;
    matrix.computeInverseWithCheck(back, invertible, /*absDeterminantThreshold=*/0);
    if (!invertible) return FRTransf();
  }
  const FRVector move = Times(translation_ * FromEigen(back), -1 / scale_);
  const bool finite = back.allFinite() && std::isfinite(1 / scale_) && ToEigen(move).allFinite();
  if (!finite) return FRTransf();
  return {FromEigen(back), move, 1 / scale_, rotate_, reflect_, shear_};
}

bool operator==(const FRTransf& a, const FRTransf& b) {
  return (ToEigen(a.affine_) - ToEigen(b.affine_)).cwiseAbs().maxCoeff() <= RESNOR &&
         std::abs(a.scale_ - b.scale_) <= RESNOR && a.translation_ == b.translation_;
}

FRTransf get_transform_to_xy_plane(const FRUnitVector& normal, const FRPosition& position) {
  const double a = normal.x();
  const double b = normal.y();
  const double c = normal.z();
  const double off_axis = a * a + b * b;
  FRMatrix turn;
  if (off_axis > RESNOR * RESNOR) {
    // 1 / (1 + c), in a form that keeps its precision if the normal is nearly opposite to the Z axis.
    const double f = c > 0 ? 1 / (1 + c) : (1 - c) / off_axis;
    turn = FRMatrix({1 - a * a * f, -a * b * f, a}, {-a * b * f, 1 - b * b * f, b}, {-a, -b, c});
  } else if (c < 0) {
    turn = FRMatrix({-1, 0, 0}, {0, 1, 0}, {0, 0, -1});
  }
  const int turns = off_axis > RESNOR * RESNOR || c < 0;
  return GetTranslateTransf(FRPosition() - position) * FRTransf(turn, FRVector(), 1, turns, 0, 0);
}

FRTransf GetRotateTransf(double angle_radians, const FRVector& axis) {
  const FRUnitVector unit = normalise(axis);
  if (unit.len() == 0) return FRTransf();
  const Matrix turn = Eigen::AngleAxisd(angle_radians, ToEigen(unit).transpose()).toRotationMatrix().transpose();
  return {FromEigen(turn), FRVector(), 1, angle_radians != 0, 0, 0};
}

FRTransf GetTranslateTransf(const FRVector& vector) { return {FRMatrix(), vector, 1, 0, 0, 0}; }

FRTransf GetScaleTransf(double scale) { return {FRMatrix(), FRVector(), scale, 0, 0, 0}; }

FRMatrix GetScalingMatrix(double scale) { return {{scale, 0, 0}, {0, scale, 0}, {0, 0, scale}}; }
