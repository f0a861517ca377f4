#include "share/jobs/job_link.h"

QFThreadDataLink& QFThreadDataLink::operator=(const QFThreadDataLink& other) {
  m_IdentifierA = other.m_IdentifierA.load();
  m_IdentifierB = other.m_IdentifierB.load();
  m_GroupNum = other.m_GroupNum.load();
  return *this;
}

QFThreadDataLink::~QFThreadDataLink() {
  m_IdentifierA = nullptr;
  m_IdentifierB = nullptr;
}
