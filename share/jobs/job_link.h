// QFThreadDataLink, by which whoever asks for a job says what it works on: the parameter of a request is null, or the
// address of a link or of something derived from it.
//
// Two jobs with the same two identifiers work on the same target. Their group numbers say whether they may live side by
// side: a new job ends a running one on its target unless both are of one group, which has a number other than 0.
//
// A link stays its owner's. It has to live until the job's thread has ended, and any thread reads it meanwhile, which
// is safe: changes are seen at once, and each field for itself.
#pragma once

#include <atomic>

#include "platform/types.h"

class KVSHARE_API QFThreadDataLink {
 public:
  QFThreadDataLink() = default;
  QFThreadDataLink(const QFThreadDataLink& other) { *this = other; }
  QFThreadDataLink& operator=(const QFThreadDataLink& other);
  // Clears both identifiers.
  virtual ~QFThreadDataLink();

  void* GetIdentifierA() const { return m_IdentifierA; }
  void SetIdentifierA(void* identifier) { m_IdentifierA = identifier; }
  void* GetIdentifierB() const { return m_IdentifierB; }
  void SetIdentifierB(void* identifier) { m_IdentifierB = identifier; }
  // 0 is no group.
  unsigned GetGroupNum() const { return m_GroupNum; }
  void SetGroupNum(unsigned group) { m_GroupNum = group; }

  // The same identifiers A and B.
  bool HasTargetOf(const QFThreadDataLink& other) const {
    return m_IdentifierA == other.m_IdentifierA && m_IdentifierB == other.m_IdentifierB;
  }
  // The same group, and one at all.
  bool HasGroupOf(const QFThreadDataLink& other) const {
    const unsigned group = m_GroupNum;
    return group != 0 && group == other.m_GroupNum;
  }

 private:
  std::atomic<void*> m_IdentifierA = nullptr;
  std::atomic<void*> m_IdentifierB = nullptr;
  std::atomic<unsigned> m_GroupNum = 0;
};
