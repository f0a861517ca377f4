// OpenGL 1.1 and GLU under their own names. They act on the context that is current on the calling thread. Only for
// share/display, and for a host that makes a context with off_screen.h: a module that uses OpenGL includes the system's
// headers.
#pragma once

#include "platform/drawing.h"
#include "platform/types.h"

#include <GL/gl.h>
#include <GL/glu.h>

#ifndef _WIN32

// Makes one display list for each of `count` characters from `first` on, in the font that the device context has
// selected: the list listBase + i draws the character first + i as a bitmap at the raster position and moves the
// position by its width. FALSE, without lists, for an invalid device context or without fonts.
KVSHARE_API BOOL wglUseFontBitmapsW(HDC dc, DWORD first, DWORD count, DWORD listBase);

#endif
