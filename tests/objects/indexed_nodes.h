// What the tests of the object indexer share: nodes of chosen classes, and a helper's stored bytes from plain rows.
#pragma once

#include <string>
#include <vector>

#include "share/objects/object_indexer.h"
#include "tests/objects/loaded_object.h"
#include "tests/objects/test_document.h"

namespace kvtest {

// A node whose run-time class for the indexer, and whose own name for it, can be chosen.
class IndexedNode : public QFObject {
 public:
  explicit IndexedNode(CRuntimeClass* record = RUNTIME_CLASS(QFObject), const CString& name = CString())
      : m_record(record), m_name(name) {}
  CRuntimeClass* GetRuntimeClassForAutoIndexing() override { return m_record; }
  CString GetRegisterNodeName() override { return m_name; }

  CRuntimeClass* m_record;
  CString m_name;
};

// What the helper holds, by its stored bytes alone.
struct Entry {
  std::u16string name;
  std::vector<DWORD> ids;
  int references = 0;
};
using Entries = std::vector<Entry>;

inline std::string HelperBytes(const Entries& entries) {
  RecordBytes bytes;
  bytes.NewClass("QFObjectIndexerHelper", 2).Class(1).NewClass("QFBaseObject", 2).Word(int(entries.size()));
  for (const Entry& entry : entries) {
    if (&entry == &entries.front()) {
      bytes.NewClass("QFObjectIndexer", 2);
    } else {
      bytes.Class(4);
    }
    bytes.Class(4).Class(3).Text(entry.name).Dword(unsigned(entry.ids.size()));
    for (const DWORD id : entry.ids) bytes.Dword(id);
    bytes.Raw(entry.references);
  }
  return bytes.Get();
}

}  // namespace kvtest
