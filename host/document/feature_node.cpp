#include "host/document/feature_node.h"

#include <algorithm>
#include <memory>

#include "companions/geometry/vectors.h"
#include "framework/archive.h"
#include "share/core/dump.h"
#include "share/utilities/units.h"

namespace kestrova {

IMPLEMENT_SERIAL(HostFeature, HostNode, VERSIONABLE_SCHEMA | 1)

namespace {

using Point = HostFeature::Point;

static_assert(sizeof(Point) == 16, "the record has the points as in memory");

bool SamePoint(const Point& a, const Point& b) { return SameLength(a.x, b.x) && SameLength(a.y, b.y); }

}  // namespace

// From the block pool: a document has many small profiles.
HostFeature::Points HostFeature::NewPoints(std::size_t count) {
  if (count == 0) return {};
  return Points(static_cast<Point*>(BlockPool::Allocate(count * sizeof(Point))), {count});
}

void HostFeature::SetProfile(std::span<const Point> points) {
  Points fresh = NewPoints(points.size());
  std::uninitialized_copy(points.begin(), points.end(), fresh.get());
  m_points = std::move(fresh);
}

void HostFeature::Serialize(CArchive& ar) {
  BeginLevel(ar, RUNTIME_CLASS(HostFeature));
  HostNode::Serialize(ar);
  if (ar.IsStoring()) {
    ar.WriteCount(Profile().size());
    ar.Write(m_points.get(), Profile().size_bytes());
    ar << m_depth;
  } else {
    m_points = NewPoints(std::size_t(ar.ReadCount(sizeof(Point))));  // bounded by the bytes left in the file
    ar.EnsureRead(m_points.get(), Profile().size_bytes());
    ar >> m_depth;
  }
}

COMPARE_RESULT HostFeature::Compare(QFObject* other) {
  const auto* feature = DYNAMIC_DOWNCAST(HostFeature, other);
  if (!feature) return NO_MATCH;
  const auto mine = Profile();
  const auto theirs = feature->Profile();
  if (std::equal(mine.begin(), mine.end(), theirs.begin(), theirs.end(), SamePoint))
    return SameLength(m_depth, feature->m_depth) ? COMPLETE_MATCH : PROFILE_NODEPTH_MATCH;
  const auto shared = std::size_t(std::count_if(theirs.begin(), theirs.end(), [&](const Point& point) {
    return std::any_of(mine.begin(), mine.end(), [&](const Point& own) { return SamePoint(own, point); });
  }));
  if (shared == 0) return NO_MATCH;
  if (shared == theirs.size()) return PARTIAL_MATCH_SUBSET;
  return shared * 2 >= theirs.size() ? PARTIAL_PROFILE_MATCH : NO_MATCH;
}

// Not called: this class overrides Compare.
bool HostFeature::IsLike(const HostNode&) const { return false; }

int HostFeature::CopyParameters(QFObject* source) {
  if (const auto* feature = DYNAMIC_DOWNCAST(HostFeature, source); feature && feature != this) {
    SetProfile(feature->Profile());
    m_depth = feature->m_depth;
  }
  return HostNode::CopyParameters(source);
}

QFObject* HostFeature::Clone() { return CloneInto(std::make_unique<HostFeature>()); }

int HostFeature::GetRefPointForPattern(FRPosition& position) {
  if (!m_points) return 0;
  position = FRPosition(m_points[0].x, m_points[0].y, 0);
  return 1;
}

CString HostFeature::Facts() const {
  CString text;
  const auto count = DWORD(Profile().size());
  text.Format(count == 1 ? _T("%d point, depth %s") : _T("%d points, depth %s"), count,
              ConvertLengthToUserUnits(m_depth));
  return text;
}

void HostFeature::ListFacts(NodeFacts& facts) const {
  facts.Number("points", double(Profile().size()));
  facts.Length("depth", m_depth);
}

void HostFeature::DumpData(FILE* file) {
  if (!file) return;
  HostNode::DumpData(file);
  DumpBanner(file, _T("HostFeature"), _T("Start"));
  DumpPrint(file, _T("\n Total Points: %d"), DWORD(Profile().size()));
  for (const Point& point : Profile()) DumpPrint(file, _T("\n Point: %g %g"), point.x, point.y);
  DumpPrint(file, _T("\n m_depth: %g"), m_depth);
  DumpBanner(file, _T("HostFeature"), _T("End"));
}

}  // namespace kestrova
