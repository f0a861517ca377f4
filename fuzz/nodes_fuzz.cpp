// Loads any bytes as nodes of a document in three storage versions: nested records, cycles of owners and users, invalid
// original owners. Loaded nodes must be usable, and deletable in any order after their links are removed.
#include <set>
#include <vector>

#include "framework/archive.h"
#include "framework/ob_list.h"
#include "fuzz/archive_root.h"
#include "share/core/document_callbacks.h"
#include "share/objects/object.h"
#include "share/patterns/pattern_manager.h"
#include "share/patterns/pattern_orders.h"

namespace {

class Document : public QFObject {
 public:
  int SendQFCoreMessage(QF_CORE_MESSAGE_ID message, ULONGLONG argument, LONGLONG) override {
    if (message != QF_CORE_GET_READ_STORAGE_UNITS) return 0;
    *reinterpret_cast<float*>(std::uintptr_t(argument)) = units;
    return 1;
  }
  float units = 38.0f;
};

QFObject* TheDocument() {
  static Document document;
  return &document;
}

void Collect(CObject* object, std::set<CObject*>& found) {
  std::vector<CObject*> left = {object};
  while (!left.empty()) {
    object = left.back();
    left.pop_back();
    if (!object || !found.insert(object).second) continue;
    if (auto* list = DYNAMIC_DOWNCAST(CObList, object))
      for (POSITION at = list->GetHeadPosition(); at;) left.push_back(list->GetNext(at));
    auto* node = DYNAMIC_DOWNCAST(QFObject, object);
    if (!node) continue;
    left.push_back(node->GetOwner());
    left.push_back(node->GetOriginalOwner());
    CObList users;
    node->GetAllUserObjects(&users);
    for (POSITION at = users.GetHeadPosition(); at;) left.push_back(users.GetNext(at));
  }
}

void Use(QFObject& node) {
  node.RemoveDuplicatesFromUserObjects();
  node.IsSuppressed();
  node.GetPatternDirectionRestriction();
  node.Recycle();
  node.Restore();
}

}  // namespace

// An object created by an invalid reference may have no owner although the load succeeds, so leaks are not detected.
extern "C" const char* __asan_default_options() { return "detect_leaks=0"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  QFShareRegisterDocCBK(nullptr, nullptr, TheDocument, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  static constexpr float kVersions[] = {38.0f, 6.0f, 30.0f};
  static_cast<Document*>(TheDocument())->units = kVersions[data[0] % 3];
  CMemFile file(const_cast<BYTE*>(data) + 1, size - 1);
  CArchive ar(&file, CArchive::load, 128);
  QFObject* root = nullptr;
  if (!LoadRoot(ar, root)) return 0;
  // Parts of patterns are deleted by their owners; patterns_fuzz.cpp uses them.
  bool hasPatterns = false;
  ar.DeleteLoaded([&](const CObject* object) {
    hasPatterns = hasPatterns || object->IsKindOf(RUNTIME_CLASS(QFObjectPatternMgr)) ||
                  object->IsKindOf(RUNTIME_CLASS(QFPattOptimizMgr));
    return false;
  });
  if (hasPatterns) {
    ar.DeleteLoaded([](const CObject*) { return true; });
    return 0;
  }
  std::set<CObject*> objects;
  Collect(root, objects);
  for (CObject* object : objects)
    if (auto* node = DYNAMIC_DOWNCAST(QFObject, object)) Use(*node);
  for (CObject* object : objects)
    if (auto* node = DYNAMIC_DOWNCAST(QFObject, object)) node->DetachFromAllUserObjects();
  // Objects that are neither nodes nor lists have other owners.
  for (CObject* object : objects)
    if (object->IsKindOf(RUNTIME_CLASS(QFObject)) || object->IsKindOf(RUNTIME_CLASS(CObList))) delete object;
  return 0;
}
