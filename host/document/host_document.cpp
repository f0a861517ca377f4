// The document's nodes and their tree, ids, and what it prints. Messages: document_messages.cpp; the archive:
// document_record.cpp.
#include "host/document/host_document.h"

#include <algorithm>
#include <array>
#include <map>
#include <unordered_set>

#include "framework/ob_list.h"
#include "share/core/dump.h"

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

DWORD HostDocument::DrawId() {
  if (m_idsFrozen || m_nextId == 0) return 0;  // 0 again behind the last of all ids
  return m_nextId++;
}

// ---- uses

// Whether each use is known on both of its sides: the node that uses another, or lies in its bin, stands in that one's
// list of users, once, and nobody else does. A node is met once, in the order of the list. Lists mostly have their
// users in that order, too, and then are followed element by element, and nothing has to be searched for.
class HostDocument::UseCheck {
 public:
  explicit UseCheck(const HostDocument& document) : document_(document), uses_(document.NodeCount()) {}

  void Meet(const HostNode& node) {
    if (const QFObject* owner = node.GetOriginalOwner()) MeetUse(node, owner);
    if (const HostNode* used = node.UsedNode()) MeetUse(node, used);
    users_ += node.GetCountOfUserObjects();
  }

  // To be asked when all have been met.
  bool Agree() const {
    return !lost_ && met_ == users_ &&
           std::all_of(shuffled_.begin(), shuffled_.end(), [&](DWORD place) { return HoldsItsUsers(place); });
  }

 private:
  // Of one node, how many have told that they use it; and whether its list had others in their place.
  struct Uses {
    DWORD count : 31 = 0;
    DWORD shuffled : 1 = 0;
  };

  void MeetUse(const HostNode& node, const QFObject* used) {
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
    ++met_;
  }

  // Whether the list has those that told of it and no other, in whatever order.
  bool HoldsItsUsers(DWORD place) const {
    const HostNode* used = document_.m_nodes[place];
    const auto users = used->UserObjectsAsTheyLie();
    if (users.size() != uses_[place].count) return false;
    std::unordered_set<const CObject*> met;
    return std::all_of(users.begin(), users.end(), [&](const CObject* object) {
      if (!document_.Owns(object) || !met.insert(object).second) return false;
      const auto* user = static_cast<const HostNode*>(object);
      return user->GetOriginalOwner() == used || user->UsedNode() == used;
    });
  }

  const HostDocument& document_;
  std::vector<Uses> uses_;       // by place
  std::vector<DWORD> shuffled_;  // places
  std::size_t met_ = 0;
  std::size_t users_ = 0;
  bool lost_ = false;  // something is used that is not the document's
};

// ---- nodes

// Whoever goes through the nodes one by one finds the next ones in the processor's cache.
void HostDocument::FetchAhead(DWORD place) const {
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

// Climbs from each node to one that is known to lead to the top. A node that is met twice on the way closes a ring.
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

void HostDocument::RebuildTree() {
  m_firstChild = m_lastChild = HostNode::kNoPlace;
  UseCheck uses(*this);
  for (HostNode* node : m_nodes) {
    node->m_firstChild = node->m_lastChild = node->m_next = HostNode::kNoPlace;
    if (!Owns(node->GetOwner())) node->SetOwner(nullptr);
    uses.Meet(*node);
  }
  if (!uses.Agree())
    for (HostNode* node : m_nodes) node->MendLinks(*this);
  CutRings();
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

// A document is nobody's user and has none.
LinkFaults HostDocument::MendOwnLinks() {
  LinkFaults faults;
  if (GetOwner()) ++faults.dangling;
  SetOwner(nullptr);
  if (GetOriginalOwner()) ++faults.dangling;
  RemoveFromUserObjectsList(GetOriginalOwner());
  CObList users;
  GetAllUserObjects(&users);
  for (POSITION at = users.GetHeadPosition(); at; ++faults.dangling)
    RemoveFromUserObjectsList(reinterpret_cast<QFObject*>(users.GetNext(at)));  // an address: it may be no QFObject
  return faults;
}

// False if the owner was none that the node can have.
bool HostDocument::MendOwner(HostNode& node) {
  QFObject* const owner = node.GetOwner();
  if (!owner) return true;
  if (Owns(owner) && static_cast<HostNode*>(owner)->m_place < node.m_place) return true;
  node.SetOwner(nullptr);
  return owner == this;  // which is to be on top
}

std::vector<HostDocument::MendedLinks> HostDocument::MendLinks() {
  std::vector<MendedLinks> mended;
  if (const LinkFaults faults = MendOwnLinks(); faults.Count() > 0) mended.push_back({HostNode::kNoPlace, faults});
  std::vector<DWORD> ownerless;  // places of those whose owner was none that they can have
  UseCheck uses(*this);
  for (HostNode* node : m_nodes) {
    FetchAhead(node->m_place);
    if (!MendOwner(*node)) ownerless.push_back(node->m_place);
    uses.Meet(*node);
    AppendToTree(*node, static_cast<HostNode*>(node->GetOwner()));
  }
  if (ownerless.empty() && uses.Agree()) return mended;
  auto next = ownerless.cbegin();
  for (HostNode* node : m_nodes) {
    LinkFaults faults = node->MendLinks(*this);
    if (next != ownerless.cend() && *next == node->m_place) {
      faults.ownerLost = true;
      ++faults.dangling;
      ++next;
    }
    if (faults.Count() > 0) mended.push_back({node->m_place, faults});
  }
  return mended;
}

void HostDocument::DeleteLostNodes() {
  m_lost.insert(m_lost.end(), m_standIns.begin(), m_standIns.end());
  m_standIns.clear();
  for (HostNode* node : m_lost) node->DropLinks();
  for (auto at = m_lost.rbegin(); at != m_lost.rend(); ++at) delete *at;
  m_lost.clear();
}

// False if the node has another name then, because the indexer doesn't list it under its present one.
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
  alive[GetClassNameW()] = 0;  // an empty map, as of a document without nodes, would leave all counts as they are
  struct Counted {
    const CRuntimeClass* record = nullptr;
    CString name;  // the present one of the class's nodes, which mostly share its text
    int* count = nullptr;
  };
  std::array<Counted, 16> last;  // by the class's number
  for (HostNode* node : m_nodes) {
    const CRuntimeClass* record = node->GetRuntimeClass();
    Counted& counted = last[record->m_nNumber % last.size()];
    if (counted.record != record || counted.name.GetString() != node->GetRegNameForAutoIndexing().GetString()) {
      const bool present = CorrectRegisteredName(*node);
      const CString& name = node->GetRegNameForAutoIndexing();
      if (!present) {
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
