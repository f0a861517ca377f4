#include "host/pictures/view.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "companions/geometry/constants.h"
#include "host/shell/failure.h"

namespace kestrova {
namespace {

constexpr int kLeastSide = 64, kMostSide = 4096;  // pixels
constexpr double kFarthest = 1e12;                // of a coordinate, so that OpenGL's floats can be multiplied
constexpr double kNearest = 1e-3;                 // of the near plane, as a part of the far plane
constexpr double kSmallest = 1e-9;                // half of what an image shows

// The part of a text up to the separator, which is cut off with it.
std::string_view TakeUntil(std::string_view& text, char separator) {
  const std::size_t at = text.find(separator);
  const std::string_view part = text.substr(0, at);
  text.remove_prefix(at == std::string_view::npos ? text.size() : at + 1);
  return part;
}

template <class Number>
bool ReadNumber(std::string_view text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

ViewAxes AxesToward(const FRVector& back, const FRUnitVector& up, const FRUnitVector& otherUp) {
  ViewAxes axes;
  axes.back = normalise(back);
  const FRVector across = up * axes.back;
  axes.right = normalise(across.len() > RESNOR ? across : otherUp * axes.back);
  axes.up = normalise(axes.back * axes.right);
  return axes;
}

Camera Looking(const ViewOptions& view, const Standing& standing, const Extent& extent) {
  Camera camera;
  camera.perspective = true;
  camera.eye = *view.eye;
  const FRVector back = camera.eye - view.target.value_or(extent.Centre());
  if (back.len() <= RESABS) throw WrongUsage("--eye is where --target is; move one of them");
  camera.axes = AxesToward(back, standing.up, -standing.front);
  camera.half_height = std::tan(view.fov_degrees / 2 / RADIAN_TO_DEGREE);
  double nearest = kFarthest, farthest = 0;
  for (int corner = 0; corner < 8; ++corner) {
    const double depth = camera.Depth(extent.Corner(corner));
    nearest = std::min(nearest, depth);
    farthest = std::max(farthest, depth);
  }
  camera.far_plane = std::max(farthest * 1.01, kSmallest);
  camera.near_plane = std::max(nearest * 0.99, camera.far_plane * kNearest);
  return camera;
}

// The model's centre is the image's centre, and the model lies between the planes.
Camera Fitted(const ViewAxes& axes, const Extent& extent) {
  Camera camera;
  camera.axes = axes;
  const double size = std::max(extent.Size(), kSmallest), depth = extent.High(2) - extent.Low(2);
  double centre[3];
  for (int axis = 0; axis < 3; ++axis) centre[axis] = (extent.Low(axis) + extent.High(axis)) / 2;
  camera.near_plane = size;
  camera.far_plane = camera.near_plane + depth + 2 * size;
  centre[2] = extent.High(2) + camera.near_plane + size;
  const FRUnitVector* const directions[] = {&axes.right, &axes.up, &axes.back};
  for (int axis = 0; axis < 3; ++axis) {
    const FRUnitVector& direction = *directions[axis];
    camera.eye =
        camera.eye + FRVector(direction.x() * centre[axis], direction.y() * centre[axis], direction.z() * centre[axis]);
  }
  return camera;
}

}  // namespace

ViewAxes AxesOf(const std::string& view, const Standing& standing) {
  const FRUnitVector& up = standing.up;
  const FRUnitVector& front = standing.front;
  const FRVector right = up * front;
  if (view == "top") return AxesToward(up, -front, -front);
  if (view == "front") return AxesToward(front, up, up);
  if (view == "right") return AxesToward(right, up, up);
  const auto sum = [&](int axis) { return right[axis] * 0.8 + front[axis] + up[axis] * 0.75; };
  return AxesToward({sum(0), sum(1), sum(2)}, up, up);
}

bool Extent::IsInside(const FRPosition& position) {
  const auto inside = [](double value) { return std::abs(value) <= kFarthest; };  // false for a NaN
  return inside(position.x()) && inside(position.y()) && inside(position.z());
}

void Extent::Add(const FRPosition& position) {
  if (!IsInside(position)) return;
  const FRVector from_origin = position - FRPosition();
  const double seen[] = {from_origin % axes_.right, from_origin % axes_.up, from_origin % axes_.back};
  for (int axis = 0; axis < 3; ++axis) {
    const double value = from_origin[axis];
    low_[axis] = count_ ? std::min(low_[axis], value) : value;
    high_[axis] = count_ ? std::max(high_[axis], value) : value;
    seen_low_[axis] = count_ ? std::min(seen_low_[axis], seen[axis]) : seen[axis];
    seen_high_[axis] = count_ ? std::max(seen_high_[axis], seen[axis]) : seen[axis];
  }
  ++count_;
}

double Extent::Size() const { return std::max({high_[0] - low_[0], high_[1] - low_[1], high_[2] - low_[2]}); }

FRPosition Extent::Centre() const {
  return {(low_[0] + high_[0]) / 2, (low_[1] + high_[1]) / 2, (low_[2] + high_[2]) / 2};
}

FRPosition Extent::Corner(int number) const {
  return {number & 1 ? high_[0] : low_[0], number & 2 ? high_[1] : low_[1], number & 4 ? high_[2] : low_[2]};
}

FRPosition Camera::OnImage(const FRPosition& position) const {
  const FRVector from_eye = position - eye;
  const double depth = perspective ? Depth(position) : 1;
  return {from_eye % axes.right / (half_width * depth), from_eye % axes.up / (half_height * depth), 0};
}

Camera CameraFor(const ViewOptions& view, const Standing& standing, const Extent& extent, int width, int height,
                 int margin) {
  const double aspect = double(width) / height;
  if (view.eye) {
    Camera camera = Looking(view, standing, extent);
    camera.half_width = camera.half_height * aspect;
    return camera;
  }
  Camera camera = Fitted(extent.Axes(), extent);
  const double free = std::max(1.0 - 2.0 * margin / std::min(width, height), 0.1);
  const double across = (extent.High(0) - extent.Low(0)) / 2, upward = (extent.High(1) - extent.Low(1)) / 2;
  camera.half_height = std::max({upward, across / aspect, kSmallest}) / free;
  camera.half_width = camera.half_height * aspect;
  return camera;
}

void ReadSize(const std::string& text, ViewOptions& view) {
  std::string_view left = text;
  const std::string_view width = TakeUntil(left, 'x');
  const auto fits = [](int side) { return side >= kLeastSide && side <= kMostSide; };
  if (ReadNumber(width, view.width) && ReadNumber(left, view.height) && fits(view.width) && fits(view.height)) return;
  throw WrongUsage("--size \"" + text + "\" is not WIDTHxHEIGHT with 64 to 4096 pixels each, such as 1600x1000");
}

FRPosition ReadPosition(const std::string& option, const std::string& text) {
  std::string_view left = text;
  double numbers[3] = {};
  bool valid = true;
  for (double& number : numbers) valid = ReadNumber(TakeUntil(left, ','), number) && valid;
  const FRPosition position(numbers[0], numbers[1], numbers[2]);
  if (valid && left.empty() && Extent::IsInside(position)) return position;
  throw WrongUsage(option + " \"" + text + "\" is not X,Y,Z with three numbers, such as 0.1,-0.2,0.3");
}

}  // namespace kestrova
