// HostNode, the base class of all nodes of this host's documents: a place in the document's list, neighbours in the
// tree, and links to other nodes. Its classes are in setup_node.h, feature_node.h, operation_node.h, drilling_node.h
// and tool_node.h.
//
// A document owns its nodes (host_document.h). Lengths are in metres, angles in radians. A node's record is the record
// of QFObject, then the fields of its class, which the class's header lists.
#pragma once

#include <memory>
#include <string>

#include "companions/geometry/vectors.h"
#include "share/objects/object.h"

namespace kestrova {

class HostDocument;

// Receives a node's parameters, one per call, for a program that reads them. A name is a camelCase literal.
class NodeFacts {
 public:
  virtual void Length(const char* name, double metres) = 0;
  virtual void Angle(const char* name, double radians) = 0;
  virtual void Number(const char* name, double value) = 0;
  virtual void Direction(const char* name, const FRUnitVector& direction) = 0;
  virtual void Place(const char* name, const FRPosition& metres) = 0;
  virtual void Switch(const char* name, bool on) = 0;
  virtual void Text(const char* name, LPCTSTR text) = 0;

 protected:
  ~NodeFacts() = default;
};

// The faults of a node's links, which are repaired when found.
struct LinkFaults {
  int dangling = 0;        // references to objects outside the document: dropped
  int oneSided = 0;        // uses that only one of the two nodes has: completed or dropped
  bool ownerLost = false;  // the owner is one of the dangling references

  int Count() const { return dangling + oneSided; }
  LinkFaults& operator+=(const LinkFaults& other) {
    dangling += other.dangling;
    oneSided += other.oneSided;
    ownerLost = ownerLost || other.ownerLost;
    return *this;
  }
};

class HostNode : public QFObject {
  DECLARE_DYNAMIC(HostNode)

 public:
  static constexpr DWORD kNoPlace = 0xFFFFFFFF;

  CString GetClassNameW() override;
  // Copies parameters, label and state; not id, stamps and users. The caller owns the result.
  QFObject* Clone() override = 0;
  // COMPLETE_MATCH for a node of the same class with the same parameters, lengths within RESABS.
  COMPARE_RESULT Compare(QFObject* other) override;
  QFCallbackHelper* GetCallbackHelper() override;

  // The callbacks that create the companions of all host nodes; without a callback a node has no companion.
  static QFCallbackHelper& Companions();

  // The node's parameters in a few words, in the document's units: "dia 12mm, length 75mm".
  virtual CString Facts() const = 0;
  // The same parameters, one by one.
  virtual void ListFacts(NodeFacts& facts) const = 0;

  // The node's index in its document's list; kNoPlace while no document owns it.
  DWORD Place() const { return m_place; }

  // Drops all links from and to this node. Nodes can then be deleted in any order.
  virtual void DropLinks();
  // Drops or completes wrong links.
  virtual LinkFaults RepairLinks(const HostDocument& document);
  // The node whose list of users must contain this node, apart from the original owner; null if there is none.
  virtual const HostNode* UsedNode() const { return nullptr; }

  // Sets creator, last changer and both times, as GetUiObject and UpdateLastModified do for a node that a user creates.
  void StampAs(const CString& creator, const CString& created, const CString& changer, const CString& changed);

 protected:
  HostNode() = default;

  // Starts a class's level of the record: writes or reads its class record and returns the schema.
  static UINT BeginLevel(CArchive& ar, const CRuntimeClass* level);
  // True if the other node, of the same class, has the same parameters.
  virtual bool IsLike(const HostNode& other) const = 0;
  // For Clone: copies this node into `copy` and returns it.
  QFObject* CloneInto(std::unique_ptr<HostNode> copy);

 private:
  friend class HostDocument;

  // The node's place, and the places of its neighbours in the tree. The document sets them.
  DWORD m_place = kNoPlace;
  DWORD m_firstChild = kNoPlace;
  DWORD m_lastChild = kNoPlace;
  DWORD m_next = kNoPlace;
};

// True if the lengths differ by at most RESABS.
bool SameLength(double a, double b);

}  // namespace kestrova
