// The object indexer of a document: for each class of nodes the ids that were ever given out in it, in order, and how
// many of the nodes are still alive. FindIndex gives a node's place among all nodes of its class.
//
// A document owns one QFObjectIndexerHelper; the library asks for it by qf_getActiveAutoIdHelper
// (share/core/document_callbacks.h). A node enters by QFObject::onCreate and leaves by ReleaseIndexer. Loading
// registers nothing anew: ids come back as they were, and the counts, which old documents lack, are put right by
// CorrectIndexersReferences once the whole document is in.
//
// The class name of a node is its GetRegisterNodeName(); where that is empty, the name of its
// GetRuntimeClassForAutoIndexing(). Names are compared exactly. A null node, and one with neither name, has no effect
// and gives -1. No operation but Serialize raises. All run on the thread that owns the document.
//
// The time of a call doesn't depend on the number of nodes: the first search in a class makes an index of its ids, and
// each later one takes in what has been added since. A document that is only loaded and saved never pays for it.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "framework/ob_list.h"
#include "share/core/base_object.h"

class IdPositions;
class IndexerNames;
class QFObject;

// The entry of one class. Made and used by the helper alone.
class KVSHARE_API QFObjectIndexer : public QFBaseObject {
  DECLARE_SERIAL(QFObjectIndexer)

 public:
  explicit QFObjectIndexer(const CString& className);
  ~QFObjectIndexer() override;

  const CString& GetIndexedClassName() const { return m_className; }

  // The row of ids. A position counts from 0; of an id that stands there more than once the first is meant.
  void AddId(DWORD id) {
    if (m_ObjectIds.empty()) m_ObjectIds.reserve(kFirstIds);
    m_ObjectIds.push_back(id);
  }
  bool HasIds() const { return !m_ObjectIds.empty(); }
  // -1 if the id is not there.
  int FindId(DWORD id);
  // Puts newId in the place of oldId. False if that is not there.
  bool ReplaceId(DWORD oldId, DWORD newId);

  // The number of nodes alive, never lowered from 0.
  int GetReferences() const { return m_nIndexReferences; }
  void SetReferences(int count) { m_nIndexReferences = count; }
  void AddReference();
  void ReleaseReference();

  // Forgets all ids; no node is alive then.
  void RemoveIds();

  // The record, schema 2: class record, that of QFBaseObject, class name, number of ids (DWORD), the ids (DWORD each),
  // number of nodes alive (32-bit). Schema 1 ends ahead of the last, which is then the number of ids. Loading appends
  // the ids. Raises what the archive raises, endOfFile too for more ids than the archive has bytes left.
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
  // Schema 2 is the first that stores the number of nodes alive (see QFObjectIndexer).
  static constexpr UINT kSchema = 2;

  QFObjectIndexerHelper();
  ~QFObjectIndexerHelper() override;

  // Appends the node's id, which is drawn now if it has none, to the entry of its class, which is made if there is
  // none, and counts one more alive. The node gets the class name as its registered name. A second call appends the id
  // again.
  void AddObj(QFObject* object);

  // The new node takes over the old one's place, and the class name as its registered name. An old node that is not
  // listed changes nothing. The number of nodes alive stays.
  void ReplaceObj(QFObject* oldObject, QFObject* newObject);

  // The node's position in its class, from 0, also after ReleaseIndexer; -1 if its id is not listed there.
  int FindIndex(QFObject* object);

  // Counts one less alive in the class of the node's registered name. The id stays, so that no later node's position
  // shifts while the document lives.
  void ReleaseIndexer(QFObject* object);

  // Drops the ids of every class that has no node alive. Its entry stays.
  void ClearUnusedIndexers();

  // Deletes all entries.
  void RemoveAll();

  // Sets the number of nodes alive in each class to that in the map, after a load. A class that the map lacks gets 0
  // and is entered in the map. Left alone are entries without a name and the classes "QFActiveToolSet" and
  // "QFToolStation", whose objects are no nodes of the document. An empty map changes nothing.
  void CorrectIndexersReferences(std::map<CString, int>& counts);

  // Appends the entries, QFObjectIndexer each, in order of first use; they stay the helper's. A damaged document brings
  // null ones along, which are passed over.
  void GetAllIndexers(CObList& list) const;

  // The schema with which the document was read; 2 for a helper made new.
  UINT GetObjectSchemaNumber() const { return m_nObjectSchemaNumber; }

  // The record, schemas 1 and 2 alike: class record, that of QFBaseObject, the list of entries. Loading appends. Raises
  // what the archive raises, badIndex for an entry that stands in it twice.
  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;

 private:
  bool IsNonNodeIndexerClass(const CString& className) const;
  IndexerNames& Names();
  // The entries with the node's class name; none if it has no name.
  const std::vector<QFObjectIndexer*>& EntriesOf(QFObject& node);
  // Null if the node has no name.
  QFObjectIndexer* AddEntryFor(QFObject& node);

  CObList m_ObjIndexerList;  // of QFObjectIndexer, owned, in order of first use; a damaged document brings nulls along
  UINT m_nObjectSchemaNumber = kSchema;
  std::unique_ptr<IndexerNames> m_names;  // null until the first search, and after loading
};
