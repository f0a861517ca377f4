#include "share/machine/channel.h"

#include <memory>

CQVMToolData::~CQVMToolData() {
  while (!m_toolNodes.IsEmpty()) delete m_toolNodes.RemoveHead();
}

CQVMChannel::~CQVMChannel() = default;

void CQVMChannel::SetToolTarget(MDTurretType target) {
  m_tool.m_nToolTarget = target;
  if (m_strName.CompareNoCase(_T("Front1")) == 0 || m_strName.CompareNoCase(_T("Front2")) == 0) {
    m_tool.m_bFrontTurret = 1;
  }
}

void CQVMChannel::AddToolNode(CQVMToolNode* node) {
  std::unique_ptr<CQVMToolNode> owned(node);
  if (node) m_tool.m_toolNodes.AddTail(node);
  static_cast<void>(owned.release());
}

const CQVMToolNode* CQVMChannel::FindToolNode(int pos) const {
  for (POSITION at = m_tool.m_toolNodes.GetHeadPosition(); at;) {
    const auto* node = static_cast<const CQVMToolNode*>(m_tool.m_toolNodes.GetNext(at));
    if (node->GetID() == pos) return node;
  }
  return nullptr;
}

FRVector CQVMChannel::GetAttachVectorX(int pos) const {
  const CQVMToolNode* node = FindToolNode(pos);
  return node ? node->m_vectorX : FRVector();
}

FRVector CQVMChannel::GetAttachLocation(int pos) const {
  const CQVMToolNode* node = FindToolNode(pos);
  return node ? node->m_location : FRVector();
}

FRVector CQVMChannel::GetToolVectorX(int pos) const { return GetToolVectorX(FindToolNode(pos)); }

FRVector CQVMChannel::GetToolVectorX(const CQVMToolNode* node) const {
  const FRVector vector = node ? node->m_vectorX : FRVector();
  return GetToolGaugeX() >= 0.0 ? -vector : vector;
}

void CQVMChannel::SetFixtureStatus(int index, int status) {
  if (IsFixture(index)) m_fixtures[index].m_nStatus = status;
}

int CQVMChannel::GetFixtureStatus(int index) const { return IsFixture(index) ? m_fixtures[index].m_nStatus : 0; }

void CQVMChannel::Set4thAxisFixtureDirType(CMDirType direction, int index) {
  if (IsFixture(index)) m_fixtures[index].m_n4thAxisDir = direction;
}

CMDirType CQVMChannel::Get4thAxisFixtureDirType(int index) const {
  return IsFixture(index) ? m_fixtures[index].m_n4thAxisDir : CM_DIR_NONE;
}

void CQVMChannel::Set5thAxisFixtureDirType(CMDirType direction, int index) {
  if (IsFixture(index)) m_fixtures[index].m_n5thAxisDir = direction;
}

CMDirType CQVMChannel::Get5thAxisFixtureDirType(int index) const {
  return IsFixture(index) ? m_fixtures[index].m_n5thAxisDir : CM_DIR_NONE;
}
