#include "host/document/node.h"

#include <cmath>

#include "companions/geometry/constants.h"
#include "framework/archive.h"
#include "framework/ob_list.h"
#include "host/document/host_document.h"

namespace kestrova {

IMPLEMENT_DYNAMIC(HostNode, QFObject)

CString HostNode::GetClassNameW() { return CString(GetRuntimeClass()->m_lpszClassName); }

COMPARE_RESULT HostNode::Compare(QFObject* other) {
  const bool same_class = other && other->GetRuntimeClass() == GetRuntimeClass();
  return same_class && IsLike(*static_cast<HostNode*>(other)) ? COMPLETE_MATCH : NO_MATCH;
}

QFCallbackHelper& HostNode::Companions() {
  static QFCallbackHelper helper;
  return helper;
}

QFCallbackHelper* HostNode::GetCallbackHelper() { return &Companions(); }

QFObject* HostNode::CloneInto(std::unique_ptr<HostNode> copy) {
  AssociateParameters(copy.get());
  copy->CopyParameters(this);
  return copy.release();
}

UINT HostNode::BeginLevel(CArchive& ar, const CRuntimeClass* level) {
  ar.SerializeClass(level);
  return ar.GetObjectSchema();
}

// ---- links

void HostNode::DropLinks() {
  SetOwner(nullptr);
  SetOriginalOwner(nullptr);
  DetachFromAllUserObjects();
}

LinkFaults HostNode::RepairLinks(const HostDocument& document) {
  LinkFaults faults;
  if (GetOriginalOwner() && !document.Owns(GetOriginalOwner())) {
    RemoveFromUserObjectsList(GetOriginalOwner());  // drops only this node's link: the other object may be damaged
    ++faults.dangling;
  }
  if (GetCountOfUserObjects() == 0) return faults;
  // A recycled node that is read before its original owner enters itself there; the owner's record then has it again.
  if (GetCountOfUserObjects() > 1) RemoveDuplicatesFromUserObjects();
  CObList users;
  GetAllUserObjects(&users);
  for (POSITION at = users.GetHeadPosition(); at;) {
    CObject* user = users.GetNext(at);
    if (document.KnowsUser(user, *this)) continue;
    RemoveFromUserObjectsList(reinterpret_cast<QFObject*>(user));  // only the address is used: it may not be a QFObject
    ++faults.dangling;
  }
  return faults;
}

void HostNode::StampAs(const CString& creator, const CString& created, const CString& changer, const CString& changed) {
  SetStamps({.createdBy = creator, .dateCreated = created, .lastModified = changed, .lastModifiedBy = changer});
}

bool SameLength(double a, double b) { return std::abs(a - b) <= RESABS; }

}  // namespace kestrova
