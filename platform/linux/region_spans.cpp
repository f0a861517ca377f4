#include "platform/linux/region_spans.h"

#include <algorithm>
#include <utility>

namespace {

// An edge on its way down. It crosses a row at x = along / rows, as a quotient that is rounded up: x is the first pixel
// at or right of it, and `rest`, from 0 to rows - 1, is what was added to the dividend.
struct Edge {
  LONGLONG first, last;  // rows, the last one excluded
  LONGLONG x, rest;
  LONGLONG step, stepRest;  // from row to row
  LONGLONG rows;            // of the whole edge
};

// The quotient rounded up; the rest is what the divisor's multiple exceeds the dividend by.
std::pair<LONGLONG, LONGLONG> DividedUp(__int128 dividend, LONGLONG divisor) {
  LONGLONG quotient = LONGLONG(dividend / divisor);
  if (__int128(quotient) * divisor < dividend) ++quotient;
  return {quotient, LONGLONG(__int128(quotient) * divisor - dividend)};
}

void Advance(Edge& edge) {
  edge.x += edge.step;
  edge.rest += edge.stepRest;
  if (edge.rest >= edge.rows) {
    edge.rest -= edge.rows;
    --edge.x;
  }
}

// The edges that cross rows of the bounds, in the order of their first rows.
std::vector<Edge> EdgesWithin(const std::vector<POINT>& points, const RECT& bounds) {
  std::vector<Edge> edges;
  for (std::size_t i = 0; i < points.size(); ++i) {
    POINT from = points[i], to = points[i + 1 < points.size() ? i + 1 : 0];
    if (from.y > to.y) std::swap(from, to);
    const LONGLONG first = std::max(from.y, bounds.top), last = std::min(to.y, bounds.bottom);
    if (first >= last) continue;
    const LONGLONG rows = LONGLONG(to.y) - from.y, across = LONGLONG(to.x) - from.x;
    const auto [x, rest] = DividedUp(__int128(across) * (first - from.y), rows);
    const auto [step, stepRest] = DividedUp(across, rows);
    edges.push_back({first, last, from.x + x, rest, step, stepRest, rows});
  }
  std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.first < b.first; });
  return edges;
}

// Appends the spans of a row. If they are those of the row above, which begin at `band`, these become higher instead.
void AppendRow(std::vector<RECT>& spans, std::size_t& band, const std::vector<RECT>& row) {
  const auto same = [](const RECT& above, const RECT& below) {
    return above.left == below.left && above.right == below.right && above.bottom == below.top;
  };
  if (std::equal(spans.begin() + std::ptrdiff_t(band), spans.end(), row.begin(), row.end(), same)) {
    for (std::size_t i = band; i < spans.size(); ++i) ++spans[i].bottom;
    return;
  }
  band = spans.size();
  spans.insert(spans.end(), row.begin(), row.end());
}

std::vector<RECT> SpansOfPolygon(const std::vector<POINT>& points, const RECT& bounds) {
  std::vector<RECT> spans, in_row;
  std::size_t band = 0;
  const std::vector<Edge> edges = EdgesWithin(points, bounds);
  std::vector<Edge> crossing;
  auto next = edges.begin();
  for (LONG row = bounds.top; row < bounds.bottom && (next != edges.end() || !crossing.empty()); ++row) {
    std::erase_if(crossing, [row](const Edge& edge) { return edge.last <= row; });
    for (; next != edges.end() && next->first == row; ++next) crossing.push_back(*next);
    std::sort(crossing.begin(), crossing.end(), [](const Edge& a, const Edge& b) { return a.x < b.x; });
    in_row.clear();
    for (std::size_t i = 0; i + 1 < crossing.size(); i += 2) {
      const LONGLONG left = std::max<LONGLONG>(crossing[i].x, bounds.left);
      const LONGLONG right = std::min<LONGLONG>(crossing[i + 1].x, bounds.right);
      if (left < right) in_row.push_back({LONG(left), row, LONG(right), row + 1});
    }
    AppendRow(spans, band, in_row);
    for (Edge& edge : crossing) Advance(edge);
  }
  return spans;
}

}  // namespace

std::vector<RECT> RectsOfRegion(const RegionShape& region, const RECT& bounds) {
  if (!region.points.empty()) return SpansOfPolygon(region.points, bounds);
  const RECT common = {std::max(region.rect.left, bounds.left), std::max(region.rect.top, bounds.top),
                       std::min(region.rect.right, bounds.right), std::min(region.rect.bottom, bounds.bottom)};
  if (common.left >= common.right || common.top >= common.bottom) return {};
  return {common};
}
