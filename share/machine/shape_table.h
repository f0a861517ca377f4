// The shape table: the IDs of the shapes that move with the tool or a fixture of a channel along an axis. It has three
// levels: channel, axis, then target and fixture index. Each cell is an array of IDs.
//
//   KVVMShapeMngr          channel 0 to count-1, axis 0 to 5
//     KVVMShapeRefMngr     target 0 to 2, fixture index 0 to 2
//       KVVMShapeRef       the IDs
//
// Example: in a table of two rows, AddShapeRef(2, CM_AXIS_Z, CM_TARGET_TOOL, 0, list) writes row 1, and
// GetToolShapeArray(1, CM_AXIS_Z, ids) reads it. Indices outside the table store nothing and read nothing. Fill the
// table on one thread; then any thread may read it. There is no lock.
#pragma once

#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "framework/ob_list.h"
#include "framework/object.h"
#include "framework/text.h"
#include "share/machine/machine_types.h"

// One ID in a list for AddShapeRef.
class KVSHARE_API KVVMShapeInfo : public CObject {
 public:
  KVVMShapeInfo() = default;
  explicit KVVMShapeInfo(int id) : m_nID(id) {}
  ~KVVMShapeInfo() override;

  int m_nID = 0;
  CString m_strName;  // not used
};

// One cell: an array of IDs.
class KVSHARE_API KVVMShapeRef : public CObject {
 public:
  KVVMShapeRef() = default;
  ~KVVMShapeRef() override;

  // Replaces the IDs by those of the list, in order. Deletes the KVVMShapeInfo of the list and empties it.
  void AddShapeRef(CObList& list);
  // Replaces the IDs. Needs no object for each ID, unlike AddShapeRef.
  void SetShapeIDs(std::vector<int> ids) { m_ids = std::move(ids); }
  // Copies the IDs to out, which has room for GetCount() IDs, and returns the count. With null it only returns the
  // count.
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

  // Creates an empty table; deletes the former one. Returns 1.
  int CreateTargetIDArray();
  void DeleteTargetIDArray();
  // Replaces the IDs of a cell by those of the list, as KVVMShapeRef::AddShapeRef, and returns 1. id is the fixture
  // index from 0. An empty list changes nothing and returns 0. CM_TARGET_NONE changes neither cell nor list and
  // returns 1. For a target or id outside the table it deletes the entries of the list and returns 0.
  int AddShapeRef(CM_TARGET_TYPE target, int id, CObList& list);
  // The cell, owned by the table; null for a target or id outside the table.
  const KVVMShapeRef* Find(CM_TARGET_TYPE target, int id) const;
  KVVMShapeRef* Find(CM_TARGET_TYPE target, int id);

 private:
  using Table = std::array<std::array<KVVMShapeRef, kFixtures>, kTargets>;
  std::unique_ptr<Table> m_table;
};

// The table of a machine.
class KVSHARE_API KVVMShapeMngr : public CObject {
 public:
  KVVMShapeMngr() = default;
  ~KVVMShapeMngr() override;

  // Deletes the table and creates one with that many empty rows; returns 1. With 0 or less there is no table, and it
  // returns 0. A row uses memory only after its first list.
  int CreateChannelAxisArray(int channels);
  // Deletes the table. GetChannelCount is unchanged.
  void DeleteChannelAxisArray();
  int GetChannelCount() const { return m_nChannels; }

  // Replaces the IDs of a cell by those of the list and returns 1, as KVVMShapeRefMngr::AddShapeRef. Rows count from 0,
  // but a channel equal to the count also means the last row: in a table of two rows, channels 1 and 2 share a row.
  // This is kept for existing definitions. For a channel below 0 or above the count, an unknown axis, or without a
  // table, it deletes the entries of the list and returns 0.
  int AddShapeRef(int channel, CM_AXIS_TYPE axis, CM_TARGET_TYPE target, int id, CObList& list);
  // The same with the axis given by move and direction. Here a channel equal to the count is outside the table.
  int AddShapeRef(int channel, CM_MOVE_TYPE move, CM_SHAPE_DIR_TYPE direction, CM_TARGET_TYPE target, int id,
                  CObList& list);
  // The first form with the IDs in an array: an empty one, or indices outside the table, change nothing and return 0.
  int SetShapeIDs(int channel, CM_AXIS_TYPE axis, CM_TARGET_TYPE target, int id, std::vector<int> ids);

  // Copy the IDs of a cell to out, which has room for them, and return the count; 0 for indices outside the table. With
  // a null out they only return the count. In a table of one row the channel is ignored.
  int GetToolShapeArray(int channel, CM_AXIS_TYPE axis, int* out) const;
  // With zeroBased 0 the fixture counts from 1, otherwise from 0. Fixture 3 gives 0 IDs in both cases, so the last row
  // of fixtures cannot be read with zeroBased 0; kept for existing modules.
  int GetFixtureShapeArray(int channel, CM_AXIS_TYPE axis, int fixture, int* out, int zeroBased) const;
  // The same cells without a copy, owned by the table and valid until it changes; null for indices outside the table.
  const KVVMShapeRef* FindToolShapes(int channel, CM_AXIS_TYPE axis) const;
  const KVVMShapeRef* FindFixtureShapes(int channel, CM_AXIS_TYPE axis, int fixture, int zeroBased) const;

 private:
  using Row = std::array<std::unique_ptr<KVVMShapeRefMngr>, kMachineAxes>;  // null for an unused axis

  // The row of the first form of AddShapeRef.
  int RowOf(int channel) const { return channel == m_nChannels ? m_nChannels - 1 : channel; }
  // The cells of a row and axis, which it creates if the row has none; null for indices outside the table.
  KVVMShapeRefMngr* CellsOf(int row, int axis);
  int AddToRow(int row, int axis, CM_TARGET_TYPE target, int id, CObList& list);
  const KVVMShapeRef* Find(int row, CM_AXIS_TYPE axis, CM_TARGET_TYPE target, int id) const;

  int m_nChannels = 0;
  bool m_bTable = false;
  std::vector<std::unique_ptr<Row>> m_rows;  // up to the highest used row; null for an unused row
  std::vector<int> m_usedRows;               // makes the deletion of the table fast
};
