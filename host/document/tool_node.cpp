#include "host/document/tool_node.h"

#include "framework/archive.h"
#include "framework/ob_list.h"
#include "host/document/operation_node.h"
#include "share/core/dump.h"
#include "share/objects/serialize_notify.h"
#include "share/utilities/units.h"

namespace kestrova {

IMPLEMENT_SERIAL(HostTool, HostNode, VERSIONABLE_SCHEMA | 1)

LPCTSTR TextOf(ToolKind kind) {
  switch (kind) {
    case ToolKind::kFlatEndMill: return _T("flat end mill");
    case ToolKind::kBallEndMill: return _T("ball end mill");
    case ToolKind::kDrill: return _T("drill");
    case ToolKind::kCentreDrill: return _T("centre drill");
    case ToolKind::kTap: return _T("tap");
  }
  return _T("unknown kind");
}

HostTool::~HostTool() {
  if (m_awaitsNotice) QFSerializeNotify::RemoveFromNotification(this);
}

void HostTool::Set(ToolKind kind, double diameter, double length) {
  m_kind = kind;
  m_diameter = diameter;
  m_length = length;
}

void HostTool::Serialize(CArchive& ar) {
  BeginLevel(ar, RUNTIME_CLASS(HostTool));
  HostNode::Serialize(ar);
  if (ar.IsStoring()) {
    ar << int(m_kind) << m_diameter << m_length;
    return;
  }
  int kind = 0;
  ar >> kind >> m_diameter >> m_length;
  m_kind = ToolKind(kind);
  m_awaitsNotice = QFSerializeNotify::RegisterForNotification(this) !=
                   0;  // last: a damaged tool does not wait for the end of the load
}

void HostTool::OnPostLoadFromStorageNotify() {
  m_awaitsNotice = false;
  RemoveDuplicatesFromUserObjects();
}

LinkFaults HostTool::RepairLinks(const HostDocument& document) {
  LinkFaults faults = HostNode::RepairLinks(document);
  CObList users;
  GetAllUserObjects(&users);
  for (POSITION at = users.GetHeadPosition(); at;) {
    auto* operation = DYNAMIC_DOWNCAST(HostOperation, users.GetNext(at));
    if (!operation || operation->Tool() == this || operation->GetOriginalOwner() == this) continue;
    RemoveFromUserObjectsList(operation);
    ++faults.oneSided;
  }
  return faults;
}

int HostTool::CopyParameters(QFObject* source) {
  if (const auto* tool = DYNAMIC_DOWNCAST(HostTool, source)) Set(tool->m_kind, tool->m_diameter, tool->m_length);
  return HostNode::CopyParameters(source);
}

QFObject* HostTool::Clone() { return CloneInto(std::make_unique<HostTool>()); }

bool HostTool::IsLike(const HostNode& other) const {
  const auto& tool = static_cast<const HostTool&>(other);
  return m_kind == tool.m_kind && SameLength(m_diameter, tool.m_diameter) && SameLength(m_length, tool.m_length);
}

CString HostTool::Facts() const {
  CString text;
  text.Format(_T("%s, diameter %s, length %s"), TextOf(m_kind), ConvertLengthToUserUnits(m_diameter),
              ConvertLengthToUserUnits(m_length));
  return text;
}

void HostTool::ListFacts(NodeFacts& facts) const {
  facts.Text("kind", TextOf(m_kind));
  facts.Length("diameter", m_diameter);
  facts.Length("length", m_length);
}

void HostTool::DumpData(FILE* file) {
  if (!file) return;
  HostNode::DumpData(file);
  DumpBanner(file, _T("HostTool"), _T("Start"));
  DumpPrint(file, _T("\n m_kind : %s"), TextOf(m_kind));
  DumpPrint(file, _T("\n m_diameter: %g"), m_diameter);
  DumpPrint(file, _T("\n m_length: %g"), m_length);
  DumpUserObjs(file);
  DumpBanner(file, _T("HostTool"), _T("End"));
}

}  // namespace kestrova
