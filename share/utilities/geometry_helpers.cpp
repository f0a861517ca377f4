// Frames, components of transforms, boxes and angles.
#include "share/utilities/geometry_helpers.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr FRPosition kOrigin;

// Returns 1 or -1 for a cosine near it, else the cosine.
using Snap = double (*)(double cosine);

double SnapCosine(double cosine) {
  constexpr double kNear = 1e-10;
  if (std::abs(cosine - 1) <= kNear) return 1;
  return std::abs(cosine + 1) <= kNear ? -1 : cosine;
}

double SnapThousandfold(double cosine) {
  if (std::abs(cosine * 1000 - 1000) <= RESABS) return 1;
  return std::abs(cosine * 1000 + 1000) <= RESABS ? -1 : cosine;
}

struct Turn {
  double angle;
  FRVector axis;
};

// The rotation of the Z axis to the normal.
Turn TiltOf(const FRUnitVector& normal, Snap snap) {
  if (FRZAxis == -normal) return {PI, FRYAxis};
  return {std::acos(snap(FRZAxis % normal)), FRZAxis * normal};
}

// The rotation of the X axis to the direction.
Turn SpinOf(const FRUnitVector& direction, Snap snap) {
  const double cosine = snap(FRXAxis % direction);
  // A snapped direction counts as the axis itself, so their perpendicular is not usable.
  if (cosine == -1 || FRXAxis == -direction) return {PI, FRZAxis};
  return {std::acos(cosine), FRXAxis * direction};
}

// The inverse rotation; the identity for an angle within RESABS.
FRTransf Undo(const Turn& turn) {
  return std::abs(turn.angle) > RESABS ? GetRotateTransf(-turn.angle, normalise(turn.axis)) : FRTransf();
}

FRTransf FrameOf(const FRUnitVector& normal, const FRPosition& origin, const FRUnitVector& x_direction, Snap snap) {
  const Turn tilt = TiltOf(normal, snap);
  const FRUnitVector direction = x_direction * GetRotateTransf(-tilt.angle, normalise(tilt.axis));
  return GetTranslateTransf(kOrigin - origin) * Undo(tilt) * Undo(SpinOf(direction, snap));
}

FRVector Row(const FRMatrix& matrix, int row) {
  return {matrix.element(row, 0), matrix.element(row, 1), matrix.element(row, 2)};
}

bool IsWithin(double value, double tolerance) { return std::abs(value) <= tolerance; }

// The axis u of a rotation with that cosine, up to its sign. The symmetric part of the matrix is cos I + (1 - cos) u
// u'. Without the cosine on the diagonal, all its rows are parallel to u. The row of u's largest component is the
// longest and so the most exact.
FRUnitVector AxisFromSymmetricPart(const FRMatrix& matrix, double cosine) {
  int pivot = 0;
  for (int row = 1; row < 3; ++row)
    if (matrix.element(row, row) > matrix.element(pivot, pivot)) pivot = row;
  FRVector along;
  for (int column = 0; column < 3; ++column)
    along[column] = (matrix.element(pivot, column) + matrix.element(column, pivot)) / 2;
  along[pivot] -= cosine;
  return normalise(along);
}

// The axis that the transform keeps if it reverses the other two; null for any other transform.
const FRUnitVector* AxisOfHalfTurn(const FRTransf& transform) {
  const FRUnitVector* const axes[] = {&FRXAxis, &FRYAxis, &FRZAxis};
  bool flipped[3];
  bool kept[3];
  for (int i = 0; i < 3; ++i) {
    const FRUnitVector image = *axes[i] * transform;
    flipped[i] = image == -*axes[i];
    kept[i] = image == *axes[i];
  }
  for (int third = 2; third >= 0; --third)
    if (kept[third] && flipped[(third + 1) % 3] && flipped[(third + 2) % 3]) return axes[third];
  return nullptr;
}

// Axis and angle of a rotation. The acos of (trace - 1) / 2 loses half of the digits near 0 and PI, so the sine is
// used, too: the skew part of the matrix is the axis times the sine, M12 - M21 = 2 sin x and so on.
Turn TurnOf(const FRMatrix& m) {
  const FRVector skew(m.element(1, 2) - m.element(2, 1), m.element(2, 0) - m.element(0, 2),
                      m.element(0, 1) - m.element(1, 0));
  const double twice_cosine = m.element(0, 0) + m.element(1, 1) + m.element(2, 2) - 1;
  const double angle = std::atan2(skew.len(), twice_cosine);
  if (angle <= RESNOR) return {0, FRVector()};
  if (angle >= PI - RESNOR) return {angle, GetRotationAxisForPIRotation(m)};
  if (twice_cosine >= 0) return {angle, normalise(skew)};
  const FRUnitVector axis = AxisFromSymmetricPart(m, twice_cosine / 2);
  return {angle, FRVector(axis) % skew < 0 ? -axis : axis};
}

FRPosition Corner(const FRPosition& low, const FRPosition& high, int number) {
  return {number & 1 ? high.x() : low.x(), number & 2 ? high.y() : low.y(), number & 4 ? high.z() : low.z()};
}

}  // namespace

// ---- frames

FRTransf GetXYTransform(FRUnitVector normal, FRPosition origin, double angle_radians) {
  FRTransf turn = get_transform_to_xy_plane(-normal, kOrigin);
  turn *= GetRotateTransf(angle_radians, FRVector(0, 0, -1));
  return GetTranslateTransf(kOrigin - origin) * turn;
}

FRTransf GetXYTransform(FRUnitVector normal, FRPosition origin, FRUnitVector x_direction) {
  return FrameOf(-normal, origin, x_direction, SnapCosine);
}

FRTransf GetTransformToTurnXY(FRUnitVector normal, FRPosition origin, FRUnitVector x_direction) {
  return FrameOf(normal, origin, x_direction, SnapThousandfold);
}

// ---- components of transforms

int ExtractTransformComponents(const FRTransf& transform, FRUnitVector& axis, double& angle_radians,
                               FRVector& translation) {
  translation = transform.get_translation_part();
  if (const FRUnitVector* half_turn = AxisOfHalfTurn(transform)) {
    axis = *half_turn;
    angle_radians = PI;
    return 1;
  }
  const FRMatrix matrix = transform.get_affine_part();
  const int is_rotation = IsPureRotationMatrix(matrix);
  const Turn turn = is_rotation ? TurnOf(matrix) : Turn{0, FRVector()};
  axis = FRUnitVector::AsGiven(turn.axis.x(), turn.axis.y(), turn.axis.z());
  angle_radians = turn.angle;
  return is_rotation;
}

int IsPureRotationMatrix(const FRMatrix& matrix) {
  const FRVector rows[] = {Row(matrix, 0), Row(matrix, 1), Row(matrix, 2)};
  for (int i = 0; i < 3; ++i)
    if (!IsWithin(rows[i] % rows[(i + 1) % 3], RESABS) || !IsWithin(rows[i].len() - 1, RESABS)) return 0;
  const double determinant = (rows[0] * rows[1]) % rows[2];
  return std::abs(determinant - 1) < RESABS;
}

FRUnitVector GetRotationAxisForPIRotation(const FRMatrix& matrix) {
  return AxisFromSymmetricPart(matrix, /*cosine=*/-1);
}

// ---- boxes

void TransformBox(const FRBox& box, const FRTransf& transform, FRBox& result) {
  const FRPosition low = box.low();
  const FRPosition high = box.high();
  FRPosition corners[8];
  for (int number = 0; number < 8; ++number) corners[number] = Corner(low, high, number) * transform;
  result = CreateBoxFromPoints(corners, 8);
}

FRBox CreateBoundingBox(const double* size, const FRPosition& centre, double margin) {
  FRVector reach(margin, margin, margin);
  for (int i = 0; size && i < 3; ++i) reach[i] += size[i] / 2;
  return FRBox(centre + reach, centre + -reach);
}

// ---- directions and angles

FRUnitVector project_uv_on_plane(const FRUnitVector& v, const FRUnitVector& normal) {
  if (v.len() < RESABS) return FRUnitVector();
  const FRPosition tip = kOrigin + v;
  return normalise(tip.project_on_plane(kOrigin, normal) - kOrigin);
}

double CalculateAngle(const FRUnitVector& a, const FRUnitVector& b, FRUnitVector plane) {
  const bool is_flat = plane.len() > RESABS;
  const FRUnitVector from = is_flat ? project_uv_on_plane(a, plane) : a;
  const FRUnitVector to = is_flat ? project_uv_on_plane(b, plane) : b;
  const double angle = std::acos(std::clamp(from % to, -1.0, 1.0));
  if (std::abs(angle - PI) <= RESABS) return angle;
  return parallel(normalise(from * to), plane) < 0 ? PI_2 - angle : angle;
}

int GetPerpendicularVector(const FRUnitVector& a, FRUnitVector* b, FRUnitVector* c) {
  if (!b || !c) return 0;
  const FRUnitVector input = a;  // b or c may point to a
  const double x = input.x();
  const double y = input.y();
  const double z = input.z();
  FRVector found(1, 1, 1);
  int done = 1;
  // Set the component that makes found % input 0.
  if (std::abs(z) > RESABS) {
    found.set_z((-x - y) / z);
  } else if (std::abs(y) > RESABS) {
    found.set_y((-x - z) / y);
  } else if (std::abs(x) > RESABS) {
    found.set_x((-y - z) / x);
  } else {
    done = 0;
  }
  *b = normalise(found);
  if (done) *c = normalise(input * *b);
  return done;
}
