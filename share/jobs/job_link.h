// QFThreadDataLink names the target of a job. The parameter of a request is null, or the address of a QFThreadDataLink
// or of an object whose first base class is one (the address is passed as void*).
//
// Two jobs with equal identifiers A and B have the same target. A request terminates running jobs with the same command
// and target, unless both links are in one group: their group numbers are equal and not 0.
//
// The requesting module owns the link and keeps it until the job's thread has ended. Any thread may read and change it
// meanwhile; each field is atomic by itself.
#pragma once

#include <atomic>

#include "platform/types.h"

class KVSHARE_API QFThreadDataLink {
 public:
  QFThreadDataLink() = default;
  QFThreadDataLink(const QFThreadDataLink& other) { *this = other; }
  QFThreadDataLink& operator=(const QFThreadDataLink& other);
  // Sets both identifiers to null.
  virtual ~QFThreadDataLink();

  void* GetIdentifierA() const { return m_IdentifierA; }
  void SetIdentifierA(void* identifier) { m_IdentifierA = identifier; }
  void* GetIdentifierB() const { return m_IdentifierB; }
  void SetIdentifierB(void* identifier) { m_IdentifierB = identifier; }
  // 0 (the default) means no group.
  unsigned GetGroupNum() const { return m_GroupNum; }
  void SetGroupNum(unsigned group) { m_GroupNum = group; }

  // Whether both identifiers are equal.
  bool HasTargetOf(const QFThreadDataLink& other) const {
    return m_IdentifierA == other.m_IdentifierA && m_IdentifierB == other.m_IdentifierB;
  }
  // Whether the group numbers are equal and not 0.
  bool HasGroupOf(const QFThreadDataLink& other) const {
    const unsigned group = m_GroupNum;
    return group != 0 && group == other.m_GroupNum;
  }

 private:
  std::atomic<void*> m_IdentifierA = nullptr;
  std::atomic<void*> m_IdentifierB = nullptr;
  std::atomic<unsigned> m_GroupNum = 0;
};
