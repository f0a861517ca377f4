// The shape table: which shapes, by ID, the tool or a fixture of a channel carries along an axis. Three levels,
// channel, then axis, then target and fixture index, end in a plain array of IDs.
//
//   KVVMShapeMngr          channel 0 to count-1, axis 0 to 5
//     KVVMShapeRefMngr     target 0 to 2, fixture index 0 to 2
//       KVVMShapeRef       the IDs
//
// A worked example: in a table of two rows, AddShapeRef(2, CM_AXIS_Z, CM_TARGET_TOOL, 0, list) reaches row 1, and
// GetToolShapeArray(1, CM_AXIS_Z, ids) reads it back. Indices outside the table store nothing and read nothing. No
// class here has a lock: fill from one thread, then read from any.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "framework/ob_list.h"
#include "framework/object.h"
#include "framework/text.h"
#include "share/machine/machine_types.h"

// Carries one ID on its way into the table.
class KVSHARE_API KVVMShapeInfo : public CObject {
 public:
  KVVMShapeInfo() = default;
  explicit KVVMShapeInfo(int id) : m_nID(id) {}
  ~KVVMShapeInfo() override;

  int m_nID = 0;
  CString m_strName;  // not used here
};

// One set of IDs.
class KVSHARE_API KVVMShapeRef : public CObject {
 public:
  KVVMShapeRef() = default;
  ~KVVMShapeRef() override;

  // Replaces the IDs by those of the list, in order. The list's KVVMShapeInfo are deleted and it is left empty.
  void AddShapeRef(CObList& list);
  // Copies the IDs to out, which the caller has sized for GetCount() of them; gives the count. Null only asks for it.
  int GetShapeArray(int* out) const;
  int GetCount() const { return int(m_ids.size()); }
  const int* GetIDs() const { return m_ids.data(); }

 protected:
  void DeleteShapeIDArray();

 private:
  std::vector<int> m_ids;
};

// The targets of one axis of one channel.
class KVSHARE_API KVVMShapeRefMngr : public CObject {
 public:
  static constexpr int kTargets = 3;
  static constexpr int kFixtures = 3;

  KVVMShapeRefMngr() { CreateTargetIDArray(); }
  ~KVVMShapeRefMngr() override;

  // Builds an empty table, dropping one that exists. Always 1.
  int CreateTargetIDArray();
  void DeleteTargetIDArray();
  // 0 for an empty list, which changes nothing. CM_TARGET_NONE gives 1 and leaves the list alone. Any other target
  // hands the list to its set, replacing what stood there, and gives 1; for a target or id outside the table the
  // entries are deleted and the result is 0.
  int AddShapeRef(CM_TARGET_TYPE target, int id, CObList& list);
  // The set, owned by the table; null outside it.
  const KVVMShapeRef* Find(CM_TARGET_TYPE target, int id) const;

 private:
  using Table = std::array<std::array<KVVMShapeRef, kFixtures>, kTargets>;
  std::unique_ptr<Table> m_table;
};

// The table of a machine.
class KVSHARE_API KVVMShapeMngr : public CObject {
 public:
  KVVMShapeMngr() = default;
  ~KVVMShapeMngr() override;

  // Drops the table and builds one of that many empty rows: 1; for 0 or less there is no table then: 0. A row takes
  // memory from the first list that reaches it.
  int CreateChannelAxisArray(int channels);
  // Drops the table; the stored count stays.
  void DeleteChannelAxisArray();
  int GetChannelCount() const { return m_nChannels; }

  // 0 for an empty list. A channel equal to the count means the last row, so that in a table of two rows the channels 1
  // and 2 share a row, which is required; a channel above the count, or below 0, loses its list and gives 0. Otherwise
  // 1, and the list replaces what the slot held. The list's entries are taken over but for CM_TARGET_NONE.
  int AddShapeRef(int channel, CM_AXIS_TYPE axis, CM_TARGET_TYPE target, int id, CObList& list);
  // The same with the axis named by move and direction. A channel equal to the count has no row here: it gives 0.
  int AddShapeRef(int channel, CM_MOVE_TYPE move, CM_SHAPE_DIR_TYPE direction, CM_TARGET_TYPE target, int id,
                  CObList& list);

  // Copy the IDs to out, which the caller has sized for them (null only asks), and give the count; 0 if there is no
  // such set. In a table of one row the channel is ignored.
  int GetToolShapeArray(int channel, CM_AXIS_TYPE axis, int* out) const;
  // With zeroBased 0 the fixture counts from 1. A fixture of 3 or more is refused before that, so that number 3 gives 0
  // in both ways of counting: required.
  int GetFixtureShapeArray(int channel, CM_AXIS_TYPE axis, int fixture, int* out, int zeroBased) const;
  // The sets behind the two, owned by the table until it next changes; null where they give 0.
  const KVVMShapeRef* FindToolShapes(int channel, CM_AXIS_TYPE axis) const;
  const KVVMShapeRef* FindFixtureShapes(int channel, CM_AXIS_TYPE axis, int fixture, int zeroBased) const;

 private:
  using Row = std::array<KVVMShapeRefMngr, kMachineAxes>;

  int AddToRow(int row, int axis, CM_TARGET_TYPE target, int id, CObList& list);
  const KVVMShapeRef* Find(int row, CM_AXIS_TYPE axis, CM_TARGET_TYPE target, int id) const;

  int m_nChannels = 0;
  bool m_bTable = false;
  std::vector<std::unique_ptr<Row>> m_rows;  // as long as the highest row used; null for a row not used
  std::vector<int> m_usedRows;               // so that dropping a table costs what was in it
};
