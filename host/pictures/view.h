// From which place a picture shows its model: named views in parallel projection, fitted to the model, or an eye with
// perspective.
#pragma once

#include <optional>
#include <string>

#include "companions/geometry/vectors.h"

namespace kestrova {

struct ViewOptions {
  std::string name = "iso";               // iso, top, front or right; not used with an eye
  std::optional<FRPosition> eye = {};     // of a view with perspective
  std::optional<FRPosition> target = {};  // what the eye looks at; the centre of the model without one
  double fov_degrees = 40;                // the full vertical angle of a view with perspective
  int width = 1600;                       // pixels
  int height = 1000;
  bool dark = false;  // the background
};

// How the model stands: what is up, and the direction from the model to a viewer in front of it; a right angle apart.
struct Standing {
  FRUnitVector up = FRUnitVector::AsGiven(0, 0, 1);
  FRUnitVector front = FRUnitVector::AsGiven(0, -1, 0);
};

// Directions of the image in the model.
struct ViewAxes {
  FRUnitVector right, up, back;  // back: from the model to the viewer
};

// The axes of a named view.
ViewAxes AxesOf(const std::string& view, const Standing& standing);

// The space that positions fill, along the axes of the model and along those of a view.
class Extent {
 public:
  explicit Extent(const ViewAxes& axes = {}) : axes_(axes) {}

  // A position that is not finite, or so far out that no picture can show it, counts as outside.
  void Add(const FRPosition& position);
  static bool IsInside(const FRPosition& position);

  bool IsEmpty() const { return count_ == 0; }
  // The largest side along the axes of the model.
  double Size() const;
  FRPosition Centre() const;
  // The corner of the box along the axes of the model whose number has bit 0, 1 or 2 set for the high x, y or z.
  FRPosition Corner(int number) const;
  const ViewAxes& Axes() const { return axes_; }
  double Low(int axis) const { return seen_low_[axis]; }  // along right, up, back
  double High(int axis) const { return seen_high_[axis]; }

 private:
  ViewAxes axes_;
  std::size_t count_ = 0;
  double low_[3] = {}, high_[3] = {};
  double seen_low_[3] = {}, seen_high_[3] = {};
};

struct Camera {
  FRPosition eye;
  ViewAxes axes;
  bool perspective = false;
  // Half of what the image shows: lengths of the model, or with perspective the tangents of half the angles.
  double half_width = 1;
  double half_height = 1;
  double near_plane = 0;  // distances from the eye
  double far_plane = 1;

  double Depth(const FRPosition& position) const { return (eye - position) % axes.back; }
  // x to the right and y up, from -1 to 1 across the image.
  FRPosition OnImage(const FRPosition& position) const;
};

// The camera of a picture with so many pixels for the drawing. A fitted view leaves a border of `margin` pixels. Throws
// WrongUsage if the eye and the target are at the same place.
Camera CameraFor(const ViewOptions& view, const Standing& standing, const Extent& extent, int width, int height,
                 int margin);

// "1600x1000": both 64 to 4096. "X,Y,Z": three finite numbers. Throw WrongUsage for any other text.
void ReadSize(const std::string& text, ViewOptions& view);
FRPosition ReadPosition(const std::string& option, const std::string& text);

}  // namespace kestrova
