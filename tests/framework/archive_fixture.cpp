#include "tests/framework/archive_fixture.h"

#include <utility>

namespace kvtest {

IMPLEMENT_SERIAL(TNode, CObject, 1)
IMPLEMENT_SERIAL(TLink, CObject, 1)
IMPLEMENT_SERIAL(TBase, CObject, VERSIONABLE_SCHEMA | 3)
IMPLEMENT_SERIAL(TDerived, TBase, VERSIONABLE_SCHEMA | 2)

TNode::~TNode() {
  --live_nodes;
  for (POSITION at = m_Children.GetHeadPosition(); at;) delete m_Children.GetNext(at);
}

void TNode::Serialize(CArchive& ar) {
  CObject::Serialize(ar);
  Exchange(ar, m_Number);
  Exchange(ar, m_Text);
  m_Children.SerializeOwned(ar);
  Exchange(ar, m_pOther);
}

TLink::~TLink() {
  --live_nodes;
  while (TLink* next = m_pNext) {  // without recursion: chains are long
    m_pNext = std::exchange(next->m_pNext, nullptr);
    delete next;
  }
}

void TLink::Serialize(CArchive& ar) { Exchange(ar, m_pNext); }

void TBase::Serialize(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(TBase));
  m_SeenBase = ar.GetObjectSchema();
  CObject::Serialize(ar);
  Exchange(ar, m_Old);
  if (ar.IsStoring() || m_SeenBase > 2) Exchange(ar, m_New);
}

void TDerived::Serialize(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(TDerived));
  m_SeenDerived = ar.GetObjectSchema();
  TBase::Serialize(ar);
  Exchange(ar, m_Own);
}

void ExpectEveryPrefixRaises(std::string_view bytes, const std::function<void(CArchive&)>& read) {
  ExpectPrefixesRaise(bytes, read, [before = live_nodes] { EXPECT_EQ(live_nodes, before); });
}

}  // namespace kvtest
