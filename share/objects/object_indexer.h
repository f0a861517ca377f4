// The object indexer of a document. For each class of nodes it holds the ids of all nodes that were ever added, in
// order, and the number of nodes that still exist. FindIndex returns a node's position among the nodes of its class.
//
// A document owns one QFObjectIndexerHelper, which qf_getActiveAutoIdHelper returns (see document_callbacks.h).
// QFObject::onCreate adds a node, ReleaseIndexer removes it from the count. Loading a node adds nothing: the helper's
// record holds the ids, and CorrectIndexersReferences sets the counts after the whole document is loaded, because old
// documents lack them.
//
// The class name of a node is its GetRegisterNodeName(), or if that is empty the name of its
// GetRuntimeClassForAutoIndexing(). Names are compared exactly. For a null node, or a node without a class name, all
// operations do nothing and FindIndex returns -1. Only Serialize raises exceptions. All operations run on the thread
// that owns the document.
//
// The time of a call does not depend on the number of nodes: the first search in a class builds an index of its ids,
// and each later search adds the new ids to it. Only loading and saving a document builds no index.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "framework/ob_list.h"
#include "share/core/base_object.h"

class IdPositions;
class IndexerNames;
class QFObject;

// The entry of one class. Only the helper creates and changes entries.
class KVSHARE_API QFObjectIndexer : public QFBaseObject {
  DECLARE_SERIAL(QFObjectIndexer)

 public:
  explicit QFObjectIndexer(const CString& className);
  ~QFObjectIndexer() override;

  const CString& GetIndexedClassName() const { return m_className; }

  // The row of ids; it may hold an id more than once. Positions count from 0.
  void AddId(DWORD id) {
    if (m_ObjectIds.empty()) m_ObjectIds.reserve(kFirstIds);
    m_ObjectIds.push_back(id);
  }
  bool HasIds() const { return !m_ObjectIds.empty(); }
  // Returns the id's first position; -1 if the row does not have it.
  int FindId(DWORD id);
  // Replaces the first oldId by newId. False if the row does not have oldId.
  bool ReplaceId(DWORD oldId, DWORD newId);

  // The number of existing nodes. ReleaseReference does not lower 0.
  int GetReferences() const { return m_nIndexReferences; }
  void SetReferences(int count) { m_nIndexReferences = count; }
  void AddReference();
  void ReleaseReference();

  // Removes all ids and sets the number of existing nodes to 0.
  void RemoveIds();

  // The record, schema 2: class record, QFBaseObject's record, class name, number of ids (DWORD), the ids (DWORD each),
  // number of existing nodes (32 bits). Schema 1 lacks the last field; it becomes the number of ids. Loading appends
  // the ids. Passes the archive's exceptions on; raises endOfFile for more ids than bytes are left.
  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;

 protected:
  QFObjectIndexer();

 private:
  static constexpr std::size_t kFirstIds = 16;

  IdPositions& Positions();

  CString m_className;
  std::vector<DWORD> m_ObjectIds;  // in order of registration
  int m_nIndexReferences = 0;
  std::unique_ptr<IdPositions> m_positions;  // null until the first search
};

class KVSHARE_API QFObjectIndexerHelper : public QFBaseObject {
  DECLARE_SERIAL(QFObjectIndexerHelper)

 public:
  // Schema 2 adds the number of existing nodes to the entries.
  static constexpr UINT kSchema = 2;

  QFObjectIndexerHelper();
  ~QFObjectIndexerHelper() override;

  // Adds the node: appends its id to the entry of its class, counts one more existing node, and sets the node's
  // registered name to the class name. Creates the entry, and the node's id (GetObjectId), if necessary. A second call
  // appends the id again.
  void AddObj(QFObject* object);

  // Puts the new node's id at the old node's position and sets the new node's registered name. Does nothing if the old
  // node is not listed. The count of existing nodes does not change.
  void ReplaceObj(QFObject* oldObject, QFObject* newObject);

  // Returns the node's position in its class, from 0, also after ReleaseIndexer; -1 if its id is not listed.
  int FindIndex(QFObject* object);

  // Counts one existing node less in the class of the node's registered name. The id stays, so that the positions of
  // later nodes do not change while the document is open.
  void ReleaseIndexer(QFObject* object);

  // Removes the ids of every class without existing nodes. Its entry stays.
  void ClearUnusedIndexers();

  // Deletes all entries.
  void RemoveAll();

  // Sets the number of existing nodes of each class to the map's number, after a load. A class that the map lacks gets
  // 0 and is added to the map. Skips entries without a name, and the classes "QFActiveToolSet" and "QFToolStation",
  // whose objects are not nodes of the document. An empty map changes nothing.
  void CorrectIndexersReferences(std::map<CString, int>& counts);

  // Appends the entries (QFObjectIndexer) in order of first use; the helper still owns them. Skips the null entries of
  // a damaged document.
  void GetAllIndexers(CObList& list) const;

  // The schema of the loaded record; 2 for a new helper.
  UINT GetObjectSchemaNumber() const { return m_nObjectSchemaNumber; }

  // The record, the same in schemas 1 and 2: class record, QFBaseObject's record, list of entries. Loading appends.
  // Passes the archive's exceptions on; raises badIndex for an entry that is in the list twice.
  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;

 private:
  bool IsNonNodeIndexerClass(const CString& className) const;
  IndexerNames& Names();
  // The entries with the node's class name; empty for a node without one.
  const std::vector<QFObjectIndexer*>& EntriesOf(QFObject& node);
  // Null for a node without a class name.
  QFObjectIndexer* AddEntryFor(QFObject& node);

  CObList m_ObjIndexerList;  // QFObjectIndexer or null (damaged document); owned
  UINT m_nObjectSchemaNumber = kSchema;
  std::unique_ptr<IndexerNames> m_names;  // null until the first search, and after loading
};
