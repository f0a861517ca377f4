// Intervals and boxes.
#include "companions/geometry/boxes.h"

#include <cmath>

namespace {

FRInterval Range(double low, double high) {
  FRInterval range;
  range.set_low(low);
  range.set_high(high);
  return range;
}

// std::fmin and std::fmax return the other argument if one is NaN, in either order; std::min and std::max do not.
FRInterval Around(const FRInterval& range, double value) {
  return Range(std::fmin(range.start_pt(), value), std::fmax(range.end_pt(), value));
}

}  // namespace

FRBox::FRBox(const FRPosition& corner, const FRPosition& opposite)
    : x_(Around(Range(corner.x(), corner.x()), opposite.x())),
      y_(Around(Range(corner.y(), corner.y()), opposite.y())),
      z_(Around(Range(corner.z(), corner.z()), opposite.z())) {}

FRBox CreateBoxFromPoints(const FRPosition* points, int count) {
  if (!points || count < 1) return FRBox();
  FRBox box(points[0], points[0]);
  for (int i = 1; i < count; ++i) {
    box.x_setrange(Around(box.x_range(), points[i].x()));
    box.y_setrange(Around(box.y_range(), points[i].y()));
    box.z_setrange(Around(box.z_range(), points[i].z()));
  }
  return box;
}
