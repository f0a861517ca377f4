#include "host/jobs/toolpath.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "companions/geometry/constants.h"
#include "host/document/operation_node.h"
#include "host/document/tool_node.h"

namespace kestrova {
namespace {

using Point = HostFeature::Point;

constexpr double kMm = 0.001;
constexpr double kToolDiameter = 10 * kMm;  // of an operation without a tool
constexpr int kMostLevels = 8;
constexpr int kMostContours = 8;
// How many points an offset contour has.
struct Fineness {
  double chord;  // between the points of a rounded corner
  double cornerSteps;
  std::size_t edgePoints;  // of all edges of a contour
};
constexpr Fineness kFine = {0.002 * kMm, 8, 2000};
constexpr Fineness kCoarse = {0.1 * kMm, 1, 0};
constexpr double kMostCornerPoints = 20'000;    // per corner
constexpr double kMostRoundedPoints = 400'000;  // per contour, at its corners
constexpr double kLongest = 1000;               // metres
constexpr std::size_t kArcPoints = 32;          // the most points of an arc
constexpr std::size_t kArcStep = 4;             // between the points of an arc that a picture gets

double Distance(Point a, Point b) { return std::hypot(a.x - b.x, a.y - b.y); }

struct Circle {
  Point centre;
  double radius;
};

// Clamps a number of a document, which may be anything; a NaN becomes `least`.
double Within(double value, double least, double most) { return value > least ? std::min(value, most) : least; }

// nullopt for three points on a line.
std::optional<Circle> CircleThrough(Point a, Point b, Point c) {
  const double bx = b.x - a.x, by = b.y - a.y, cx = c.x - a.x, cy = c.y - a.y;
  const double twiceArea = bx * cy - by * cx;
  if (std::abs(twiceArea) < 1e-18) return std::nullopt;
  const double b2 = bx * bx + by * by, c2 = cx * cx + cy * cy;
  const double x = (cy * b2 - by * c2) / (2 * twiceArea), y = (bx * c2 - cx * b2) / (2 * twiceArea);
  return Circle{{a.x + x, a.y + y}, std::hypot(x, y)};
}

// The corners of the profile, or of a circle for a hole.
std::vector<Point> Corners(const ToolpathTask& task) {
  std::vector<Point> corners;
  for (const Point& point : task.profile)
    corners.push_back({Within(point.x, -kLongest, kLongest), Within(point.y, -kLongest, kLongest)});
  if (corners.size() >= 3) return corners;
  const Point centre = corners.empty() ? Point{} : corners.front();
  const double radius = std::max(Within(task.diameter, 0, kLongest) / 2, kMm);
  corners.clear();
  for (int i = 0; i < 360; ++i)
    corners.push_back({centre.x + radius * std::cos(i * PI / 180), centre.y + radius * std::sin(i * PI / 180)});
  return corners;
}

double TwiceArea(const std::vector<Point>& corners) {
  double sum = 0;
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const Point a = corners[i], b = corners[(i + 1) % corners.size()];
    sum += a.x * b.y - a.y * b.x;
  }
  return sum;
}

// The contour at a distance outside the corners: edges moved out, and rounded corners where they separate.
std::vector<Point> Offset(const std::vector<Point>& corners, double distance, const Fineness& fineness) {
  std::vector<Point> contour;
  const std::size_t count = corners.size();
  const double side = TwiceArea(corners) < 0 ? -1 : 1;
  const std::size_t pointsOfEdge = std::max<std::size_t>(2, fineness.edgePoints / count);
  for (std::size_t i = 0; i < count; ++i) {
    const Point a = corners[i], b = corners[(i + 1) % count], c = corners[(i + 2) % count];
    const double length = Distance(a, b), next = Distance(b, c);
    if (length == 0 || next == 0) continue;
    const Point out = {side * (b.y - a.y) / length, side * (a.x - b.x) / length};
    const Point outNext = {side * (c.y - b.y) / next, side * (b.x - c.x) / next};
    for (std::size_t at = 0; at < pointsOfEdge; ++at) {
      const double part = double(at) / double(pointsOfEdge - 1);
      contour.push_back({a.x + part * (b.x - a.x) + distance * out.x, a.y + part * (b.y - a.y) + distance * out.y});
    }
    const double turn = std::atan2(out.x * outNext.y - out.y * outNext.x, out.x * outNext.x + out.y * outNext.y);
    if (turn * side <= 0) continue;
    const double most = std::clamp(kMostRoundedPoints / double(count), 8.0, kMostCornerPoints);
    const double from = std::atan2(out.y, out.x);
    const int steps = int(std::clamp(std::abs(turn) * distance / fineness.chord, fineness.cornerSteps, most));
    for (int at = 1; at < steps; ++at) {
      const double angle = from + turn * at / steps;
      contour.push_back({b.x + distance * std::cos(angle), b.y + distance * std::sin(angle)});
    }
  }
  return contour;
}

// True if all points of the run are within the tolerance of the circle.
bool Fits(const Circle& circle, const std::vector<Point>& points, std::size_t first, std::size_t last,
          double tolerance) {
  for (std::size_t at = first; at <= last; ++at)
    if (std::abs(Distance(points[at], circle.centre) - circle.radius) > tolerance) return false;
  return true;
}

// Divides the points into the longest runs that fit one arc or one line, and counts these. Returns the ends of the runs
// and points of the arcs.
std::vector<Point> FitRuns(const std::vector<Point>& points, double tolerance, Toolpath& path) {
  std::vector<Point> fitted;
  for (std::size_t first = 0; first + 1 < points.size();) {
    std::size_t last = first + 1;
    bool arc = false;
    while (last + 1 < points.size() && last - first < kArcPoints) {
      const auto circle = CircleThrough(points[first], points[(first + last + 1) / 2], points[last + 1]);
      if (circle && !Fits(*circle, points, first, last + 1, tolerance)) break;
      arc = arc || circle.has_value();
      ++last;
    }
    (arc ? path.arcs : path.lines) += 1;
    for (std::size_t at = first; at < last; ++at) path.length += Distance(points[at], points[at + 1]);
    if (fitted.empty()) fitted.push_back(points[first]);
    for (std::size_t at = first + kArcStep; arc && at < last; at += kArcStep) fitted.push_back(points[at]);
    fitted.push_back(points[last]);
    first = last;
  }
  return fitted;
}

}  // namespace

ToolpathTask ToolpathTaskOf(const HostOperation& operation) {
  ToolpathTask task;
  if (const auto* feature = DYNAMIC_DOWNCAST(HostFeature, operation.GetOwner())) {
    task.profile = feature->Profile();
    task.depth = feature->Depth();
  }
  task.diameter = operation.Tool() ? operation.Tool()->Diameter() : kToolDiameter;
  task.step = operation.Step();
  return task;
}

Toolpath ComputeToolpath(const ToolpathTask& task, const ToolpathProgress& progress, const ToolpathContour& contour) {
  Toolpath path;
  const double step = Within(task.step, 0.1 * kMm, kLongest);
  const double radius = Within(task.diameter, 0, kLongest) / 2;
  const double depth = Within(task.depth, 0, kLongest);
  const std::vector<Point> corners = Corners(task);
  const int levels = int(std::clamp(std::ceil(depth / std::max(radius, kMm)), 1.0, double(kMostLevels)));
  const int total = levels * kMostContours;
  for (; path.levels < levels; ++path.levels) {
    for (int ring = 0; ring < kMostContours; ++ring) {
      const int percent = 100 * path.contours / total;
      if (!progress(percent, "offsetting")) return path;
      const std::vector<Point> points = Offset(corners, radius + ring * step, task.coarse ? kCoarse : kFine);
      if (!progress(percent, "fitting arcs")) return path;
      const std::vector<Point> fitted = FitRuns(points, task.tolerance, path);
      if (contour) contour(depth * (path.levels + 1) / levels, fitted);
      ++path.contours;
    }
  }
  progress(100, "done");
  return path;
}

}  // namespace kestrova
