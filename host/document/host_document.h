// HostDocument, the document of this host: it answers the library's core messages, and owns the nodes, the indexer of
// their ids and the history of its saves.
//
// All nodes stand in one list; their tree is told by GetOwner, of which a node on top has none, and kept in links from
// place to place, so that walking it allocates nothing. A document is used by one thread. The library's callbacks work
// on the active document (host/main_module.h): nodes are adopted, converted and dumped while theirs is the active one.
//
// Loading and saving a file is the matter of document_loader.h and document_file.h.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/document/document_units.h"
#include "host/document/node.h"
#include "share/objects/object_indexer.h"
#include "share/objects/param_helpers.h"
#include "share/objects/save_history.h"
#include "share/settings/document_settings.h"

class QFUnitsConversion;

namespace kestrova {

class DocumentReading;

class HostDocument : public QFObject {
  DECLARE_SERIAL(HostDocument)

 public:
  // Which of the three trees the user looks at.
  enum class Tree { kFeatures, kOperations, kTools };

  // New and empty, in millimetres, not modified.
  HostDocument();
  // Deletes all nodes, which first let go of one another.
  ~HostDocument() override;

  // ---- the document as the library sees it

  CString GetClassNameW() override { return _T("HostDocument"); }
  // The messages of share/core/core_messages.h: 1 for each of them, 0 for any other and for a null argument. Of 247, a
  // text that is no length or angle is answered by 0 and leaves the value alone; of 284 the answer is whether the
  // companion was selected.
  int SendQFCoreMessage(QF_CORE_MESSAGE_ID message, ULONGLONG argument, LONGLONG extra) override;
  const QFParamHelper* GetParamHelper() const override { return &m_params; }
  int CanSuppress() const override { return 0; }
  int CanLock() const override { return 0; }
  // The object archive; its layout stands in document_record.cpp. Raises what the archive raises, unless a
  // DocumentReading says that what came whole is to be kept.
  void Serialize(CArchive& ar) override;
  // The document's own fields, indexer and history; not the nodes.
  void DumpData(FILE* file) override;

  // ---- what it says of itself

  const LengthUnit& Units() const;
  // A code that FindLengthUnit knows; false, with nothing changed, for any other.
  bool SetUnits(int code);
  const CString& Title() const { return m_title; }
  void SetTitle(const CString& title) { m_title = title; }
  // Of the product that saved it last; empty for a new document.
  const CString& ServicePack() const { return m_servicePack; }
  void SetServicePack(const CString& text) { m_servicePack = text; }
  bool IsModified() const { return m_params.IsDocumentModified() != 0; }
  float ReadStorageUnits() const { return m_params.GetDocParamReadStorageUnits(); }
  // 1 unless its reading has begun and is not over.
  int IsFullyLoaded() const { return !m_loading; }
  void SetShownTree(Tree tree) { m_tree = tree; }

  // The companions that the user has selected; they stay their nodes'. Removing is message 284.
  void Select(ui_QFObject* companion) { m_selection.push_back(companion); }
  const std::vector<ui_QFObject*>& Selection() const { return m_selection; }

  QFObjectIndexerHelper& Indexer() { return *m_indexer; }
  QFDocSrHistoryMngr& History() { return *m_history; }
  void SetHistory(std::unique_ptr<QFDocSrHistoryMngr> history) { m_history = std::move(history); }
  // The settings that travel with the document; those of a new one until others are set.
  QFDocSettings& Settings();
  void SetSettings(std::unique_ptr<QFDocSettings> settings) { m_settings = std::move(settings); }

  // ---- ids

  // The id for the next new node: 0, none, while ids are frozen.
  DWORD DrawId();
  // A document that is only looked at gives nothing new: a node without an id then shows as one.
  void FreezeIds(bool frozen) { m_idsFrozen = frozen; }
  // The id that DrawId gives next.
  DWORD NextId() const { return m_nextId; }
  void SetNextId(DWORD id) { m_nextId = id; }

  // ---- nodes; places count from 0

  // Takes the node over, as the last child of its owner or, for null, on top, and enters it in the indexer (onCreate):
  // the document is the active one.
  HostNode& Adopt(std::unique_ptr<HostNode> node, HostNode* owner);
  DWORD NodeCount() const { return DWORD(m_nodes.size()); }
  HostNode& NodeAt(DWORD place) const { return *m_nodes[place]; }
  // Whether the object is a node of this document. It has to be alive, of whatever class; null is none.
  bool Owns(const CObject* object) const;
  // To be called when a node's owner has been set to another, ahead of the next walk, and ahead of saving: drops links
  // to what the document doesn't own, and makes the tree anew. Children stand in the order of their places. Of a ring
  // of owners one link is dropped.
  void RebuildTree();
  // Null where there is none; FirstChild of null is the first node on top.
  HostNode* FirstChild(const HostNode* owner) const;
  HostNode* NextSibling(const HostNode& node) const { return AtOrNull(node.m_next); }

  // Calls visit(HostNode&, int depth) for each node in the tree's order: an owner, then what is below it.
  template <class Visit>
  void Walk(Visit visit) const {
    int depth = 0;
    for (HostNode* at = FirstChild(nullptr); at;) {
      visit(*at, depth);
      at = StepInTree(*at, depth);
    }
  }

  // ---- the end of a load, in this order; all objects that the archive made still live

  // What one node's links had.
  struct MendedLinks {
    DWORD place;
    LinkFaults faults;
  };
  // Drops links of all nodes to what the document doesn't own, completes what is told on one side alone, and builds the
  // tree. An owner stands ahead of what it owns, so that there is no ring: any other is dropped. Gives the nodes with
  // faults; a fault of the document's own record has the place kNoPlace.
  std::vector<MendedLinks> MendLinks();
  // How many nodes were promised and did not come whole, by class, as far as their classes came.
  const std::map<std::string, DWORD>& LostByClass() const { return m_lostByClass; }
  // Deletes what there is of them.
  void DeleteLostNodes();
  // Sets the indexer's counts to the nodes that there are. A node that it lists under its class's present name has that
  // as its registered name from now on: old records tell none, damaged ones another.
  void CorrectIndexer();
  void SetFullyLoaded() { m_loading = false; }

 private:
  class UseCheck;

  HostNode* AtOrNull(DWORD place) const { return place < m_nodes.size() ? m_nodes[place] : nullptr; }
  HostNode* StepInTree(const HostNode& node, int& depth) const;
  void AppendToTree(HostNode& node, HostNode* owner);
  void FetchAhead(DWORD place) const;
  LinkFaults MendOwnLinks();
  bool CorrectRegisteredName(HostNode& node);
  bool MendOwner(HostNode& node);
  void CutRings();
  int ConvertUnits(QFUnitsConversion& request) const;
  int RemoveFromSelection(ui_QFObject* companion);

  void StoreRecord(CArchive& ar);
  void LoadRecord(CArchive& ar);
  void LoadOwnFields(CArchive& ar);
  void LoadIndexer(CArchive& ar);
  void MakeNodes(CArchive& ar, DocumentReading* reading);
  HostNode* MakeNode(CArchive& ar, const CRuntimeClass* record);
  HostNode* StandIn(CArchive& ar, const CRuntimeClass* record);
  void LoadNodes(CArchive& ar, DocumentReading* reading);

  std::vector<HostNode*> m_nodes;  // owned
  // Owned; between the reading of a damaged archive and DeleteLostNodes.
  std::vector<HostNode*> m_lost;
  std::vector<HostNode*> m_standIns;
  std::map<std::string, DWORD> m_lostByClass;
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
  std::unique_ptr<QFDocSettings> m_settings;  // null until they are asked for
  std::vector<ui_QFObject*> m_selection;
};

}  // namespace kestrova
