// Frames, angles, boxes and the taking apart of transforms, on top of the geometry library.
//
// Row vectors throughout: p * (A * B) is (p * A) * B. Angles are in radians, right-handed about their axis. Nothing
// here fails or allocates, and any thread may call. A direction that is (0, 0, 0) is none: it is told at each function
// what comes of it. Numbers that are not finite do no harm; where the result is then not finite either, that is told
// by the rules of doubles.
#pragma once

#include "companions/geometry/boxes.h"
#include "companions/geometry/transforms.h"

// ---- frames: from the model to the XY plane of a setup

// Moves the origin to (0, 0, 0), then turns the negated normal to the Z axis (get_transform_to_xy_plane), then turns by
// the angle about (0, 0, -1).
KVSHARE_API FRTransf GetXYTransform(FRUnitVector normal, FRPosition origin, double angle_radians);

// Moves the origin to (0, 0, 0), then turns the negated normal to the Z axis about their common perpendicular, then
// turns what has become of the X direction to the X axis. An X direction that is not perpendicular to the normal is
// taken to the X axis all the same, and the normal then leaves the Z axis. A direction that is (0, 0, 0) is not turned.
//
// Within 1e-10 of 1 or -1 a cosine counts as that number, so directions up to 1.4e-5 radians from an axis count as it.
// The normal (0, 0, 1) itself makes a half turn about the Y axis, an X direction opposite to the X axis one about the
// Z axis.
KVSHARE_API FRTransf GetXYTransform(FRUnitVector normal, FRPosition origin, FRUnitVector x_direction);

// The same for the turning frame: it is the normal itself that is turned to the Z axis, and a cosine counts as 1 or -1
// if its thousandfold is within RESABS of 1000 or -1000.
KVSHARE_API FRTransf GetTransformToTurnXY(FRUnitVector normal, FRPosition origin, FRUnitVector x_direction);

// ---- taking transforms apart

// Gives the axis and the angle, from 0 to PI, of the transform's affine part, and its translation part; the scaling
// part counts for neither. GetRotateTransf(angle, axis) gives the affine part back. Half turns about X, Y and Z are
// recognised by the images of the axes alone, also if the affine part stretches. 1 if there is a rotation to tell, also
// one by 0; 0, with angle 0, if the affine part is none. An angle within RESNOR of 0 is given as 0 with the axis
// (0, 0, 0).
KVSHARE_API int ExtractTransformComponents(const FRTransf& transform, FRUnitVector& axis, double& angle_radians,
                                           FRVector& translation);

// 1 if the rows have length 1, are perpendicular to one another and make a right-handed frame, each within RESABS.
KVSHARE_API int IsPureRotationMatrix(const FRMatrix& matrix);

// The axis of a rotation by PI; of the two opposite ones that with its largest component positive. (0, 0, 0) for a
// matrix that has none, such as the negated identity.
KVSHARE_API FRUnitVector GetRotationAxisForPIRotation(const FRMatrix& matrix);

// ---- boxes

// The box along the axes around the transformed box: larger than it if the transform turns. result may be box itself.
KVSHARE_API void TransformBox(const FRBox& box, const FRTransf& transform, FRBox& result);

// The box around the centre with these edge lengths, three of them, and a margin on each side. Null counts as a size
// of 0.
KVSHARE_API FRBox CreateBoundingBox(const double* size, const FRPosition& centre, double margin);

// ---- directions and angles

// The direction of v seen along the normal, in the plane through the origin. (0, 0, 0), which is no direction, if v is
// none or lies along the normal: to be tested for. A normal of (0, 0, 0) leaves v as it is.
KVSHARE_API FRUnitVector project_uv_on_plane(const FRUnitVector& v, const FRUnitVector& normal);

// The angle from a to b, seen along the normal of a plane; a plane of (0, 0, 0) takes the vectors as they are. From 0
// to PI, unless a x b is opposite to the plane's normal: then PI / 2 minus the angle, which is required, however it
// looks. An a or b without direction in the plane is perpendicular to everything.
KVSHARE_API double CalculateAngle(const FRUnitVector& a, const FRUnitVector& b, FRUnitVector plane);

// Two directions b and c that make a right-angled frame with a: c is a x b. 1 if done; 0, with c left alone, if b or c
// is null or no component of a is outside RESABS. They may point to a itself.
KVSHARE_API int GetPerpendicularVector(const FRUnitVector& a, FRUnitVector* b, FRUnitVector* c);
