#include "tests/framework/archive_fixture.h"

#include <algorithm>
#include <vector>

namespace kvtest {

IMPLEMENT_SERIAL(TNode, CObject, 1)
IMPLEMENT_SERIAL(TLink, CObject, 1)
IMPLEMENT_SERIAL(TBase, CObject, VERSIONABLE_SCHEMA | 3)
IMPLEMENT_SERIAL(TDerived, TBase, VERSIONABLE_SCHEMA | 2)

TNode::~TNode() {
  --live_nodes;
  for (POSITION at = m_Children.GetHeadPosition(); at;) delete m_Children.GetNext(at);
  if (m_bOwnsOther) delete m_pOther;
}

void TNode::Serialize(CArchive& ar) {
  CObject::Serialize(ar);
  if (ar.IsStoring()) {
    ar << m_Number << m_Text;
  } else {
    ar >> m_Number >> m_Text;
  }
  m_Children.SerializeOwned(ar);
  if (ar.IsStoring()) {
    ar << m_pOther;
  } else {
    const int before = live_nodes;
    ar >> m_pOther;
    m_bOwnsOther = live_nodes != before;
  }
}

TLink::~TLink() {
  --live_nodes;
  while (TLink* next = m_pNext) {  // without recursion: chains are long
    m_pNext = std::exchange(next->m_pNext, nullptr);
    delete next;
  }
}

void TLink::Serialize(CArchive& ar) {
  if (ar.IsStoring()) {
    ar << m_pNext;
  } else {
    ar >> m_pNext;
  }
}

void TBase::Serialize(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(TBase));
  m_SeenBase = ar.GetObjectSchema();
  CObject::Serialize(ar);
  if (ar.IsStoring()) {
    ar << m_Old << m_New;
  } else {
    ar >> m_Old;
    if (m_SeenBase > 2) ar >> m_New;
  }
}

void TDerived::Serialize(CArchive& ar) {
  ar.SerializeClass(RUNTIME_CLASS(TDerived));
  m_SeenDerived = ar.GetObjectSchema();
  TBase::Serialize(ar);
  if (ar.IsStoring()) {
    ar << m_Own;
  } else {
    ar >> m_Own;
  }
}

std::string Bytes(std::string_view hex) {
  std::string digits;
  std::copy_if(hex.begin(), hex.end(), std::back_inserter(digits), [](char c) { return c != ' '; });
  std::string bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) bytes += char(std::stoi(digits.substr(i, 2), nullptr, 16));
  return bytes;
}

std::string Hex(std::string_view bytes) {
  std::string hex;
  for (const char byte : bytes) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    if (!hex.empty()) hex += ' ';
    hex += kDigits[BYTE(byte) >> 4];
    hex += kDigits[byte & 0xF];
  }
  return hex;
}

std::string Store(const std::function<void(CArchive&)>& write, int bufferBytes) {
  CMemFile file;
  CArchive ar(&file, CArchive::store, bufferBytes);
  write(ar);
  ar.Close();
  return {reinterpret_cast<const char*>(file.GetData()), std::size_t(file.GetLength())};
}

void Load(std::string_view bytes, const std::function<void(CArchive&)>& read, int bufferBytes) {
  std::vector<BYTE> copy(bytes.begin(), bytes.end());  // of its own, so that a sanitizer sees a step beyond its end
  CMemFile file(copy.data(), copy.size());
  CArchive ar(&file, CArchive::load, bufferBytes);
  read(ar);
}

int CauseOf(std::string_view bytes, const std::function<void(CArchive&)>& read) {
  try {
    Load(bytes, read);
  } catch (const CArchiveException& failure) {
    return failure.m_cause;
  }
  return CArchiveException::none;
}

void ExpectEveryPrefixRaises(std::string_view bytes, const std::function<void(CArchive&)>& read) {
  const int before = live_nodes;
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    ASSERT_EQ(CauseOf(bytes.substr(0, length), read), CArchiveException::endOfFile) << "length " << length;
    ASSERT_EQ(live_nodes, before) << "length " << length;
  }
}

}  // namespace kvtest
