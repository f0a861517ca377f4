// A tree of planes: each node has the polygons in a plane, and children for the pieces before and after it. A line in a
// plane belongs to the viewer's side; if the plane is seen from its edge, to both sides, which are then beside one
// another in the image. The lists take the place of recursion, because a tree can be as deep as it has pieces.
#include "host/pictures/depth_order.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <utility>

#include "host/shell/failure.h"

namespace kestrova {
namespace {

constexpr double kFlat = 1e-6;  // thickness of a plane, as a part of the size of everything

struct Plane {
  FRUnitVector normal;
  FRPosition point;

  double Distance(const FRPosition& position) const { return (position - point) % normal; }
};

// Of a line and of a polygon without an area, the normal is (0, 0, 0).
Plane PlaneOf(const DepthPiece& piece) {
  FRVector sum;
  const std::vector<FRPosition>& points = piece.points;
  for (std::size_t i = 1; i + 1 < points.size(); ++i) {
    const FRVector part = (points[i] - points[0]) * (points[i + 1] - points[0]);
    sum = {sum.x() + part.x(), sum.y() + part.y(), sum.z() + part.z()};
  }
  return {normalise(sum), points.front()};
}

struct Node {
  Plane plane;
  std::vector<DepthPiece> flat;
  std::size_t before = 0, after = 0;  // on the side of the normal, on the other; 0: none
};

struct Work {
  std::size_t node;
  std::vector<DepthPiece> pieces;
};

FRPosition Between(const FRPosition& a, const FRPosition& b, double part) {
  const FRVector way = b - a;
  return a + FRVector(way.x() * part, way.y() * part, way.z() * part);
}

// The part of the piece on the plane's side of the sign.
DepthPiece Part(const DepthPiece& piece, const Plane& plane, double sign) {
  DepthPiece part = {{}, piece.item};
  const std::vector<FRPosition>& points = piece.points;
  const std::size_t sides = points.size() == 2 ? 1 : points.size();
  for (std::size_t i = 0; i < points.size(); ++i) {
    const FRPosition &a = points[i], &b = points[(i + 1) % points.size()];
    const double at = sign * plane.Distance(a), next = sign * plane.Distance(b);
    if (at >= 0) part.points.push_back(a);
    if (i < sides && at * next < 0) part.points.push_back(Between(a, b, at / (at - next)));
  }
  return part;
}

class DepthTree {
 public:
  DepthTree(std::vector<DepthPiece> pieces, const Camera& camera)
      : camera_(camera), size_(SizeOf(pieces)), thickness_(kFlat * size_), count_(pieces.size()) {
    nodes_.emplace_back();
    std::vector<Work> work;
    work.push_back({0, std::move(pieces)});
    while (!work.empty()) {
      Work next = std::move(work.back());
      work.pop_back();
      Build(std::move(next), work);
    }
  }

  std::vector<DepthPiece> Ordered() {
    std::vector<DepthPiece> ordered;
    ordered.reserve(count_);
    struct Step {
      std::size_t node;
      bool opened;
    };
    std::vector<Step> steps = {{0, false}};
    while (!steps.empty()) {
      const Step step = steps.back();
      steps.pop_back();
      Node& node = nodes_[step.node];
      if (step.opened) {
        std::ranges::move(node.flat, std::back_inserter(ordered));
        continue;
      }
      const double side = ViewerSide(node.plane);
      const std::size_t farther = side > 0 ? node.after : node.before, nearer = side > 0 ? node.before : node.after;
      if (nearer) steps.push_back({nearer, false});
      steps.push_back({step.node, true});
      if (farther) steps.push_back({farther, false});
    }
    return ordered;
  }

 private:
  static double SizeOf(const std::vector<DepthPiece>& pieces) {
    Extent extent;
    for (const DepthPiece& piece : pieces)
      for (const FRPosition& point : piece.points) extent.Add(point);
    return extent.Size();
  }

  // Above 0 if the viewer is on the side of the normal; near 0 if the viewer sees the plane from its edge.
  double ViewerSide(const Plane& plane) const {
    return camera_.perspective ? plane.Distance(camera_.eye) / size_ : plane.normal % camera_.axes.back;
  }

  // The place of the piece whose plane divides the others: any of them keeps the tree from growing one-sided.
  std::size_t Choose(const std::vector<DepthPiece>& pieces) {
    for (int attempt = 0; attempt < 8; ++attempt) {
      random_ = random_ * 6364136223846793005U + 1442695040888963407U;
      const std::size_t at = std::size_t(random_ >> 33) % pieces.size();
      if (PlaneOf(pieces[at]).normal.len() > 0) return at;
    }
    const auto flat = [](const DepthPiece& piece) { return PlaneOf(piece).normal.len() > 0; };
    return std::size_t(std::ranges::find_if(pieces, flat) - pieces.begin());
  }

  void Build(Work work, std::vector<Work>& more) {
    const std::size_t chosen = Choose(work.pieces);
    if (chosen == work.pieces.size()) {  // only lines
      nodes_[work.node].flat = std::move(work.pieces);
      return;
    }
    const Plane plane = PlaneOf(work.pieces[chosen]);
    const double side = ViewerSide(plane);
    std::vector<DepthPiece> flat, before, after;
    for (std::size_t i = 0; i < work.pieces.size(); ++i) {
      DepthPiece& piece = work.pieces[i];
      double low = 0, high = 0;
      for (const FRPosition& point : piece.points) {
        low = std::min(low, plane.Distance(point));
        high = std::max(high, plane.Distance(point));
      }
      if (i == chosen || (low >= -thickness_ && high <= thickness_)) {
        if (piece.points.size() > 2) {
          flat.push_back(std::move(piece));
          continue;
        }
        if (side > -kFlat) before.push_back(piece);
        if (side < kFlat) after.push_back(piece);
        if (std::abs(side) < kFlat) CountOne();
      } else if (low >= -thickness_) {
        before.push_back(std::move(piece));
      } else if (high <= thickness_) {
        after.push_back(std::move(piece));
      } else {
        before.push_back(Part(piece, plane, 1));
        after.push_back(Part(piece, plane, -1));
        CountOne();
      }
    }
    const auto child = [&](std::vector<DepthPiece>& pieces) -> std::size_t {
      if (pieces.empty()) return 0;
      nodes_.emplace_back();
      more.push_back({nodes_.size() - 1, std::move(pieces)});
      return nodes_.size() - 1;
    };
    const std::size_t first = child(before), second = child(after);
    nodes_[work.node] = {plane, std::move(flat), first, second};
  }

  void CountOne() {
    if (++count_ > kMostPieces)
      throw Failure("the picture has too many surfaces for an SVG file; write a PNG file instead");
  }

  const Camera& camera_;
  const double size_, thickness_;
  std::size_t count_;
  std::uint64_t random_ = 1;
  std::vector<Node> nodes_;
};

}  // namespace

std::vector<DepthPiece> DepthOrder(std::vector<DepthPiece> pieces, const Camera& camera) {
  std::erase_if(pieces, [](const DepthPiece& piece) {
    return piece.points.size() < 2 || !std::ranges::all_of(piece.points, Extent::IsInside);
  });
  if (pieces.size() > kMostPieces)
    throw Failure("the picture has too many surfaces for an SVG file; write a PNG file instead");
  if (pieces.empty()) return pieces;
  return DepthTree(std::move(pieces), camera).Ordered();
}

}  // namespace kestrova
