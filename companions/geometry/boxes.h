// Intervals and axis-aligned boxes: FRInterval and FRBox. Plain values; nothing fails. A coordinate that is no number
// widens no box; it stays in one only if no point has a number there.
#pragma once

#include "companions/geometry/vectors.h"

// A closed interval from start_pt to end_pt; default-built it is [0, 0]. The ends are kept as set, also when the low
// one is above the high one.
class KVSHARE_API FRInterval {
 public:
  constexpr FRInterval() = default;

  constexpr double start_pt() const { return low_; }
  constexpr double end_pt() const { return high_; }
  constexpr void set_low(double low) { low_ = low; }
  constexpr void set_high(double high) { high_ = high; }

 private:
  double low_ = 0;
  double high_ = 0;
};

// A box with its edges along the axes; default-built it is the origin alone.
class KVSHARE_API FRBox {
 public:
  constexpr FRBox() = default;
  // The smallest box with both positions in it; they may be any two opposite corners, in any order.
  FRBox(const FRPosition& corner, const FRPosition& opposite);

  constexpr FRPosition low() const { return {x_.start_pt(), y_.start_pt(), z_.start_pt()}; }
  constexpr FRPosition high() const { return {x_.end_pt(), y_.end_pt(), z_.end_pt()}; }
  constexpr const FRInterval& x_range() const { return x_; }
  constexpr const FRInterval& y_range() const { return y_; }
  constexpr const FRInterval& z_range() const { return z_; }
  constexpr void x_setrange(const FRInterval& range) { x_ = range; }
  constexpr void y_setrange(const FRInterval& range) { y_ = range; }
  constexpr void z_setrange(const FRInterval& range) { z_ = range; }

 private:
  FRInterval x_;
  FRInterval y_;
  FRInterval z_;
};

// The smallest box around the first count positions; with null or a count below 1 the origin alone.
KVSHARE_API FRBox CreateBoxFromPoints(const FRPosition* points, int count);
