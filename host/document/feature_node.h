// HostFeature, a shape to be machined: a profile in the plane of its setup, and a depth below it.
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

  // The corners of the profile in order; closed if there are three or more. A hole has its centre alone.
  std::span<const Point> Profile() const { return {m_points.get(), m_points.get_deleter().count}; }
  void SetProfile(std::span<const Point> points);
  double Depth() const { return m_depth; }
  void SetDepth(double depth) { m_depth = depth; }

  // Schema 1: count of points, x and y of each, depth; doubles.
  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;
  // Beyond a complete match: PROFILE_NODEPTH_MATCH for the same profile at another depth, PARTIAL_MATCH_SUBSET if all
  // points of the other are points of this one, PARTIAL_PROFILE_MATCH if at least half of them are.
  COMPARE_RESULT Compare(QFObject* other) override;
  int CopyParameters(QFObject* source) override;
  QFObject* Clone() override;
  // A feature can be repeated; a pattern starts from its first point. 0 for a feature without any.
  int GetIsPatternSupported() override { return 1; }
  int GetRefPointForPattern(FRPosition& position) override;
  int IsRebuildReqOnStockChange() override { return 1; }
  CString Facts() const override;

 protected:
  bool IsLike(const HostNode& other) const override;

 private:
  struct GiveBack {
    void operator()(Point* points) const noexcept { BlockPool::Free(points, count * sizeof(Point)); }
    std::size_t count;  // 0 as long as there are none
  };
  using Points = std::unique_ptr<Point[], GiveBack>;
  // Not set yet; null for none.
  static Points NewPoints(std::size_t count);

  Points m_points;
  double m_depth = 0;
};

}  // namespace kestrova
