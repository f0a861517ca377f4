// HostDocument: the patterns of its nodes, their links and their parts.
#include "framework/ob_list.h"
#include "host/document/host_document.h"
#include "host/document/pattern_kinds.h"
#include "share/patterns/pattern_manager.h"
#include "share/patterns/pattern_orders.h"

namespace kestrova {
namespace {

// Enters the user in the object's list. True if it was not there.
bool CompleteUse(QFObject& object, QFObject& user) {
  const int before = object.GetCountOfUserObjects();
  object.AddToUserObjectsList(&user, /*held=*/0);
  return object.GetCountOfUserObjects() != before;
}

// Nothing uses a part of a pattern, and none is recycled; a damaged file can say otherwise. Returns the number of
// dropped links. Not the operation of the part's class: the orders would drop those of the users.
int DropUsers(QFObject& part) {
  int dropped = 0;
  if (QFObject* owner = part.GetOriginalOwner()) {
    part.QFObject::RemoveFromUserObjectsList(owner);
    ++dropped;
  }
  CObList users;
  part.GetAllUserObjects(&users);
  for (POSITION at = users.GetHeadPosition(); at; ++dropped)
    part.QFObject::RemoveFromUserObjectsList(
        reinterpret_cast<QFObject*>(users.GetNext(at)));  // only the address is used: it may not be a QFObject
  return dropped;
}

void InsertParts(QFObjectPatternMgr& manager, std::unordered_set<const CObject*>& parts) {
  parts.insert(&manager);
  const QFPatternInfo* pattern = manager.GetPatternInfo();
  if (!pattern) return;
  parts.insert(pattern);
  CObList owned;
  pattern->GetAllInstancesToSkip(owned);
  if (const QFPattOptimizMgr* orders = pattern->GetPatternOptimMgr()) {
    parts.insert(orders);
    orders->GetAllOptimLists(owned);
  }
  for (POSITION at = owned.GetHeadPosition(); at;) parts.insert(owned.GetNext(at));
}

}  // namespace

bool HostDocument::KnowsUser(const CObject* user, HostNode& of) const {
  if (Owns(user)) return true;
  if (!user) return false;
  if (user == of.GetPatternMgr()) return true;
  return m_orders.contains(user) && static_cast<const QFPattOptimizMgr*>(user)->FindOptimizedList(&of);
}

LinkFaults HostDocument::RepairPattern(HostNode& node) {
  QFObjectPatternMgr& manager = *node.GetPatternMgr();
  LinkFaults faults;
  faults.dangling = DropUsers(manager);
  if (manager.GetOwner() != &node) {
    manager.SetOwner(&node);
    ++faults.dangling;
  }
  if (manager.GetBaseObjectToPattern() != &node) {
    m_brokenPatterns.push_back(&node);
    ++faults.dangling;
  }
  if (CompleteUse(node, manager)) ++faults.oneSided;
  QFPatternInfo* const pattern = manager.GetPatternInfo();
  if (!pattern) return faults;
  if (auto* kind = DYNAMIC_DOWNCAST(HostPattern, pattern)) faults.dangling += kind->DropInvalidSkips();
  return faults += RepairOrders(*pattern);
}

LinkFaults HostDocument::RepairOrders(QFPatternInfo& pattern) {
  LinkFaults faults;
  QFPattOptimizMgr* const orders = pattern.GetPatternOptimMgr();
  if (!orders) return faults;
  m_orders.insert(orders);
  faults.dangling = DropUsers(*orders);
  for (QFObject* object : orders->GetAllIdentifiers()) {
    if (!Owns(object)) {
      faults.dangling += orders->RemoveFromUserObjectsList(object);  // only the address is used
    } else if (CompleteUse(*object, *orders)) {
      ++faults.oneSided;
    }
  }
  return faults;
}

void HostDocument::ListPatternParts(std::unordered_set<const CObject*>& parts) const {
  for (const auto* nodes : {&m_nodes, &m_lost}) {
    for (HostNode* node : *nodes)
      if (node->GetIsPatterned()) InsertParts(*node->GetPatternMgr(), parts);
  }
}

void HostDocument::UnlinkLostNodes() {
  m_lost.insert(m_lost.end(), m_placeholders.begin(), m_placeholders.end());
  m_placeholders.clear();
  for (HostNode* node : m_lost) {
    if (QFObjectPatternMgr* const manager = node->GetPatternMgr()) {
      DropUsers(*manager);
      QFPatternInfo* const pattern = manager->GetPatternInfo();
      if (QFPattOptimizMgr* orders = pattern ? pattern->GetPatternOptimMgr() : nullptr) {
        DropUsers(*orders);
        for (QFObject* object : orders->GetAllIdentifiers()) orders->RemoveOptimizedList(object);
      }
    }
    node->DropLinks();
  }
}

void HostDocument::DeleteLostNodes() {
  UnlinkLostNodes();
  for (HostNode* node : m_brokenPatterns) {
    node->RemoveFromUserObjectsList(
        node->GetPatternMgr());  // the pattern does not do it for a base object that it lost
    node->DestroyPattern();
  }
  m_brokenPatterns.clear();
  for (auto at = m_lost.rbegin(); at != m_lost.rend(); ++at) delete *at;
  m_lost.clear();
}

}  // namespace kestrova
