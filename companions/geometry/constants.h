// The geometry library's global numbers: the circle and the two tolerances for comparing doubles.
//
// All are variables and are read at each use. Code that needs another tolerance may change it and restore it later. The
// change holds for every thread, and there is no lock. The values are set before any static object is initialised.
#pragma once

#include "platform/types.h"

extern KVSHARE_API double PI;
// PI divided by 2.
extern KVSHARE_API double PI_2;
// Multiply an angle in radians by this to get degrees.
extern KVSHARE_API double RADIAN_TO_DEGREE;

// The absolute tolerance for lengths and coordinates, in the model's unit of length; 1e-6 at the start. Lengths that
// differ by less are equal, and a smaller length is zero. The rounding of numbers is derived from it too.
extern KVSHARE_API double RESABS;
// The tolerance for quantities without a unit: directions, sines and factors; 1e-10 at the start. It is far above the
// rounding error of some thousand double operations, and far below any angle that matters on a machine.
extern KVSHARE_API double RESNOR;
