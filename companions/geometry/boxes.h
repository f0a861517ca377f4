// Intervals and axis-aligned boxes: FRInterval and FRBox. Both are plain values, and no operation fails. Lengths are in
// the caller's unit. A box ignores NaN coordinates; it has a NaN bound only if all points have NaN there.
#pragma once

#include "companions/geometry/vectors.h"

// The closed interval from start_pt to end_pt. The default is [0, 0]. Both ends are kept as set, even if low is above
// high.
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

// A box with its edges along the axes. The default contains only the origin.
class KVSHARE_API FRBox {
 public:
  constexpr FRBox() = default;
  // The smallest box that contains both positions, which are any two opposite corners in any order.
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

// The smallest box around the first count positions. If points is null or count is below 1, the default box.
KVSHARE_API FRBox CreateBoxFromPoints(const FRPosition* points, int count);
