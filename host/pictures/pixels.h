// The pixels of an image.
#pragma once

#include <vector>

#include "platform/types.h"

namespace kestrova {

// Three bytes a pixel, red, green, blue, the top row first.
struct Pixels {
  int width = 0;
  int height = 0;
  std::vector<BYTE> rgb;
};

// An image of half the width and height: each pixel is the average of four.
Pixels Halved(const Pixels& large);

}  // namespace kestrova
