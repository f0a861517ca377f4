// Writing of PNG files.
#pragma once

#include <string>

#include "host/pictures/pixels.h"

namespace kestrova {

// The bytes of the file. Throws Failure if there is no memory for them.
std::string PngOf(const Pixels& pixels);

}  // namespace kestrova
