// AuditTrail, the four stamps of a node: who created it and when, who changed it last and when.
//
// A trail is a value of the size of one pointer. Copies share one block of four texts, because most nodes of a document
// are created or changed together with others; Change() copies the block first if it is shared. The last trail that
// uses a block deletes it. An empty trail has no block. Texts have no length limit.
//
// The trail has no record: QFObject stores it as the fields 5 to 7 and 11 of its record, four texts
// (share/objects/object_record.cpp). Records of schema 1 and 2 lack lastModifiedBy, which then becomes createdBy.
//
// Nothing fails except by std::bad_alloc from Change(). Threads may copy, assign and destroy trails that share a block
// at the same time; one trail object is used by one thread at a time.
#pragma once

#include <atomic>
#include <utility>

#include "framework/block_pool.h"
#include "framework/text.h"

class KVSHARE_API AuditTrail {
 public:
  struct Texts {
    CString createdBy;       // user name
    CString dateCreated;     // a stamp as Now() returns it
    CString lastModified;    // a stamp
    CString lastModifiedBy;  // user name
  };

  AuditTrail() = default;
  AuditTrail(const AuditTrail& other) : m_pBody(other.m_pBody) {
    if (m_pBody) m_pBody->users.fetch_add(1, std::memory_order_relaxed);
  }
  AuditTrail(AuditTrail&& other) noexcept : m_pBody(std::exchange(other.m_pBody, nullptr)) {}
  AuditTrail& operator=(AuditTrail&& other) noexcept {
    std::swap(m_pBody, other.m_pBody);
    return *this;
  }
  AuditTrail& operator=(const AuditTrail& other) {
    if (other.m_pBody == m_pBody) return *this;
    AuditTrail copy(other);
    std::swap(m_pBody, copy.m_pBody);
    return *this;
  }
  ~AuditTrail() { Release(); }

  // The present local time as "MM/DD/YYYY::hh:mm", from the environment; empty without an environment.
  static CString Now();

  // The texts; all four are empty in an empty trail. The reference is valid until this trail is changed, assigned or
  // destroyed.
  const Texts& Get() const { return m_pBody ? m_pBody->texts : Empty(); }
  // The texts for writing; other trails keep theirs. The reference is valid until this trail is copied, assigned or
  // destroyed: writing after a copy would change the copy, too.
  Texts& Change();
  // True if both trails use the same block, or both have none. Equal texts in two blocks give false.
  bool SharesWith(const AuditTrail& other) const { return m_pBody == other.m_pBody; }

 private:
  template <class>
  friend class CountedBatch;

  struct Body {
    static void* operator new(std::size_t bytes) { return BlockPool::Allocate(bytes); }
    static void operator delete(void* block, std::size_t bytes) noexcept { BlockPool::Free(block, bytes); }

    std::atomic<int> users = 1;
    Texts texts;
  };

  static const Texts& Empty();
  void AddUsers(int count) {
    if (m_pBody) m_pBody->users.fetch_add(count, std::memory_order_acq_rel);
  }
  static AuditTrail Adopt(const AuditTrail& counted) {
    AuditTrail copy;
    copy.m_pBody = counted.m_pBody;
    return copy;
  }
  void Release() {
    if (m_pBody && m_pBody->users.fetch_sub(1, std::memory_order_acq_rel) == 1) delete m_pBody;
  }

  Body* m_pBody = nullptr;
};
