// HostDocument: nodes, tree, ids and dump. Messages are in document_messages.cpp, the archive in document_record.cpp.
#include "host/document/host_document.h"

#include <algorithm>
#include <array>
#include <map>
#include <unordered_set>

#include "framework/ob_list.h"
#include "share/core/dump.h"
#include "share/patterns/pattern_manager.h"
#include "share/patterns/pattern_orders.h"

namespace kestrova {

HostDocument::HostDocument()
    : m_title(_T("Untitled")),
      m_indexer(std::make_unique<QFObjectIndexerHelper>()),
      m_history(std::make_unique<QFDocSrHistoryMngr>()) {}

HostDocument::~HostDocument() {
  for (HostNode* node : m_nodes) node->DropLinks();
  DeleteLostNodes();
  for (auto at = m_nodes.rbegin(); at != m_nodes.rend(); ++at) delete *at;
}

const LengthUnit& HostDocument::Units() const { return *FindLengthUnit(m_params.GetDocParamUnits()); }

bool HostDocument::SetUnits(int code) {
  if (!FindLengthUnit(code)) return false;
  m_params.SetDocParamUnits(code);
  return true;
}

QFDocSettings& HostDocument::Settings() {
  if (!m_settings) m_settings = std::make_unique<QFDocSettings>();
  return *m_settings;
}

DWORD HostDocument::NewId() {
  if (m_idsFrozen || m_nextId == 0) return 0;  // the increment after the last id gives 0
  return m_nextId++;
}

// ---- uses

// Checks that both sides of each use agree: a node's list of users contains every node that uses it, or is recycled
// into it, exactly once, and no other. Add the nodes in the order of the document's list. Most lists of users have the
// same order; a list is searched only if its order differs.
class HostDocument::UseCheck {
 public:
  explicit UseCheck(const HostDocument& document) : document_(document), uses_(document.NodeCount()) {}

  void Add(HostNode& node) {
    if (const QFObject* owner = node.GetOriginalOwner()) AddUse(node, owner);
    if (const HostNode* used = node.UsedNode()) AddUse(node, used);
    if (node.GetIsPatterned()) AddPattern(node);
    users_ += node.GetCountOfUserObjects();
  }

  // The result after all nodes are added.
  bool AllAgree() const {
    return !lost_ && added_ == users_ &&
           std::all_of(shuffled_.begin(), shuffled_.end(), [&](DWORD place) { return HoldsItsUsers(place); });
  }

 private:
  // Of one node: the number of its users so far; 1 if its list has another order.
  struct Uses {
    DWORD count : 31 = 0;
    DWORD shuffled : 1 = 0;
  };

  // A pattern's manager uses its node, and its orders use the nodes that they are for.
  void AddPattern(HostNode& node) {
    AddUse(*node.GetPatternMgr(), &node);
    const QFPatternInfo* pattern = node.GetPatternMgr()->GetPatternInfo();
    const QFPattOptimizMgr* orders = pattern ? pattern->GetPatternOptimMgr() : nullptr;
    if (!orders) return;
    for (const QFObject* object : orders->GetAllIdentifiers()) AddUse(*orders, object);
  }

  void AddUse(const QFObject& node, const QFObject* used) {
    if (!document_.Owns(used)) {
      lost_ = true;
      return;
    }
    const DWORD place = static_cast<const HostNode*>(used)->m_place;
    const auto users = used->UserObjectsAsTheyLie();
    Uses& uses = uses_[place];
    if (!uses.shuffled && (uses.count >= users.size() || users[uses.count] != &node)) {
      uses.shuffled = 1;
      shuffled_.push_back(place);
    }
    ++uses.count;
    ++added_;
  }

  // True if the list has exactly the users of the node, in any order.
  bool HoldsItsUsers(DWORD place) const {
    HostNode* used = document_.m_nodes[place];
    const auto users = used->UserObjectsAsTheyLie();
    if (users.size() != uses_[place].count) return false;
    std::unordered_set<const CObject*> seen;
    return std::all_of(users.begin(), users.end(), [&](const CObject* object) {
      if (!document_.KnowsUser(object, *used) || !seen.insert(object).second) return false;
      if (!document_.Owns(object)) return true;
      const auto* user = static_cast<const HostNode*>(object);
      return user->GetOriginalOwner() == used || user->UsedNode() == used;
    });
  }

  const HostDocument& document_;
  std::vector<Uses> uses_;       // by place
  std::vector<DWORD> shuffled_;  // places
  std::size_t added_ = 0;
  std::size_t users_ = 0;
  bool lost_ = false;  // a node uses an object outside the document
};

// ---- nodes

// Prefetches the node eight places on into the processor's cache.
void HostDocument::Prefetch(DWORD place) const {
  constexpr DWORD kAhead = 8;
  constexpr std::size_t kLine = 64;
  if (const HostNode* node = AtOrNull(place + kAhead))
    for (std::size_t at = 0; at < sizeof(HostNode); at += kLine)
      __builtin_prefetch(reinterpret_cast<const BYTE*>(node) + at);
}

HostNode& HostDocument::Adopt(std::unique_ptr<HostNode> node, HostNode* owner) {
  node->m_place = NodeCount();
  m_nodes.push_back(node.get());
  HostNode& adopted = *node.release();
  adopted.SetOwner(owner);
  AppendToTree(adopted, owner);
  adopted.onCreate();
  return adopted;
}

bool HostDocument::Owns(const CObject* object) const {
  const auto* node = DYNAMIC_DOWNCAST(HostNode, object);
  return node && AtOrNull(node->m_place) == node;
}

HostNode* HostDocument::FirstChild(const HostNode* owner) const {
  return AtOrNull(owner ? owner->m_firstChild : m_firstChild);
}

void HostDocument::AppendToTree(HostNode& node, HostNode* owner) {
  DWORD& first = owner ? owner->m_firstChild : m_firstChild;
  DWORD& last = owner ? owner->m_lastChild : m_lastChild;
  if (first == HostNode::kNoPlace) {
    first = node.m_place;
  } else {
    m_nodes[last]->m_next = node.m_place;
  }
  last = node.m_place;
}

// Walks up from each node to one with a known way to the top. A node met twice on the way closes a ring.
void HostDocument::CutRings() {
  enum : BYTE { kUnknown, kOnTheWay, kKnown };
  std::vector<BYTE> state(m_nodes.size(), kUnknown);
  const auto owner = [](const HostNode* node) { return static_cast<HostNode*>(node->GetOwner()); };
  for (HostNode* node : m_nodes) {
    HostNode* last = nullptr;
    HostNode* at = node;
    for (; at && state[at->m_place] == kUnknown; last = at, at = owner(at)) state[at->m_place] = kOnTheWay;
    if (at && state[at->m_place] == kOnTheWay) last->SetOwner(nullptr);
    for (at = node; at && state[at->m_place] == kOnTheWay; at = owner(at)) state[at->m_place] = kKnown;
  }
}

// Without memory for a check it raises before it changes the tree.
void HostDocument::RebuildTree() {
  UseCheck uses(*this);
  m_orders.clear();
  m_brokenPatterns.clear();
  for (HostNode* node : m_nodes) {
    if (!Owns(node->GetOwner())) node->SetOwner(nullptr);
    if (node->GetIsPatterned()) RepairPattern(*node);
    uses.Add(*node);
  }
  std::map<DWORD, LinkFaults> unused;
  if (!uses.AllAgree()) RepairEachNode(unused);
  CutRings();
  m_firstChild = m_lastChild = HostNode::kNoPlace;
  for (HostNode* node : m_nodes) node->m_firstChild = node->m_lastChild = node->m_next = HostNode::kNoPlace;
  for (HostNode* node : m_nodes) AppendToTree(*node, static_cast<HostNode*>(node->GetOwner()));
}

HostNode* HostDocument::StepInTree(const HostNode& node, int& depth) const {
  if (HostNode* child = FirstChild(&node)) {
    ++depth;
    return child;
  }
  for (const HostNode* at = &node; at; --depth) {
    if (HostNode* next = NextSibling(*at)) return next;
    at = static_cast<const HostNode*>(at->GetOwner());
  }
  return nullptr;
}

// ---- the end of a load

// A document has no owner, uses nothing and has no users.
LinkFaults HostDocument::RepairOwnLinks() {
  LinkFaults faults;
  if (GetOwner()) ++faults.dangling;
  SetOwner(nullptr);
  if (GetOriginalOwner()) ++faults.dangling;
  RemoveFromUserObjectsList(GetOriginalOwner());
  CObList users;
  GetAllUserObjects(&users);
  for (POSITION at = users.GetHeadPosition(); at; ++faults.dangling)
    RemoveFromUserObjectsList(
        reinterpret_cast<QFObject*>(users.GetNext(at)));  // only the address is used: it may not be a QFObject
  return faults;
}

// Drops an owner that the node cannot have. False if that is a fault.
bool HostDocument::RepairOwner(HostNode& node) {
  QFObject* const owner = node.GetOwner();
  if (!owner) return true;
  if (Owns(owner) && static_cast<HostNode*>(owner)->m_place < node.m_place) return true;
  node.SetOwner(nullptr);
  return owner == this;  // no fault: a node of the document itself is a top node
}

// A node that drops a wrong original owner drops it from its users, too: if that is its pattern or an order, the repair
// of the pattern enters it again.
void HostDocument::RepairEachNode(std::map<DWORD, LinkFaults>& found) {
  for (HostNode* node : m_nodes) {
    if (const LinkFaults faults = node->RepairLinks(*this); faults.Count() > 0) found[node->m_place] += faults;
  }
  m_brokenPatterns.clear();
  for (HostNode* node : m_nodes) {
    if (!node->GetIsPatterned()) continue;
    if (const int oneSided = RepairPattern(*node).oneSided; oneSided > 0) found[node->m_place].oneSided += oneSided;
  }
}

std::vector<HostDocument::RepairedLinks> HostDocument::RepairLinks() {
  std::vector<RepairedLinks> mended;
  if (const LinkFaults faults = RepairOwnLinks(); faults.Count() > 0) mended.push_back({HostNode::kNoPlace, faults});
  std::map<DWORD, LinkFaults> found;  // by place: dropped owners and faults of patterns
  UseCheck uses(*this);
  for (HostNode* node : m_nodes) {
    Prefetch(node->m_place);
    if (!RepairOwner(*node)) found[node->m_place] = {.dangling = 1, .oneSided = 0, .ownerLost = true};
    if (node->GetIsPatterned()) {
      if (const LinkFaults faults = RepairPattern(*node); faults.Count() > 0) found[node->m_place] += faults;
    }
    uses.Add(*node);
    AppendToTree(*node, static_cast<HostNode*>(node->GetOwner()));
  }
  if (found.empty() && uses.AllAgree()) return mended;
  RepairEachNode(found);
  for (const auto& [place, faults] : found) mended.push_back({place, faults});
  return mended;
}

// Gives the node the current name of its class. False, and no change, if the indexer does not list it under that name.
bool HostDocument::CorrectRegisteredName(HostNode& node) {
  CString name = node.GetRegisterNodeName();
  if (name.IsEmpty()) name = node.GetRuntimeClassForAutoIndexing()->m_lpszClassName;
  if (node.GetRegNameForAutoIndexing() == name) return true;
  if (m_indexer->FindIndex(&node) < 0) return false;
  node.SetRegNameForAutoIndexing(name);
  return true;
}

void HostDocument::CorrectIndexer() {
  std::map<CString, int> alive;
  alive[GetClassNameW()] = 0;  // an empty map would leave all counts unchanged
  struct Counted {
    const CRuntimeClass* record = nullptr;
    CString name;  // current name of the class's nodes, which mostly share its text
    int* count = nullptr;
  };
  std::array<Counted, 16> last;  // cache by the class's number
  for (HostNode* node : m_nodes) {
    const CRuntimeClass* record = node->GetRuntimeClass();
    Counted& counted = last[record->m_nNumber % last.size()];
    if (counted.record != record || counted.name.GetString() != node->GetRegNameForAutoIndexing().GetString()) {
      const bool correct = CorrectRegisteredName(*node);
      const CString& name = node->GetRegNameForAutoIndexing();
      if (!correct) {
        ++alive[name];
        continue;
      }
      counted = {record, name, &alive[name]};
    }
    ++*counted.count;
  }
  m_indexer->CorrectIndexersReferences(alive);
}

// ---- dump

void HostDocument::DumpData(FILE* file) {
  if (!file) return;
  QFObject::DumpData(file);
  DumpBanner(file, _T("HostDocument"), _T("Start"));
  DumpPrint(file, _T("\n m_title: %s"), m_title);
  DumpPrint(file, _T("\n m_units: %s"), FromUtf8(Units().name));
  DumpPrint(file, _T("\n m_nextId: %u"), m_nextId);
  DumpPrint(file, _T("\n m_servicePack: %s"), m_servicePack);
  DumpPrint(file, _T("\n Total Nodes: %u"), NodeCount());
  m_indexer->DumpData(file);
  m_history->DumpData(file);
  DumpBanner(file, _T("HostDocument"), _T("End"));
}

}  // namespace kestrova
