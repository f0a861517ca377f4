// HostNode, what all nodes of this host's documents have in common: a place in their document's list, neighbours in its
// tree, and links to other nodes that can be checked and dropped. The kinds stand beside it: setup_node.h,
// feature_node.h, operation_node.h, drilling_node.h, tool_node.h.
//
// A node belongs to one document, which owns it (host/document/host_document.h). Lengths are in metres, angles in
// radians. A node's record is that of QFObject, then its class's own level; each class tells its own in its header.
#pragma once

#include <memory>
#include <string>

#include "share/objects/object.h"

namespace kestrova {

class HostDocument;

// What was wrong with a node's links; each of them is put right where it is found.
struct LinkFaults {
  int dangling = 0;        // references to what the document doesn't own: dropped
  int oneSided = 0;        // a use that only one of the two nodes knows of: entered, or dropped
  bool ownerLost = false;  // the owner is among the dangling

  int Count() const { return dangling + oneSided; }
};

class HostNode : public QFObject {
  DECLARE_DYNAMIC(HostNode)

 public:
  static constexpr DWORD kNoPlace = 0xFFFFFFFF;

  CString GetClassNameW() override;
  // A node is copied by its class's Clone: the parameters, the label and the state, no id, no stamp, no users.
  QFObject* Clone() override = 0;
  // COMPLETE_MATCH for a node of the same class with the same parameters, lengths within RESABS.
  COMPARE_RESULT Compare(QFObject* other) override;
  QFCallbackHelper* GetCallbackHelper() override;

  // Where the companions of all host nodes come from; without a function none is made.
  static QFCallbackHelper& Companions();

  // The node's parameters in a few words with the document's units, for people: "dia 12mm, length 75mm".
  virtual CString Facts() const = 0;

  // Where the node stands in its document's list; kNoPlace while no document owns it.
  DWORD Place() const { return m_place; }

  // Takes this node off everything that it refers to and off everything that uses it. Afterwards it can be deleted in
  // any order with others.
  virtual void DropLinks();
  // Drops or completes the links that are wrong in this document.
  virtual LinkFaults MendLinks(const HostDocument& document);
  // The node that has this one in its list of users because of what this one is, beside an original owner; null for
  // none.
  virtual const HostNode* UsedNode() const { return nullptr; }

  // Who made the node and who changed it last, as GetUiObject and UpdateLastModified stamp it, for nodes that no user
  // made.
  void StampAs(const CString& creator, const CString& created, const CString& changer, const CString& changed);

 protected:
  HostNode() = default;

  // Begins a class's level of the record: writes or reads its class record and gives its schema. Raises badSchema for
  // a level of a later release.
  static UINT BeginLevel(CArchive& ar, const CRuntimeClass* level);
  // The same parameters? The other is of the same class.
  virtual bool IsLike(const HostNode& other) const = 0;
  // For Clone: gives the copy what the node has.
  QFObject* CloneInto(std::unique_ptr<HostNode> copy);

 private:
  friend class HostDocument;

  // Places of the neighbours in the tree; the document keeps them.
  DWORD m_place = kNoPlace;
  DWORD m_firstChild = kNoPlace;
  DWORD m_lastChild = kNoPlace;
  DWORD m_next = kNoPlace;
};

// Whether two lengths agree within RESABS.
bool SameLength(double a, double b);

}  // namespace kestrova
