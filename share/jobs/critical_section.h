// A recursive lock and its two scope guards.
#pragma once

#include "platform/threads.h"

// The thread that holds it may lock it again and unlocks as often as it locked. A thread that holds one is not held up
// by SuspensionPoint.
class QFCriticalSection {
 public:
  QFCriticalSection() { InitializeCriticalSection(&m_Section); }
  ~QFCriticalSection() { DeleteCriticalSection(&m_Section); }
  QFCriticalSection(const QFCriticalSection&) = delete;
  QFCriticalSection& operator=(const QFCriticalSection&) = delete;

  void Lock() { EnterCriticalSection(&m_Section); }
  void Unlock() { LeaveCriticalSection(&m_Section); }
  // 1 if the calling thread holds it now, 0 at once if another thread does.
  int LockIfUnlocked() { return TryEnterCriticalSection(&m_Section) ? 1 : 0; }

 private:
  CRITICAL_SECTION m_Section;
};

// Holds the section for its scope.
class QFAutoCriticalSection {
 public:
  explicit QFAutoCriticalSection(QFCriticalSection& section) : m_Section(section) { m_Section.Lock(); }
  ~QFAutoCriticalSection() { m_Section.Unlock(); }
  QFAutoCriticalSection(const QFAutoCriticalSection&) = delete;
  QFAutoCriticalSection& operator=(const QFAutoCriticalSection&) = delete;

 private:
  QFCriticalSection& m_Section;
};

// Locks at once if lockNow is 1, or later, and unlocks at the end of its scope if it holds the section. It locks once:
// a second call does nothing.
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
  // 1 if it holds the section now, 0 at once if another thread does.
  int EnterIfUnlocked() {
    if (!m_bHolds) m_bHolds = m_Section.LockIfUnlocked() != 0;
    return m_bHolds;
  }

 private:
  QFCriticalSection& m_Section;
  bool m_bHolds = false;
};
