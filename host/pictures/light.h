// The light that pictures are shaded with: one lamp above the viewer's left shoulder and a weak one from the right.
// Both move with the viewer.
#pragma once

#include <algorithm>

#include "host/pictures/view.h"

namespace kestrova {

inline constexpr float kAmbientLight = 0.4F;

struct Lamp {
  float direction[3];  // to the lamp: right, up, back
  float strength;
};
inline constexpr Lamp kLamps[] = {{{-0.4F, 0.65F, 0.9F}, 0.5F}, {{0.6F, -0.1F, 0.8F}, 0.28F}};

// The brightness of a surface, which is lit from both sides.
inline double Brightness(const FRUnitVector& normal, const ViewAxes& axes) {
  double sum = kAmbientLight;
  const double side = normal % axes.back < 0 ? -1 : 1;
  for (const Lamp& lamp : kLamps) {
    const FRUnitVector direction(lamp.direction[0], lamp.direction[1], lamp.direction[2]);
    const double cosine =
        normal % axes.right * direction.x() + normal % axes.up * direction.y() + normal % axes.back * direction.z();
    sum += lamp.strength * std::max(0.0, side * cosine);
  }
  return std::min(sum, 1.0);
}

}  // namespace kestrova
