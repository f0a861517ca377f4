// HostFeature, a shape to machine: a profile in the plane of its setup, and a depth below it.
#pragma once

#include <span>

#include "framework/block_pool.h"
#include "host/document/node.h"

namespace kestrova {

class HostFeature : public HostNode {
  DECLARE_SERIAL(HostFeature)

 public:
  struct Point {
    double x = 0;
    double y = 0;
  };

  HostFeature() = default;

  // The corners of the profile in order; three or more form a closed profile. A hole has only its centre.
  std::span<const Point> Profile() const { return {m_points.get(), m_points.get_deleter().count}; }
  void SetProfile(std::span<const Point> points);
  double Depth() const { return m_depth; }
  void SetDepth(double depth) { m_depth = depth; }

  // Schema 1: count of points, x and y of each, depth (doubles).
  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;
  // Also PROFILE_NODEPTH_MATCH for the same profile with another depth, PARTIAL_MATCH_SUBSET if this feature has all
  // points of the other one, PARTIAL_PROFILE_MATCH if it has at least half of them.
  COMPARE_RESULT Compare(QFObject* other) override;
  int CopyParameters(QFObject* source) override;
  QFObject* Clone() override;
  // Patterns can repeat a feature, from its first point; GetRefPointForPattern returns 0 if it has no points.
  int GetIsPatternSupported() override { return 1; }
  int GetRefPointForPattern(FRPosition& position) override;
  int IsRebuildReqOnStockChange() override { return 1; }
  CString Facts() const override;
  void ListFacts(NodeFacts& facts) const override;

 protected:
  bool IsLike(const HostNode& other) const override;

 private:
  struct ReturnToPool {
    void operator()(Point* points) const noexcept { BlockPool::Free(points, count * sizeof(Point)); }
    std::size_t count;  // 0 without points
  };
  using Points = std::unique_ptr<Point[], ReturnToPool>;
  // Uninitialised points; null for a count of 0.
  static Points NewPoints(std::size_t count);

  Points m_points;
  double m_depth = 0;
};

}  // namespace kestrova
