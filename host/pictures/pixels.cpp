#include "host/pictures/pixels.h"

namespace kestrova {

Pixels Halved(const Pixels& large) {
  Pixels pixels = {large.width / 2, large.height / 2, {}};
  pixels.rgb.resize(std::size_t(pixels.width) * std::size_t(pixels.height) * 3);
  const std::size_t row = std::size_t(large.width) * 3;
  BYTE* to = pixels.rgb.data();
  for (int y = 0; y < pixels.height; ++y) {
    const BYTE* from = large.rgb.data() + 2 * std::size_t(y) * row;
    for (int x = 0; x < pixels.width; ++x, from += 6)
      for (int channel = 0; channel < 3; ++channel)
        *to++ = BYTE((from[channel] + from[channel + 3] + from[row + std::size_t(channel)] +
                      from[row + std::size_t(channel) + 3] + 2) /
                     4);
  }
  return pixels;
}

}  // namespace kestrova
