// Geometry values to and from an archive. The header describes the layouts.
#include "share/objects/geometry_archive.h"

#include <cmath>

CArchive& operator<<(CArchive& ar, const FRPosition& position) {
  return ar << position.x() << position.y() << position.z();
}

CArchive& operator>>(CArchive& ar, FRPosition& position) { return ar >> position.x() >> position.y() >> position.z(); }

CArchive& operator<<(CArchive& ar, const FRVector& vector) { return ar << vector.x() << vector.y() << vector.z(); }

CArchive& operator>>(CArchive& ar, FRVector& vector) { return ar >> vector[0] >> vector[1] >> vector[2]; }

CArchive& operator>>(CArchive& ar, FRUnitVector& direction) {
  FRVector read;
  ar >> read;
  const bool is_unit = std::abs(read.len() - 1) <= RESNOR;
  direction = is_unit ? FRUnitVector::AsGiven(read.x(), read.y(), read.z()) : normalise(read);
  return ar;
}

CArchive& operator<<(CArchive& ar, const FRInterval& interval) {
  return ar << interval.start_pt() << interval.end_pt();
}

CArchive& operator>>(CArchive& ar, FRInterval& interval) {
  double low = 0;
  double high = 0;
  ar >> low >> high;
  interval.set_low(low);
  interval.set_high(high);
  return ar;
}

CArchive& operator<<(CArchive& ar, const FRBox& box) { return ar << box.x_range() << box.y_range() << box.z_range(); }

CArchive& operator>>(CArchive& ar, FRBox& box) {
  FRInterval x, y, z;
  ar >> x >> y >> z;
  box.x_setrange(x);
  box.y_setrange(y);
  box.z_setrange(z);
  return ar;
}

CArchive& operator<<(CArchive& ar, const FRMatrix& matrix) {
  for (int row = 0; row < 3; ++row)
    for (int column = 0; column < 3; ++column) ar << matrix.element(row, column);
  return ar;
}

CArchive& operator>>(CArchive& ar, FRMatrix& matrix) {
  for (int row = 0; row < 3; ++row)
    for (int column = 0; column < 3; ++column) {
      double element = 0;
      ar >> element;
      matrix.set_element(row, column, element);
    }
  return ar;
}

CArchive& operator<<(CArchive& ar, const FRTransf& transform) {
  ar << transform.get_affine_part() << transform.get_translation_part() << transform.get_scaling_part();
  return ar << WORD(transform.get_rotate_flag()) << WORD(transform.get_reflect_flag())
            << WORD(transform.get_shear_flag());
}

CArchive& operator>>(CArchive& ar, FRTransf& transform) {
  FRMatrix affine;
  FRVector translation;
  double scale = 1;
  WORD rotate = 0, reflect = 0, shear = 0;
  ar >> affine >> translation >> scale >> rotate >> reflect >> shear;
  transform = FRTransf(affine, translation, scale, rotate, reflect, shear);
  return ar;
}
