// Frames, components of transforms, boxes and angles, on top of the geometry library.
//
// Vectors are row vectors: p * (A * B) is (p * A) * B. Angles are in radians, right-handed about their axis. Nothing
// fails or allocates, and any thread may call. (0, 0, 0) is no direction; each function says what it does with it.
// Numbers that are not finite give results by the rules of double arithmetic.
#pragma once

#include "companions/geometry/boxes.h"
#include "companions/geometry/transforms.h"

// ---- frames: from the model to the XY plane of a setup

// Moves the origin to (0, 0, 0), turns the negated normal to the Z axis (get_transform_to_xy_plane), then turns by the
// angle about (0, 0, -1).
KVSHARE_API FRTransf GetXYTransform(FRUnitVector normal, FRPosition origin, double angle_radians);

// Moves the origin to (0, 0, 0), turns the negated normal to the Z axis about their common perpendicular, then turns
// the turned X direction to the X axis. An X direction that is not perpendicular to the normal also goes to the X axis;
// the normal then leaves the Z axis. For a direction of (0, 0, 0) there is no turn.
//
// A cosine within 1e-10 of 1 or -1 counts as that number: directions up to 1.4e-5 radians from an axis count as the
// axis. The normal (0, 0, 1) gives a half turn about the Y axis; an X direction opposite to the X axis gives a half
// turn about the Z axis.
KVSHARE_API FRTransf GetXYTransform(FRUnitVector normal, FRPosition origin, FRUnitVector x_direction);

// The same for the frame of a turning machine, with two differences: it turns the normal itself to the Z axis, and a
// cosine counts as 1 or -1 if 1000 times the cosine is within RESABS of 1000 or -1000.
KVSHARE_API FRTransf GetTransformToTurnXY(FRUnitVector normal, FRPosition origin, FRUnitVector x_direction);

// ---- components of transforms

// Returns the axis and the angle, from 0 to PI, of the affine part, and the translation part; it ignores the scaling
// part. GetRotateTransf(angle, axis) is the affine part again. An angle within RESNOR of 0 becomes 0 with the axis
// (0, 0, 0). Half turns about X, Y and Z are recognised from the images of the axes only, also if the affine part
// stretches. 1 for a rotation, also by 0; 0 with angle 0 if the affine part is no rotation.
KVSHARE_API int ExtractTransformComponents(const FRTransf& transform, FRUnitVector& axis, double& angle_radians,
                                           FRVector& translation);

// 1 if the rows have length 1, are perpendicular to each other and form a right-handed frame, each within RESABS.
KVSHARE_API int IsPureRotationMatrix(const FRMatrix& matrix);

// The axis of a rotation by PI. Of the two opposite axes it returns the one whose largest component is positive.
// (0, 0, 0) for a matrix without such an axis, for example the negated identity.
KVSHARE_API FRUnitVector GetRotationAxisForPIRotation(const FRMatrix& matrix);

// ---- boxes

// Sets result to the axis-aligned box around the transformed box, which is larger if the transform turns. result may be
// the same object as box.
KVSHARE_API void TransformBox(const FRBox& box, const FRTransf& transform, FRBox& result);

// The box around the centre with the three edge lengths in size and a margin on each side. A null size counts as 0, 0,
// 0.
KVSHARE_API FRBox CreateBoundingBox(const double* size, const FRPosition& centre, double margin);

// ---- directions and angles

// The direction of v, projected onto the plane through the origin with that normal. (0, 0, 0) if v is (0, 0, 0) or
// parallel to the normal: check for it. A normal of (0, 0, 0) returns v.
KVSHARE_API FRUnitVector project_uv_on_plane(const FRUnitVector& v, const FRUnitVector& normal);

// The angle from a to b, projected onto the plane with that normal; a plane of (0, 0, 0) means no projection. From 0 to
// PI. If a x b is opposite to the normal, the result is PI / 2 minus the angle; kept for existing modules, which expect
// this value. A vector without a direction in the plane counts as perpendicular to the other.
KVSHARE_API double CalculateAngle(const FRUnitVector& a, const FRUnitVector& b, FRUnitVector plane);

// Sets b and c to two directions that form a right-angled frame with a, where c is a x b: 1. 0 with c unchanged if b or
// c is null, or if all components of a are within RESABS. b and c may point to a.
KVSHARE_API int GetPerpendicularVector(const FRUnitVector& a, FRUnitVector* b, FRUnitVector* c);
