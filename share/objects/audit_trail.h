// AuditTrail, who made a node and when, and who changed it last and when. One pointer; nodes with the same trail share
// it, since most nodes of a document were made or changed together with others. An empty one allocates nothing. Copies
// may be made and dropped on any thread, as a CString's.
#pragma once

#include <atomic>
#include <utility>

#include "framework/block_pool.h"
#include "framework/text.h"

class KVSHARE_API AuditTrail {
 public:
  struct Texts {
    CString createdBy;
    CString dateCreated;
    CString lastModified;
    CString lastModifiedBy;
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

  // The stamp of this moment, "date::time of day" as the environment tells them.
  static CString Now();

  // Good until this trail, or the last that shares its texts, is changed or dropped.
  const Texts& Get() const { return m_pBody ? m_pBody->texts : Empty(); }
  // The texts for changing, after making them this trail's own.
  Texts& Change();
  // Whether both have the same texts in the same memory; so have two that are empty.
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
