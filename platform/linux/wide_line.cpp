#include "platform/linux/wide_line.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Moves the line to the left and upward: it decides between two pixels at the same distance.
constexpr double kAside = 1.0 / 1024;

struct Point {
  double x, y;
};

// The part of a row, in coordinates; empty if low > high.
struct Interval {
  double low = -std::numeric_limits<double>::infinity();
  double high = std::numeric_limits<double>::infinity();

  void Intersect(double from, double to) {
    low = std::max(low, from);
    high = std::min(high, to);
  }
  // Where least <= slope * x + offset <= most.
  void Require(double slope, double offset, double least, double most) {
    if (std::abs(slope) < 1e-12) {
      if (offset < least || offset > most) Intersect(1, 0);
      return;
    }
    const double a = (least - offset) / slope, b = (most - offset) / slope;
    Intersect(std::min(a, b), std::max(a, b));
  }
  // Both must be parts of a convex area.
  void Unite(const Interval& other) {
    if (other.low > other.high) return;
    const bool empty = low > high;
    low = empty ? other.low : std::min(low, other.low);
    high = empty ? other.high : std::max(high, other.high);
  }
};

// Cuts the line at a border: sign * coordinate <= limit. False if nothing is left.
bool Cut(Point& from, Point& to, double Point::*coordinate, double sign, double limit) {
  const double a = sign * from.*coordinate - limit, b = sign * to.*coordinate - limit;
  if (a > 0 && b > 0) return false;
  if (a <= 0 && b <= 0) return true;
  const double part = a / (a - b);
  (a > 0 ? from : to) = {from.x + (to.x - from.x) * part, from.y + (to.y - from.y) * part};
  return true;
}

Interval InCircle(const Point& centre, double radius, double y) {
  const double rest = radius * radius - (y - centre.y) * (y - centre.y);
  if (rest < 0) return {1, 0};
  return {centre.x - std::sqrt(rest), centre.x + std::sqrt(rest)};
}

// The rectangle along the line, without its round ends.
Interval InBody(const Point& from, const Point& to, double radius, double y) {
  const double length = std::hypot(to.x - from.x, to.y - from.y);
  if (length == 0) return {1, 0};
  const double ux = (to.x - from.x) / length, uy = (to.y - from.y) / length, down = y - from.y;
  Interval body;
  body.Require(ux, down * uy - from.x * ux, 0, length);
  body.Require(-uy, down * ux + from.x * uy, -radius, radius);
  return body;
}

void DrawIn(const PixelMemory& memory, const RECT& rect, Point from, Point to, double radius, DWORD pixel) {
  const double margin = radius + 2;  // cut ends are not seen
  if (!Cut(from, to, &Point::x, 1, rect.right + margin) || !Cut(from, to, &Point::x, -1, margin - rect.left) ||
      !Cut(from, to, &Point::y, 1, rect.bottom + margin) || !Cut(from, to, &Point::y, -1, margin - rect.top))
    return;
  const int top = std::max(rect.top, LONG(std::ceil(std::min(from.y, to.y) - radius)));
  const int bottom = std::min(rect.bottom - 1, LONG(std::floor(std::max(from.y, to.y) + radius)));
  for (int y = top; y <= bottom; ++y) {
    Interval row = InCircle(from, radius, y);
    row.Unite(InCircle(to, radius, y));
    row.Unite(InBody(from, to, radius, y));
    if (row.low > row.high) continue;
    const int left = int(std::ceil(std::max<double>(row.low, rect.left)));
    const int right = int(std::floor(std::min<double>(row.high, rect.right - 1)));
    if (left <= right) std::fill_n(memory.first + y * memory.stride + left, right - left + 1, pixel);
  }
}

}  // namespace

void DrawWideLine(const PixelMemory& memory, std::span<const RECT> clip, POINT from, POINT to, int width, DWORD pixel) {
  const Point start = {from.x - kAside, from.y - kAside}, end = {to.x - kAside, to.y - kAside};
  for (const RECT& rect : clip) DrawIn(memory, rect, start, end, width / 2.0, pixel);
}
