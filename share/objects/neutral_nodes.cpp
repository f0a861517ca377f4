// The nodes' part in the clean-up of a failed load (framework/neutral_objects.h): neutral nodes in the place of deleted
// ones, and the pointers to deleted nodes that other nodes and the post-load notice hold.
#include "framework/neutral_objects.h"
#include "share/objects/job_lock.h"
#include "share/objects/object.h"
#include "share/objects/serialize_notify.h"

namespace {

enum : unsigned { kObject, kBaseObject, kNode };

class NeutralBaseObject final : public QFBaseObject {
 public:
  static void operator delete(void* place) noexcept { ::new (place) NeutralBaseObject; }
};

// It has entered itself nowhere. Its users may be gone before it, so it does not call them.
class NeutralNode final : public QFObject {
 public:
  ~NeutralNode() override { ForgetUsers(); }
  static void operator delete(void* place) noexcept { ::new (place) NeutralNode; }
};

static_assert(sizeof(NeutralBaseObject) == sizeof(QFBaseObject) && sizeof(NeutralNode) == sizeof(QFObject));

}  // namespace

class NeutralNodes final : public NeutralObjects {
 public:
  constexpr NeutralNodes() = default;

  unsigned KindOf(const CObject* object) const noexcept override {
    if (object->IsKindOf(RUNTIME_CLASS(QFObject))) return kNode;
    return object->IsKindOf(RUNTIME_CLASS(QFBaseObject)) ? kBaseObject : kObject;
  }
  void Build(unsigned kind, void* place) const noexcept override {
    if (kind == kNode) {
      ::new (place) NeutralNode;
    } else {
      ::new (place) NeutralBaseObject;
    }
  }
  void Forget(CObject* object, const GoneObjects& gone) const noexcept override {
    if (auto* node = DYNAMIC_DOWNCAST(QFObject, object)) node->Forget(gone);
  }
  void ForgetInLists(const GoneObjects& gone) const noexcept override { QFSerializeNotify::Forget(gone); }
};

namespace {

constinit const NeutralNodes g_nodes;
[[maybe_unused]] const bool g_set = (SetNeutralObjects(&g_nodes), true);

}  // namespace

void QFObject::ForgetUsers() noexcept {
  const UsersLock lock;
  m_UserObjects.RemoveAll();
  m_HeldUserObjects.RemoveAll();
}

void QFObject::LeaveOriginalOwner() noexcept {
  const UsersLock lock;
  if (m_pOriginalOwner) m_pOriginalOwner->m_UserObjects.Remove(this);
}

void QFObject::Forget(const GoneObjects& gone) noexcept {
  for (QFObject** node : {&m_pOwner, &m_pOriginalOwner, &m_pMatch})
    if (gone.Contains(*node)) *node = nullptr;
  const UsersLock lock;
  for (UserObjects* list : {&m_UserObjects, &m_HeldUserObjects}) {
    list->ForEach([&](CObject* user) {
      if (gone.Contains(user)) list->Remove(user);
    });
  }
}
