// The records of the geometry values in an archive: doubles in a fixed order, no tag, no length.
//
//   FRPosition, FRVector   x, y, z                                             24 bytes
//   FRInterval             low, high                                           16
//   FRBox                  the intervals of x, y and z                         48
//   FRMatrix               nine elements, row by row                           72
//   FRTransf               affine part, translation part, scaling part,       110
//                          then rotate, reflect and shear flag, a WORD each
//
// Reading accepts every bit pattern: a damaged document can give NaN or infinite values. All operators pass the
// archive's exceptions on; the value can then be partly read.
#pragma once

#include "companions/geometry/boxes.h"
#include "companions/geometry/transforms.h"
#include "framework/archive.h"

KVSHARE_API CArchive& operator<<(CArchive& ar, const FRPosition& position);
KVSHARE_API CArchive& operator>>(CArchive& ar, FRPosition& position);
KVSHARE_API CArchive& operator<<(CArchive& ar, const FRVector& vector);
KVSHARE_API CArchive& operator>>(CArchive& ar, FRVector& vector);
KVSHARE_API CArchive& operator<<(CArchive& ar, const FRInterval& interval);
KVSHARE_API CArchive& operator>>(CArchive& ar, FRInterval& interval);
KVSHARE_API CArchive& operator<<(CArchive& ar, const FRBox& box);
KVSHARE_API CArchive& operator>>(CArchive& ar, FRBox& box);
KVSHARE_API CArchive& operator<<(CArchive& ar, const FRMatrix& matrix);
KVSHARE_API CArchive& operator>>(CArchive& ar, FRMatrix& matrix);
KVSHARE_API CArchive& operator<<(CArchive& ar, const FRTransf& transform);
KVSHARE_API CArchive& operator>>(CArchive& ar, FRTransf& transform);

// A direction is stored as an FRVector. Reading keeps the bits of a vector whose length is 1 within RESNOR. It
// normalises any other vector; one without a direction becomes (0, 0, 0).
KVSHARE_API CArchive& operator>>(CArchive& ar, FRUnitVector& direction);
