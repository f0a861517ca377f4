// Serial classes for the archive's tests.
#pragma once

#include <gtest/gtest.h>

#include "framework/ob_list.h"
#include "tests/archive_bytes.h"

namespace kvtest {

// The number of existing objects of the fixture's classes.
inline int live_nodes = 0;

// Owned children, a plain pointer and a text; schema 1, not versionable.
class TNode : public CObject {
  DECLARE_SERIAL(TNode)

 public:
  explicit TNode(DWORD number) : TNode() { m_Number = number; }
  ~TNode() override;
  void Serialize(CArchive& ar) override;

  DWORD m_Number = 0;
  CString m_Text;
  CObList m_Children;  // owned
  TNode* m_pOther = nullptr;

 protected:
  TNode() { ++live_nodes; }
};

// One owned link, for chains.
class TLink : public CObject {
  DECLARE_SERIAL(TLink)

 public:
  TLink() { ++live_nodes; }
  ~TLink() override;
  void Serialize(CArchive& ar) override;

  TLink* m_pNext = nullptr;
};

// Two levels, each with its own class record; versionable, schemas 3 and 2. m_Seen... is the result of GetObjectSchema
// at each level.
class TBase : public CObject {
  DECLARE_SERIAL(TBase)

 public:
  TBase() { ++live_nodes; }
  ~TBase() override { --live_nodes; }
  void Serialize(CArchive& ar) override;

  WORD m_Old = 0;
  WORD m_New = 0;  // since schema 3
  UINT m_SeenBase = 0;
};
class TDerived : public TBase {
  DECLARE_SERIAL(TDerived)

 public:
  void Serialize(CArchive& ar) override;

  WORD m_Own = 0;
  UINT m_SeenDerived = 0;
};

// Expects that reading each proper prefix of the bytes raises endOfFile and leaves no object behind.
void ExpectEveryPrefixRaises(std::string_view bytes, const std::function<void(CArchive&)>& read);

}  // namespace kvtest
