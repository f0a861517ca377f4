// HostDocument, the document of this host. It answers the library's core messages and owns the nodes, the indexer of
// their ids, the settings and the history of its saves.
//
// All nodes are in one list. GetOwner defines their tree; a top node has no owner. The nodes also have links to
// neighbours by place in the list, so a walk allocates nothing. Use a document on one thread only. The library's
// callbacks work on the active document (active_document.h): make it active to adopt, convert or dump its nodes.
//
// document_loader.h loads a document from a file, document_file.h saves it.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "host/document/document_units.h"
#include "host/document/node.h"
#include "share/objects/object_indexer.h"
#include "share/objects/param_helpers.h"
#include "share/objects/save_history.h"
#include "share/settings/document_settings.h"

class QFPatternInfo;
class QFUnitsConversion;

namespace kestrova {

class DocumentReading;

class HostDocument : public QFObject {
  DECLARE_SERIAL(HostDocument)

 public:
  // The tree that the user sees.
  enum class Tree { kFeatures, kOperations, kTools };

  // New and empty, in millimetres, not modified.
  HostDocument();
  // Drops the links between the nodes, then deletes the nodes.
  ~HostDocument() override;

  // ---- overrides for the library

  CString GetClassNameW() override { return _T("HostDocument"); }
  // Returns 1 for the messages of share/core/core_messages.h, 0 for any other and for a null argument. Message 247
  // returns 0 and leaves the value unchanged if the text is not a length or angle. Message 284 returns 1 if the
  // companion was selected.
  int SendQFCoreMessage(QF_CORE_MESSAGE_ID message, ULONGLONG argument, LONGLONG extra) override;
  const QFParamHelper* GetParamHelper() const override { return &m_params; }
  int CanSuppress() const override { return 0; }
  int CanLock() const override { return 0; }
  // The document's record; document_record.cpp has the layout. Throws the archive's exceptions; with a salvaging
  // DocumentReading it keeps the intact nodes instead.
  void Serialize(CArchive& ar) override;
  // Dumps fields, indexer and history; not the nodes.
  void DumpData(FILE* file) override;

  // ---- properties

  const LengthUnit& Units() const;
  // False, and no change, for a code that FindLengthUnit does not know.
  bool SetUnits(int code);
  const CString& Title() const { return m_title; }
  void SetTitle(const CString& title) { m_title = title; }
  // The service pack of the product that saved the document last; empty for a new document.
  const CString& ServicePack() const { return m_servicePack; }
  void SetServicePack(const CString& text) { m_servicePack = text; }
  bool IsModified() const { return m_params.IsDocumentModified() != 0; }
  float ReadStorageUnits() const { return m_params.GetDocParamReadStorageUnits(); }
  // 0 while the document is loaded, else 1.
  int IsFullyLoaded() const { return !m_loading; }
  void SetShownTree(Tree tree) { m_tree = tree; }

  // The companions that the user has selected; their nodes own them. Message 284 removes one.
  void Select(ui_QFObject* companion) { m_selection.push_back(companion); }
  const std::vector<ui_QFObject*>& Selection() const { return m_selection; }

  QFObjectIndexerHelper& Indexer() { return *m_indexer; }
  QFDocSrHistoryMngr& History() { return *m_history; }
  void SetHistory(std::unique_ptr<QFDocSrHistoryMngr> history) { m_history = std::move(history); }
  // The settings in the document's file; those of a new document until SetSettings.
  QFDocSettings& Settings();
  void SetSettings(std::unique_ptr<QFDocSettings> settings) { m_settings = std::move(settings); }

  // ---- ids

  // Takes the next id for a new node; 0 while ids are frozen and after the last id.
  DWORD NewId();
  // Frozen ids keep a document that is only read unchanged: a node without an id stays visible as such.
  void FreezeIds(bool frozen) { m_idsFrozen = frozen; }
  // The id that NewId returns next.
  DWORD NextId() const { return m_nextId; }
  void SetNextId(DWORD id) { m_nextId = id; }

  // ---- nodes; places count from 0

  // Takes ownership of the node and calls its onCreate, which enters it in the indexer. The node becomes the last child
  // of `owner`, or the last top node for null. The document must be the active one.
  HostNode& Adopt(std::unique_ptr<HostNode> node, HostNode* owner);
  DWORD NodeCount() const { return DWORD(m_nodes.size()); }
  HostNode& NodeAt(DWORD place) const { return *m_nodes[place]; }
  // True if the object is a node of this document. The object may be of any class and null, but not deleted.
  bool Owns(const CObject* object) const;
  // True for an object that may be in the node's list of users: a node of this document, the node's own pattern, and
  // the orders of a pattern that has an order for the node. The object may be null, but not deleted.
  bool KnowsUser(const CObject* user, HostNode& of) const;
  // Rebuilds the tree from the owners. Call it after a change of an owner, before the next walk or save. Drops links to
  // objects outside the document and one link of each ring of owners. Children are in the order of their places.
  void RebuildTree();
  // Null if there is no such node. FirstChild(nullptr) is the first top node.
  HostNode* FirstChild(const HostNode* owner) const;
  HostNode* NextSibling(const HostNode& node) const { return AtOrNull(node.m_next); }

  // Calls visit(HostNode&, int depth) for each node in the tree's order: an owner, then the nodes below it.
  template <class Visit>
  void Walk(Visit visit) const {
    int depth = 0;
    for (HostNode* at = FirstChild(nullptr); at;) {
      visit(*at, depth);
      at = StepInTree(*at, depth);
    }
  }

  // ---- the end of a load, in this order; no object of the archive is deleted before

  // The faults of one node's links.
  struct RepairedLinks {
    DWORD place;
    LinkFaults faults;
  };
  // Drops links to objects outside the document, completes uses that only one side has, and builds the tree. It also
  // drops an owner that comes after its node, so there is no ring. Returns the nodes with faults; a fault of the
  // document itself has the place kNoPlace.
  std::vector<RepairedLinks> RepairLinks();
  // The number of lost nodes by class, as far as the table of nodes was read.
  const std::map<std::string, DWORD>& LostByClass() const { return m_lostByClass; }
  // Appends the objects that own nothing else of the document than parts of patterns: managers, descriptions, skipped
  // instances and orders of all nodes, lost ones too.
  void ListPatternParts(std::unordered_set<const CObject*>& parts) const;
  // Drops the links of lost nodes. Objects that nobody owns can then be deleted, and after them the lost nodes.
  void UnlinkLostNodes();
  // Deletes the objects of lost nodes, and the patterns that have lost their node.
  void DeleteLostNodes();
  // Sets the indexer's counts to the document's nodes. A node that the indexer lists under the current name of its
  // class gets that registered name: old records have no name, damaged ones a wrong one.
  void CorrectIndexer();
  void SetFullyLoaded() { m_loading = false; }

 private:
  class UseCheck;

  HostNode* AtOrNull(DWORD place) const { return place < m_nodes.size() ? m_nodes[place] : nullptr; }
  HostNode* StepInTree(const HostNode& node, int& depth) const;
  void AppendToTree(HostNode& node, HostNode* owner);
  void Prefetch(DWORD place) const;
  LinkFaults RepairOwnLinks();
  bool CorrectRegisteredName(HostNode& node);
  bool RepairOwner(HostNode& node);
  void RepairEachNode(std::map<DWORD, LinkFaults>& found);
  LinkFaults RepairPattern(HostNode& node);
  LinkFaults RepairOrders(QFPatternInfo& pattern);
  void CutRings();
  int ConvertUnits(QFUnitsConversion& request) const;
  int RemoveFromSelection(ui_QFObject* companion);

  void StoreRecord(CArchive& ar);
  void LoadRecord(CArchive& ar);
  void LoadOwnFields(CArchive& ar);
  void LoadIndexer(CArchive& ar);
  void MakeNodes(CArchive& ar, DocumentReading* reading);
  HostNode* MakeNode(CArchive& ar, const CRuntimeClass* record);
  HostNode* Placeholder(CArchive& ar, const CRuntimeClass* record);
  void LoadNodes(CArchive& ar, DocumentReading* reading);

  std::vector<HostNode*> m_nodes;  // owned
  // Owned; empty except between reading a damaged archive and DeleteLostNodes.
  std::vector<HostNode*> m_lost;
  std::vector<HostNode*> m_placeholders;
  std::map<std::string, DWORD> m_lostByClass;
  // The orders of all patterns (QFPattOptimizMgr), and nodes whose pattern has another base object or none. Valid after
  // the last check of the links.
  std::unordered_set<const CObject*> m_orders;
  std::vector<HostNode*> m_brokenPatterns;
  DWORD m_firstChild = HostNode::kNoPlace;
  DWORD m_lastChild = HostNode::kNoPlace;
  DWORD m_nextId = 1;
  bool m_idsFrozen = false;
  bool m_loading = false;
  Tree m_tree = Tree::kFeatures;
  int m_showExceptions = 1;
  QFDocParamHelper m_params{kMillimetres};
  CString m_title;
  CString m_servicePack;
  std::unique_ptr<QFObjectIndexerHelper> m_indexer;
  std::unique_ptr<QFDocSrHistoryMngr> m_history;
  std::unique_ptr<QFDocSettings> m_settings;  // null before the first use
  std::vector<ui_QFObject*> m_selection;
};

}  // namespace kestrova
