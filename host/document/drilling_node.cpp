#include "host/document/drilling_node.h"

#include "framework/archive.h"
#include "share/core/dump.h"
#include "share/utilities/units.h"

namespace kestrova {

IMPLEMENT_SERIAL(HostDrilling, HostOperation, VERSIONABLE_SCHEMA | 1)

void HostDrilling::Serialize(CArchive& ar) {
  BeginLevel(ar, RUNTIME_CLASS(HostDrilling));
  HostOperation::Serialize(ar);
  if (ar.IsStoring()) {
    ar << m_peck;
  } else {
    ar >> m_peck;
  }
}

int HostDrilling::CopyParameters(QFObject* source) {
  if (const auto* drilling = DYNAMIC_DOWNCAST(HostDrilling, source)) m_peck = drilling->m_peck;
  return HostOperation::CopyParameters(source);
}

QFObject* HostDrilling::Clone() { return CloneInto(std::make_unique<HostDrilling>()); }

bool HostDrilling::IsLike(const HostNode& other) const {
  return HostOperation::IsLike(other) && SameLength(m_peck, static_cast<const HostDrilling&>(other).m_peck);
}

CString HostDrilling::Facts() const {
  const CString text = HostOperation::Facts();
  return m_peck > 0 ? text + _T(", peck ") + ConvertLengthToUserUnits(m_peck) : text;
}

void HostDrilling::ListFacts(NodeFacts& facts) const {
  HostOperation::ListFacts(facts);
  facts.Length("peck", m_peck);
}

void HostDrilling::DumpData(FILE* file) {
  if (!file) return;
  HostOperation::DumpData(file);
  DumpBanner(file, _T("HostDrilling"), _T("Start"));
  DumpPrint(file, _T("\n m_peck: %g"), m_peck);
  DumpBanner(file, _T("HostDrilling"), _T("End"));
}

}  // namespace kestrova
