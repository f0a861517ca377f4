#include "host/document/pattern_kinds.h"

#include <algorithm>
#include <cmath>

#include "framework/archive.h"
#include "share/objects/geometry_archive.h"
#include "share/utilities/units.h"

namespace kestrova {

IMPLEMENT_SERIAL(HostInstToSkip, QFPattInstToSkip, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_DYNAMIC(HostPattern, QFPatternInfo)
IMPLEMENT_SERIAL(HostLinearPattern, HostPattern, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(HostCircularPattern, HostPattern, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(HostPolylinePattern, HostPattern, VERSIONABLE_SCHEMA | 1)

namespace {

constexpr double kLongest = 1e6;  // metres: farther instances are a fault

bool IsLength(double metres) { return std::abs(metres) <= kLongest; }  // false for NaN
bool IsPlace(const FRPosition& at) { return IsLength(at.x()) && IsLength(at.y()) && IsLength(at.z()); }
bool IsDirection(const FRUnitVector& direction) { return std::abs(direction.len() - 1) <= RESNOR; }

}  // namespace

// ---- a skipped instance

void HostInstToSkip::Serialize(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(HostInstToSkip));
  ar.GetObjectSchema();  // not used; reading it ends the record
  QFPattInstToSkip::Serialize(ar);
  if (ar.IsStoring()) {
    ar << m_instance;
  } else {
    ar >> m_instance;
  }
}

CString HostInstToSkip::GetName() {
  CString text;
  text.Format(_T("instance %u"), m_instance);
  return text;
}

int HostInstToSkip::CopyParameters(QFPattInstToSkip* source) {
  const auto* other = DYNAMIC_DOWNCAST(HostInstToSkip, source);
  if (!other) return 0;
  m_instance = other->m_instance;
  return 1;
}

// ---- all kinds

HostPattern::~HostPattern() { DeleteAllInstancesToSkip(); }

void HostPattern::SerializeLevels(CArchive& ar, const CRuntimeClass* level) {
  ar.SerializeClass(level);
  ar.GetObjectSchema();  // not used; reading it ends the record
  QFPatternInfo::Serialize(ar);
}

void HostPattern::TakeParameters() {
  const LONGLONG count = Count();
  m_count = count > kMostInstances ? 0 : count;
  NoteInstancesChanged();
}

int HostPattern::Rebuild() {
  TakeParameters();
  DropInvalidSkips();
  return m_count > 0;
}

int HostPattern::CopyParameters(QFPatternInfo* source) {
  const auto* pattern = DYNAMIC_DOWNCAST(HostPattern, source);
  if (pattern && pattern != this && pattern->GetRuntimeClass() == GetRuntimeClass()) {
    CopyFields(*pattern);
    TakeParameters();
  }
  return QFPatternInfo::CopyParameters(source);
}

QFeObjectPatternInstanceStatus HostPattern::GetTransfForInst(LONGLONG instance, FRTransf& transform) {
  const QFeObjectPatternInstanceStatus status = GetInstanceStatus(instance);
  if (status != ePatternInstanceNone) transform = TransformOf(instance);
  return status;
}

const std::unordered_map<DWORD, POSITION>& HostPattern::Skips() {
  if (m_skipsReadAt == GetInstanceChanges()) return m_skips;
  m_skips.clear();
  for (POSITION at = m_InstToSkipList.GetHeadPosition(); at;) {
    const POSITION place = at;
    if (const auto* entry = DYNAMIC_DOWNCAST(HostInstToSkip, m_InstToSkipList.GetNext(at)))
      m_skips.emplace(entry->Instance(), place);
  }
  m_skipsReadAt = GetInstanceChanges();
  return m_skips;
}

QFeObjectPatternInstanceStatus HostPattern::GetInstanceStatus(LONGLONG instance) {
  if (instance < 0 || instance >= m_count) return ePatternInstanceNone;
  return Skips().contains(DWORD(instance)) ? ePatternInstanceNotActive : ePatternInstanceActive;
}

int HostPattern::SetInstanceStatus(int instance, QFeObjectPatternInstanceStatus status) {
  const QFeObjectPatternInstanceStatus present = GetInstanceStatus(instance);
  if (present == ePatternInstanceNone || status == ePatternInstanceNone) return 0;
  if (present == status) return 1;
  if (status == ePatternInstanceNotActive) {
    auto entry = std::make_unique<HostInstToSkip>(DWORD(instance));
    const POSITION at = m_InstToSkipList.AddTail(entry.get());
    static_cast<void>(entry.release());
    NoteInstancesChanged();
    m_skips.emplace(DWORD(instance), at);
  } else {
    const auto skip = m_skips.find(DWORD(instance));
    delete m_InstToSkipList.GetAt(skip->second);
    m_InstToSkipList.RemoveAt(skip->second);
    NoteInstancesChanged();
    m_skips.erase(skip);
  }
  m_skipsReadAt = GetInstanceChanges();  // m_skips has this change
  return 1;
}

int HostPattern::DropInvalidSkips() {
  const auto& skips = Skips();
  int dropped = 0;
  for (POSITION at = m_InstToSkipList.GetHeadPosition(); at;) {
    const POSITION place = at;
    CObject* const object = m_InstToSkipList.GetNext(at);
    const auto* entry = DYNAMIC_DOWNCAST(HostInstToSkip, object);
    if (entry && LONGLONG(entry->Instance()) < m_count && skips.at(entry->Instance()) == place) continue;
    m_InstToSkipList.RemoveAt(place);
    delete object;
    ++dropped;
  }
  if (dropped > 0) NoteInstancesChanged();
  return dropped;
}

// ---- linear

void HostLinearPattern::Serialize(CArchive& ar) {
  SerializeLevels(ar, RUNTIME_CLASS(HostLinearPattern));
  for (Row& row : m_rows) {
    if (ar.IsStoring()) {
      ar << static_cast<const FRVector&>(row.direction) << row.spacing << row.count;
    } else {
      ar >> row.direction >> row.spacing >> row.count;
    }
  }
  if (ar.IsLoading()) TakeParameters();
}

LONGLONG HostLinearPattern::Count() const {
  LONGLONG count = 1;
  for (const Row& row : m_rows) {
    if (!IsDirection(row.direction) || !IsLength(row.spacing * row.count)) return 0;
    count *= row.count;  // two DWORDs: no overflow
  }
  return count;
}

FRTransf HostLinearPattern::TransformOf(LONGLONG instance) const {
  const LONGLONG column = instance % m_rows[0].count, row = instance / m_rows[0].count;
  const double steps[] = {double(column) * m_rows[0].spacing, double(row) * m_rows[1].spacing};
  const FRUnitVector &a = m_rows[0].direction, &b = m_rows[1].direction;
  return GetTranslateTransf(
      {a.x() * steps[0] + b.x() * steps[1], a.y() * steps[0] + b.y() * steps[1], a.z() * steps[0] + b.z() * steps[1]});
}

void HostLinearPattern::CopyFields(const HostPattern& source) {
  const auto& rows = static_cast<const HostLinearPattern&>(source).m_rows;
  std::copy(std::begin(rows), std::end(rows), std::begin(m_rows));
}

QFPatternInfo* HostLinearPattern::Clone() {
  auto copy = std::make_unique<HostLinearPattern>();
  copy->CopyParameters(this);
  return copy.release();
}

CString HostLinearPattern::Facts() const {
  CString text;
  text.Format(_T("%u x %u, spacing %s"), m_rows[0].count, m_rows[1].count, ConvertLengthToUserUnits(m_rows[0].spacing));
  if (m_rows[1].count > 1) text.AppendFormat(_T(" and %s"), ConvertLengthToUserUnits(m_rows[1].spacing));
  return text;
}

void HostLinearPattern::ListFacts(NodeFacts& facts) const {
  facts.Direction("direction", m_rows[0].direction);
  facts.Length("spacing", m_rows[0].spacing);
  facts.Number("count", m_rows[0].count);
  facts.Direction("direction2", m_rows[1].direction);
  facts.Length("spacing2", m_rows[1].spacing);
  facts.Number("count2", m_rows[1].count);
}

// ---- circular

void HostCircularPattern::Serialize(CArchive& ar) {
  SerializeLevels(ar, RUNTIME_CLASS(HostCircularPattern));
  if (ar.IsStoring()) {
    ar << m_turn.centre << static_cast<const FRVector&>(m_turn.axis) << m_turn.angle << DWORD(m_turn.total)
       << m_turn.count;
    return;
  }
  DWORD total = 0;
  ar >> m_turn.centre >> m_turn.axis >> m_turn.angle >> total >> m_turn.count;
  m_turn.total = total != 0;
  TakeParameters();
}

LONGLONG HostCircularPattern::Count() const {
  constexpr double kMostTurns = 1e6;
  if (!IsPlace(m_turn.centre) || !IsDirection(m_turn.axis)) return 0;
  return std::abs(Step() * m_turn.count) <= kMostTurns * 2 * PI ? m_turn.count : 0;
}

double HostCircularPattern::Step() const {
  if (!m_turn.total || m_turn.count < 2) return m_turn.angle;
  const bool full = std::abs(m_turn.angle) >= 2 * PI - RESNOR;
  return m_turn.angle / (full ? m_turn.count : m_turn.count - 1);
}

FRTransf HostCircularPattern::TransformOf(LONGLONG instance) const {
  const FRVector centre = m_turn.centre - FRPosition();
  return GetTranslateTransf(-centre) * GetRotateTransf(Step() * double(instance), m_turn.axis) *
         GetTranslateTransf(centre);
}

void HostCircularPattern::CopyFields(const HostPattern& source) {
  m_turn = static_cast<const HostCircularPattern&>(source).m_turn;
}

QFPatternInfo* HostCircularPattern::Clone() {
  auto copy = std::make_unique<HostCircularPattern>();
  copy->CopyParameters(this);
  return copy.release();
}

CString HostCircularPattern::Facts() const {
  CString text;
  text.Format(m_turn.total ? _T("%u in a total of %g degrees") : _T("%u, %g degrees each"), m_turn.count,
              m_turn.angle * RADIAN_TO_DEGREE);
  return text;
}

void HostCircularPattern::ListFacts(NodeFacts& facts) const {
  facts.Place("centre", m_turn.centre);
  facts.Direction("axis", m_turn.axis);
  facts.Angle("angle", m_turn.angle);
  facts.Switch("total", m_turn.total);
  facts.Number("count", m_turn.count);
}

// ---- along a polyline

HostPolylinePattern::HostPolylinePattern(std::vector<FRPosition> points, DWORD count)
    : m_points(std::move(points)), m_instances(count) {
  Measure();
  TakeParameters();
}

void HostPolylinePattern::Serialize(CArchive& ar) {
  constexpr ULONGLONG kPointBytes = 3 * sizeof(double);
  SerializeLevels(ar, RUNTIME_CLASS(HostPolylinePattern));
  if (ar.IsStoring()) {
    ar.WriteCount(m_points.size());
    for (const FRPosition& point : m_points) ar << point;
    ar << m_instances;
    return;
  }
  m_points.resize(std::size_t(ar.ReadCount(kPointBytes)));  // bounded by the bytes left in the file
  for (FRPosition& point : m_points) ar >> point;
  ar >> m_instances;
  Measure();
  TakeParameters();
}

void HostPolylinePattern::Measure() {
  m_lengths.assign(m_points.empty() ? 0 : 1, 0);
  for (std::size_t i = 1; i < m_points.size(); ++i)
    m_lengths.push_back(m_lengths.back() + m_points[i].distance(m_points[i - 1]));
}

LONGLONG HostPolylinePattern::Count() const {
  const bool valid = m_points.size() > 1 && std::all_of(m_points.begin(), m_points.end(), IsPlace) &&
                     m_lengths.back() > RESABS && IsLength(m_lengths.back());
  return valid ? m_instances : 0;
}

FRTransf HostPolylinePattern::TransformOf(LONGLONG instance) const {
  const bool closed = m_points.front() == m_points.back();
  const double steps = closed ? m_instances : std::max(m_instances, DWORD(2)) - 1;
  const double length = m_lengths.back() * double(instance) / steps;
  const auto after = std::upper_bound(m_lengths.begin() + 1, m_lengths.end() - 1, length) - m_lengths.begin();
  const FRPosition &from = m_points[std::size_t(after - 1)], &to = m_points[std::size_t(after)];
  const double start = m_lengths[std::size_t(after - 1)], edge = m_lengths[std::size_t(after)] - start;
  const double part = edge > 0 ? (length - start) / edge : 0;
  const FRVector along = to - from, offset = from - m_points.front();
  return GetTranslateTransf(
      {offset.x() + part * along.x(), offset.y() + part * along.y(), offset.z() + part * along.z()});
}

void HostPolylinePattern::CopyFields(const HostPattern& source) {
  const auto& other = static_cast<const HostPolylinePattern&>(source);
  m_points = other.m_points;
  m_lengths = other.m_lengths;
  m_instances = other.m_instances;
}

QFPatternInfo* HostPolylinePattern::Clone() {
  auto copy = std::make_unique<HostPolylinePattern>();
  copy->CopyParameters(this);
  return copy.release();
}

CString HostPolylinePattern::Facts() const {
  CString text;
  text.Format(_T("%u along %u points, length %s"), m_instances, DWORD(m_points.size()),
              ConvertLengthToUserUnits(m_lengths.empty() ? 0 : m_lengths.back()));
  return text;
}

void HostPolylinePattern::ListFacts(NodeFacts& facts) const {
  facts.Number("points", double(m_points.size()));
  facts.Length("length", m_lengths.empty() ? 0 : m_lengths.back());
  facts.Number("count", m_instances);
}

}  // namespace kestrova
