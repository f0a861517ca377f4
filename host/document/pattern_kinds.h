// The kinds of patterns of this host, as a module writes them: HostLinearPattern repeats a feature in a grid,
// HostCircularPattern about an axis, HostPolylinePattern along a polyline. HostPattern has what they share: the skipped
// instances, and the instances of invalid parameters, which are none.
//
// Lengths are in metres, angles in radians. A description's record is that of QFPatternInfo, then the fields of its
// class.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "host/document/node.h"
#include "share/patterns/pattern_info.h"

namespace kestrova {

// An instance that the user skips.
class HostInstToSkip : public QFPattInstToSkip {
  DECLARE_SERIAL(HostInstToSkip)

 public:
  explicit HostInstToSkip(DWORD instance = 0) : m_instance(instance) {}
  DWORD Instance() const { return m_instance; }

  // Schema 1: the number of the instance (DWORD).
  void Serialize(CArchive& ar) override;
  CString GetName() override;
  QFPattInstToSkip* Clone() override { return new HostInstToSkip(m_instance); }
  int CopyParameters(QFPattInstToSkip* source) override;

 private:
  DWORD m_instance;
};

class HostPattern : public QFPatternInfo {
  DECLARE_DYNAMIC(HostPattern)

 public:
  static constexpr LONGLONG kMostInstances = 10'000'000;
  enum Type : int { kLinear = 1, kCircular = 2, kPolyline = 3 };

  ~HostPattern() override;

  // Takes over changed parameters, and drops skipped instances that no longer exist: 1. 0 if the parameters are
  // invalid.
  int Rebuild() override;
  int CopyParameters(QFPatternInfo* source) override;
  LONGLONG GetNumPatternInstances() override { return m_count; }
  QFeObjectPatternInstanceStatus GetTransfForInst(LONGLONG instance, FRTransf& transform) override;
  QFeObjectPatternInstanceStatus GetInstanceStatus(LONGLONG instance) override;
  int SetInstanceStatus(int instance, QFeObjectPatternInstanceStatus status) override;
  unsigned GetIsPatterNotFullyDefined() override { return m_count == 0; }

  // Drops entries of the list to skip that are null, of another class, repeated or beyond the last instance. Returns
  // their number.
  int DropInvalidSkips();

  // "linear", "circular", "polyline"
  virtual const char* Kind() const = 0;
  // The parameters in a few words, in the document's units: "5 x 2, spacing 20mm and 10mm".
  virtual CString Facts() const = 0;
  virtual void ListFacts(NodeFacts& facts) const = 0;

 protected:
  HostPattern() { NoteInstancesChanged(); }
  // For Serialize of a class: the records of the levels; then, after loading, the call for new parameters.
  void SerializeLevels(CArchive& ar, const CRuntimeClass* level);
  void TakeParameters();
  // The number of instances; 0 for parameters that are invalid, which a damaged file can have.
  virtual LONGLONG Count() const = 0;
  // instance is from 0 to Count() - 1.
  virtual FRTransf TransformOf(LONGLONG instance) const = 0;
  // Copies the parameters of a pattern of the same class.
  virtual void CopyFields(const HostPattern& source) = 0;

 private:
  const std::unordered_map<DWORD, POSITION>& Skips();

  LONGLONG m_count = 0;
  // The entries of the list to skip by instance, as they were at that number of changes.
  std::unordered_map<DWORD, POSITION> m_skips;
  ULONGLONG m_skipsReadAt = 0;
};

// A row along one direction, or rows along a second one. Instance 0 is the feature itself, instance n is n % count
// along the first direction and n / count along the second.
class HostLinearPattern : public HostPattern {
  DECLARE_SERIAL(HostLinearPattern)

 public:
  struct Row {
    FRUnitVector direction = FRXAxis;
    double spacing = 0;
    DWORD count = 1;
  };
  HostLinearPattern() = default;
  HostLinearPattern(const Row& first, const Row& second) : m_rows{first, second} { TakeParameters(); }

  // Schema 1: direction (FRVector), spacing (double) and count (DWORD) of each of the two rows.
  void Serialize(CArchive& ar) override;
  QFPatternInfo* Clone() override;
  QFeObjectPatternType GetPatternType() override { return QFeObjectPatternType(kLinear); }
  const char* Kind() const override { return "linear"; }
  CString Facts() const override;
  void ListFacts(NodeFacts& facts) const override;

 protected:
  LONGLONG Count() const override;
  FRTransf TransformOf(LONGLONG instance) const override;
  void CopyFields(const HostPattern& source) override;

 private:
  Row m_rows[2];
};

// Turns about an axis. The angle is that between neighbours, or in total from the first to the last; a total of a full
// turn or more is divided by the count, so that the last instance is not at the place of the first.
class HostCircularPattern : public HostPattern {
  DECLARE_SERIAL(HostCircularPattern)

 public:
  struct Turn {
    FRPosition centre;
    FRUnitVector axis = FRZAxis;
    double angle = 0;
    bool total = false;
    DWORD count = 1;
  };
  HostCircularPattern() = default;
  explicit HostCircularPattern(const Turn& turn) : m_turn(turn) { TakeParameters(); }

  // Schema 1: centre (FRPosition), axis (FRVector), angle (double), total (DWORD, 0 or 1), count (DWORD).
  void Serialize(CArchive& ar) override;
  QFPatternInfo* Clone() override;
  QFeObjectPatternType GetPatternType() override { return QFeObjectPatternType(kCircular); }
  const char* Kind() const override { return "circular"; }
  CString Facts() const override;
  void ListFacts(NodeFacts& facts) const override;

 protected:
  LONGLONG Count() const override;
  FRTransf TransformOf(LONGLONG instance) const override;
  void CopyFields(const HostPattern& source) override;

 private:
  double Step() const;

  Turn m_turn;
};

// Moves along a polyline in equal steps, from its first point, where the feature is, to its last one. On a closed
// polyline, whose last point is its first, the last instance is one step before the end.
class HostPolylinePattern : public HostPattern {
  DECLARE_SERIAL(HostPolylinePattern)

 public:
  HostPolylinePattern() = default;
  HostPolylinePattern(std::vector<FRPosition> points, DWORD count);

  // Schema 1: count of points, x, y and z of each, count of instances (DWORD).
  void Serialize(CArchive& ar) override;
  QFPatternInfo* Clone() override;
  QFeObjectPatternType GetPatternType() override { return QFeObjectPatternType(kPolyline); }
  const char* Kind() const override { return "polyline"; }
  CString Facts() const override;
  void ListFacts(NodeFacts& facts) const override;

 protected:
  LONGLONG Count() const override;
  FRTransf TransformOf(LONGLONG instance) const override;
  void CopyFields(const HostPattern& source) override;

 private:
  void Measure();

  std::vector<FRPosition> m_points;
  std::vector<double> m_lengths;  // from the first point to each point
  DWORD m_instances = 1;
};

}  // namespace kestrova
