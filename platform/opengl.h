// OpenGL 1.1 and GLU under their own names. They act on the context that is current on the calling thread. Only for
// share/display: a module that uses OpenGL includes the system's headers.
#pragma once

#include "platform/types.h"

#include <GL/gl.h>
#include <GL/glu.h>
