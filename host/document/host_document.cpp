// The document's nodes and their tree, ids, and what it prints. Messages: document_messages.cpp; the archive:
// document_record.cpp.
#include "host/document/host_document.h"

#include <map>

#include "framework/ob_list.h"
#include "share/objects/dump.h"

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

// ---- nodes

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
  for (HostNode* node : m_nodes) {
    node->m_firstChild = node->m_lastChild = node->m_next = HostNode::kNoPlace;
    if (!Owns(node->GetOwner())) node->SetOwner(nullptr);
    node->MendLinks(*this);
  }
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
  for (HostNode* node : m_nodes) {
    const bool owned = MendOwner(*node);
    LinkFaults faults = node->MendLinks(*this);
    if (!owned) ++faults.dangling;
    AppendToTree(*node, static_cast<HostNode*>(node->GetOwner()));
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

void HostDocument::CorrectRegisteredName(HostNode& node) {
  CString name = node.GetRegisterNodeName();
  if (name.IsEmpty()) return;  // the class's name, which is what old records get
  if (node.GetRegNameForAutoIndexing() != name && m_indexer->FindIndex(&node) >= 0)
    node.SetRegNameForAutoIndexing(name);
}

void HostDocument::CorrectIndexer() {
  std::map<CString, int> alive;
  alive[GetClassNameW()] = 0;  // an empty map, as of a document without nodes, would leave all counts as they are
  for (HostNode* node : m_nodes) {
    CorrectRegisteredName(*node);
    ++alive[node->GetRegNameForAutoIndexing()];
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
