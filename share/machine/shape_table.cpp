#include "share/machine/shape_table.h"

namespace {

void DeleteEntries(CObList& list) {
  while (!list.IsEmpty()) delete list.RemoveHead();
}

}  // namespace

KVVMShapeInfo::~KVVMShapeInfo() = default;
KVVMShapeRef::~KVVMShapeRef() = default;
KVVMShapeRefMngr::~KVVMShapeRefMngr() = default;
KVVMShapeMngr::~KVVMShapeMngr() = default;

void KVVMShapeRef::AddShapeRef(CObList& list) {
  DeleteShapeIDArray();
  m_ids.reserve(std::size_t(list.GetCount()));
  while (!list.IsEmpty()) {
    const auto* info = static_cast<KVVMShapeInfo*>(list.RemoveHead());
    m_ids.push_back(info->m_nID);
    delete info;
  }
}

int KVVMShapeRef::GetShapeArray(int* out) const {
  if (out) std::copy(m_ids.begin(), m_ids.end(), out);
  return GetCount();
}

void KVVMShapeRef::DeleteShapeIDArray() { m_ids = {}; }

int KVVMShapeRefMngr::CreateTargetIDArray() {
  DeleteTargetIDArray();
  m_table = std::make_unique<Table>();
  return 1;
}

void KVVMShapeRefMngr::DeleteTargetIDArray() { m_table.reset(); }

int KVVMShapeRefMngr::AddShapeRef(CM_TARGET_TYPE target, int id, CObList& list) {
  if (list.IsEmpty()) return 0;
  if (target == CM_TARGET_NONE) return 1;
  KVVMShapeRef* const shapes = Find(target, id);
  if (!shapes) {
    DeleteEntries(list);
    return 0;
  }
  shapes->AddShapeRef(list);
  return 1;
}

const KVVMShapeRef* KVVMShapeRefMngr::Find(CM_TARGET_TYPE target, int id) const {
  return const_cast<KVVMShapeRefMngr*>(this)->Find(target, id);
}

KVVMShapeRef* KVVMShapeRefMngr::Find(CM_TARGET_TYPE target, int id) {
  if (!m_table || target < 0 || target >= kTargets || id < 0 || id >= kFixtures) return nullptr;
  return &(*m_table)[std::size_t(target)][std::size_t(id)];
}

int KVVMShapeMngr::CreateChannelAxisArray(int channels) {
  DeleteChannelAxisArray();
  m_nChannels = channels > 0 ? channels : 0;
  m_bTable = m_nChannels != 0;
  return m_bTable ? 1 : 0;
}

void KVVMShapeMngr::DeleteChannelAxisArray() {
  for (const int row : m_usedRows) m_rows[std::size_t(row)].reset();
  m_usedRows.clear();
  m_bTable = false;
}

int KVVMShapeMngr::AddShapeRef(int channel, CM_AXIS_TYPE axis, CM_TARGET_TYPE target, int id, CObList& list) {
  return AddToRow(RowOf(channel), axis, target, id, list);
}

int KVVMShapeMngr::AddShapeRef(int channel, CM_MOVE_TYPE move, CM_SHAPE_DIR_TYPE direction, CM_TARGET_TYPE target,
                               int id, CObList& list) {
  const bool known = direction >= CM_SHAPE_DIR_X && direction <= CM_SHAPE_DIR_Z;
  const int rotary = known ? int(direction) + int(CM_AXIS_A) : -1;
  return AddToRow(channel, move == CM_MOVE_ROTARY ? rotary : int(direction), target, id, list);
}

int KVVMShapeMngr::AddToRow(int row, int axis, CM_TARGET_TYPE target, int id, CObList& list) {
  if (list.IsEmpty()) return 0;
  KVVMShapeRefMngr* const cells = CellsOf(row, axis);
  if (!cells) {
    DeleteEntries(list);
    return 0;
  }
  return cells->AddShapeRef(target, id, list);
}

int KVVMShapeMngr::SetShapeIDs(int channel, CM_AXIS_TYPE axis, CM_TARGET_TYPE target, int id, std::vector<int> ids) {
  KVVMShapeRefMngr* const cells = ids.empty() ? nullptr : CellsOf(RowOf(channel), axis);
  KVVMShapeRef* const shapes = cells ? cells->Find(target, id) : nullptr;
  if (!shapes) return 0;
  shapes->SetShapeIDs(std::move(ids));
  return 1;
}

KVVMShapeRefMngr* KVVMShapeMngr::CellsOf(int row, int axis) {
  if (!m_bTable || row < 0 || row >= m_nChannels || axis < 0 || axis >= kMachineAxes) return nullptr;
  if (std::size_t(row) >= m_rows.size()) m_rows.resize(std::size_t(row) + 1);
  std::unique_ptr<Row>& stored = m_rows[std::size_t(row)];
  if (!stored) {
    m_usedRows.push_back(row);  // first, so that the deletion finds the row even if this raises
    stored = std::make_unique<Row>();
  }
  std::unique_ptr<KVVMShapeRefMngr>& cells = (*stored)[std::size_t(axis)];
  if (!cells) cells = std::make_unique<KVVMShapeRefMngr>();
  return cells.get();
}

const KVVMShapeRef* KVVMShapeMngr::Find(int row, CM_AXIS_TYPE axis, CM_TARGET_TYPE target, int id) const {
  if (!m_bTable) return nullptr;
  if (m_nChannels == 1) row = 0;
  if (row < 0 || row >= m_nChannels || axis < 0 || axis >= kMachineAxes) return nullptr;
  if (std::size_t(row) >= m_rows.size() || !m_rows[std::size_t(row)]) return nullptr;
  const KVVMShapeRefMngr* cells = (*m_rows[std::size_t(row)])[std::size_t(axis)].get();
  return cells ? cells->Find(target, id) : nullptr;
}

const KVVMShapeRef* KVVMShapeMngr::FindToolShapes(int channel, CM_AXIS_TYPE axis) const {
  return Find(channel, axis, CM_TARGET_TOOL, 0);
}

const KVVMShapeRef* KVVMShapeMngr::FindFixtureShapes(int channel, CM_AXIS_TYPE axis, int fixture, int zeroBased) const {
  if (fixture < 0 || fixture >= KVVMShapeRefMngr::kFixtures) return nullptr;
  return Find(channel, axis, CM_TARGET_FIXTURE, zeroBased ? fixture : fixture - 1);
}

int KVVMShapeMngr::GetToolShapeArray(int channel, CM_AXIS_TYPE axis, int* out) const {
  const KVVMShapeRef* shapes = FindToolShapes(channel, axis);
  return shapes ? shapes->GetShapeArray(out) : 0;
}

int KVVMShapeMngr::GetFixtureShapeArray(int channel, CM_AXIS_TYPE axis, int fixture, int* out, int zeroBased) const {
  const KVVMShapeRef* shapes = FindFixtureShapes(channel, axis, fixture, zeroBased);
  return shapes ? shapes->GetShapeArray(out) : 0;
}
