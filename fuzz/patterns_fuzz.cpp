// Loads any bytes as a node with a pattern: managers, descriptions, skipped instances and orders, which use one another
// in any way. A failed load must throw CArchiveException. Loaded patterns must work, and store again.
#include <vector>

#include "framework/archive.h"
#include "fuzz/archive_root.h"
#include "share/patterns/pattern_manager.h"
#include "share/patterns/pattern_orders.h"

namespace {

void Use(QFPatternInfo& info, QFObject& node) {
  FRTransf transform;
  int index = 0;
  info.CheckInstanceAvailableAtScreenPos(transform, FRPosition(), index);
  info.ToggleSelectInstanceAtScreenPos(transform, FRPosition());
  info.GetTransfForInstOptimised(1, transform, &node);
  info.GetIndexForInstOptimised(1, &node);
  QFPatternInfo copy;
  copy.CopyParameters(&info);
  copy.SetPatternOptimMgr(&info);
  CArray<int, int&> order;
  info.SetOptimizedList(&node, order);
  CObList valid;
  copy.CorrectOptimList(valid);
  info.RemoveFromUserObjectsList(&node);
}

void Use(QFObject& node) {
  node.SetState(node.GetState());
  node.GetNumPattInstances(1);
  node.RebuildPattern();
  auto* manager = DYNAMIC_DOWNCAST(QFObjectPatternMgr, &node);
  if (!manager) return;
  FRTransf transform;
  int index = 0;
  manager->GetTransfForActiveInstance(2, transform, index);
  manager->GetInnermostBaseObjectToPattern();
  manager->CanSuppress();
  manager->IsLocked();
  manager->IsDragOverValid(&node, 1);
  manager->DoPaste(&node, &node, 1);
  if (QFPatternInfo* info = manager->GetPatternInfo()) Use(*info, node);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  CMemFile file(const_cast<BYTE*>(data), size);
  CArchive ar(&file, CArchive::load, 128);
  QFObject* root = nullptr;
  if (!LoadRoot(ar, root)) return 0;
  std::vector<QFObject*> nodes;
  ar.DeleteLoaded([&](const CObject* object) {
    if (auto* node = DYNAMIC_DOWNCAST(QFObject, const_cast<CObject*>(object))) nodes.push_back(node);
    return false;
  });
  for (QFObject* node : nodes) Use(*node);
  CMemFile stored;
  CArchive again(&stored, CArchive::store);
  try {
    again << root;
  } catch (const CArchiveException&) {
    again.Abort();
  }
  ar.DeleteLoaded([](const CObject*) { return true; });
  return 0;
}
