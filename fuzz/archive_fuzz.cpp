// Loads any bytes as an archive of objects with texts, owned lists, plain references, arrays and versions. A failed
// load must throw CArchiveException, and no object may leak.
#include <cstdlib>

#include "framework/archive.h"
#include "framework/array.h"
#include "framework/ob_list.h"

namespace kvfuzz {

static int live = 0;

class FNode : public CObject {
  DECLARE_SERIAL(FNode)

 public:
  FNode() { ++live; }
  ~FNode() override {
    --live;
    for (POSITION at = m_children.GetHeadPosition(); at;) delete m_children.GetNext(at);
    if (m_ownsOther) delete m_other;
  }
  void Serialize(CArchive& ar) override {
    ar.SerializeClass(RUNTIME_CLASS(FNode));
    const UINT schema = ar.GetObjectSchema();
    CObject::Serialize(ar);
    ar >> m_text;
    m_numbers.Serialize(ar);
    m_children.SerializeOwned(ar, RUNTIME_CLASS(FNode));
    const int before = live;
    if (schema > 1) ar >> m_other;
    m_ownsOther = live != before;  // a plain reference created a new object, which has no other owner
  }

  CString m_text;
  CArray<int, int> m_numbers;
  CObList m_children;
  FNode* m_other = nullptr;
  bool m_ownsOther = false;
};
IMPLEMENT_SERIAL(FNode, CObject, VERSIONABLE_SCHEMA | 2)

class FLeaf : public FNode {
  DECLARE_SERIAL(FLeaf)

 public:
  void Serialize(CArchive& ar) override { ar >> m_value; }

  double m_value = 0;
};
IMPLEMENT_SERIAL(FLeaf, FNode, 1)

}  // namespace kvfuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  CMemFile file(const_cast<BYTE*>(data), size);
  CArchive ar(&file, CArchive::load, 128);
  try {
    kvfuzz::FNode* root = nullptr;
    ar >> root;
    delete root;
  } catch (const CArchiveException&) {
  }
  if (kvfuzz::live != 0) std::abort();
  return 0;
}
