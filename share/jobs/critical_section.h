// QFCriticalSection, a recursive lock, and its two scope guards. Any thread may use them.
#pragma once

#include "platform/threads.h"

// A thread may lock it several times, and unlocks it once per lock. A thread that holds one does not stop in
// SuspensionPoint, so a suspended job never keeps a section locked. Destroy it only while no thread holds it.
class QFCriticalSection {
 public:
  QFCriticalSection() { InitializeCriticalSection(&m_Section); }
  ~QFCriticalSection() { DeleteCriticalSection(&m_Section); }
  QFCriticalSection(const QFCriticalSection&) = delete;
  QFCriticalSection& operator=(const QFCriticalSection&) = delete;

  void Lock() {
    EnterCriticalSection(&m_Section);
    HoldOffSuspension();
  }
  void Unlock() {
    AllowSuspension();
    LeaveCriticalSection(&m_Section);
  }
  // Tries to lock without waiting: 1 if the calling thread now holds it, 0 if another thread holds it.
  int LockIfUnlocked() {
    if (!TryEnterCriticalSection(&m_Section)) return 0;
    HoldOffSuspension();
    return 1;
  }

 private:
  CRITICAL_SECTION m_Section;
};

// Locks the section for its scope.
class QFAutoCriticalSection {
 public:
  explicit QFAutoCriticalSection(QFCriticalSection& section) : m_Section(section) { m_Section.Lock(); }
  ~QFAutoCriticalSection() { m_Section.Unlock(); }
  QFAutoCriticalSection(const QFAutoCriticalSection&) = delete;
  QFAutoCriticalSection& operator=(const QFAutoCriticalSection&) = delete;

 private:
  QFCriticalSection& m_Section;
};

// Locks in the constructor if lockNow is 1, or later by Lock or EnterIfUnlocked. Unlocks at the end of its scope if it
// has locked. It locks at most once; further calls do nothing.
class QFCriticalSectionLoader {
 public:
  QFCriticalSectionLoader(QFCriticalSection& section, int lockNow) : m_Section(section) {
    if (lockNow == 1) Lock();
  }
  ~QFCriticalSectionLoader() {
    if (m_bHolds) m_Section.Unlock();
  }
  QFCriticalSectionLoader(const QFCriticalSectionLoader&) = delete;
  QFCriticalSectionLoader& operator=(const QFCriticalSectionLoader&) = delete;

  void Lock() {
    if (!m_bHolds) m_Section.Lock();
    m_bHolds = true;
  }
  // Tries to lock without waiting: 1 if it now holds the section, 0 if another thread holds it.
  int EnterIfUnlocked() {
    if (!m_bHolds) m_bHolds = m_Section.LockIfUnlocked() != 0;
    return m_bHolds;
  }

 private:
  QFCriticalSection& m_Section;
  bool m_bHolds = false;
};
