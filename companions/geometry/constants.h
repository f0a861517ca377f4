// The geometry library's global numbers: the circle and the two tolerances by which doubles are compared.
//
// All are variables, read at each use: a piece of code that needs another tolerance changes it for a while and puts it
// back, and every thread sees the change. They are constants before any initialiser of a static object runs.
#pragma once

#include "platform/types.h"

extern KVSHARE_API double PI;
// Half of PI, not twice: the name reads "PI over 2".
extern KVSHARE_API double PI_2;
// Degrees in a radian: an angle in radians times this one is in degrees.
extern KVSHARE_API double RADIAN_TO_DEGREE;

// The absolute tolerance, 1e-6 at start: lengths and coordinates that differ by less are the same, and a length below
// it is none. It is also the raster from which the rounding of numbers is derived.
extern KVSHARE_API double RESABS;
// The normal tolerance, 1e-10 at start: for quantities of length 1, sines and factors. Well above the error of a chain
// of some thousand double operations, well below any angle that matters at the size of a machine.
extern KVSHARE_API double RESNOR;
