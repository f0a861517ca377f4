// Walks over the manager's list. Call them under the lock of share/objects/job_lock.h.
#pragma once

#include <utility>

#include "share/jobs/job_manager.h"

template <class Visit>
QFThreadData* QFThreadBaseMgr::FindFirst(Visit visit) const {
  for (POSITION at = m_ThreadList.GetHeadPosition(); at;) {
    auto* data = static_cast<QFThreadData*>(m_ThreadList.GetNext(at));
    if (visit(std::as_const(*data))) return data;
  }
  return nullptr;
}

template <class Visit>
QFThreadData* QFThreadBaseMgr::FindLast(Visit visit) const {
  for (POSITION at = m_ThreadList.GetTailPosition(); at;) {
    auto* data = static_cast<QFThreadData*>(m_ThreadList.GetPrev(at));
    if (visit(std::as_const(*data))) return data;
  }
  return nullptr;
}

template <class Visit>
int QFThreadBaseMgr::Count(Visit visit) const {
  int count = 0;
  FindFirst([&](const QFThreadData& data) {
    count += visit(data);
    return false;
  });
  return count;
}
