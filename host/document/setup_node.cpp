#include "host/document/setup_node.h"

#include "framework/archive.h"
#include "share/core/dump.h"
#include "share/utilities/units.h"

namespace kestrova {

IMPLEMENT_SERIAL(HostSetup, HostNode, VERSIONABLE_SCHEMA | 1)

void HostSetup::Serialize(CArchive& ar) {
  BeginLevel(ar, RUNTIME_CLASS(HostSetup));
  HostNode::Serialize(ar);
  m_frame.Serialize(ar);
}

int HostSetup::CopyParameters(QFObject* source) {
  if (const auto* setup = DYNAMIC_DOWNCAST(HostSetup, source)) {
    m_frame.SetDirection(setup->m_frame.Direction());
    m_frame.SetReferencePosition(setup->m_frame.GetReferencePosition());
    m_frame.SetAngle(setup->m_frame.GetAngle());
    m_frame.SetFromPoint(setup->m_frame.FromPoint());
    m_frame.SetClearance(setup->m_frame.Clearance());
  }
  return HostNode::CopyParameters(source);
}

QFObject* HostSetup::Clone() { return CloneInto(std::make_unique<HostSetup>()); }

bool HostSetup::IsLike(const HostNode& other) const {
  const QFSetupParamHelper& frame = static_cast<const HostSetup&>(other).m_frame;
  return m_frame.Direction() == frame.Direction() && m_frame.GetReferencePosition() == frame.GetReferencePosition() &&
         m_frame.FromPoint() == frame.FromPoint() && SameLength(m_frame.Clearance(), frame.Clearance()) &&
         SameLength(m_frame.GetAngle(), frame.GetAngle());
}

CString HostSetup::Facts() const {
  const FRUnitVector axis = m_frame.Direction();
  CString text;
  // Adding 0 turns -0 into 0.
  text.Format(_T("axis %g %g %g, turned %s, clearance %s"), axis.x() + 0, axis.y() + 0, axis.z() + 0,
              ConvertAngleToUserUnits(m_frame.GetAngle()), ConvertLengthToUserUnits(m_frame.Clearance()));
  return text;
}

void HostSetup::ListFacts(NodeFacts& facts) const {
  facts.Direction("axis", m_frame.Direction());
  facts.Angle("turned", m_frame.GetAngle());
  facts.Length("clearance", m_frame.Clearance());
}

void HostSetup::DumpData(FILE* file) {
  if (!file) return;
  HostNode::DumpData(file);
  const auto triple = [&](LPCTSTR name, double x, double y, double z) {
    DumpPrint(file, _T("\n %s: %g %g %g"), name, x, y, z);
  };
  const FRUnitVector axis = m_frame.Direction();
  const FRPosition origin = m_frame.GetReferencePosition();
  const FRPosition from = m_frame.FromPoint();
  DumpBanner(file, _T("HostSetup"), _T("Start"));
  triple(_T("m_Direction"), axis.x(), axis.y(), axis.z());
  triple(_T("m_ReferencePosition"), origin.x(), origin.y(), origin.z());
  DumpPrint(file, _T("\n m_Angle: %g"), m_frame.GetAngle());
  triple(_T("m_FromPoint"), from.x(), from.y(), from.z());
  DumpPrint(file, _T("\n m_Clearance: %g"), m_frame.Clearance());
  DumpBanner(file, _T("HostSetup"), _T("End"));
}

HostSetup* SetupOf(const QFObject& node) {
  constexpr int kMostOwners = 64;  // a damaged file can have a ring of owners
  QFObject* at = node.GetOwner();
  for (int up = 0; at && up < kMostOwners; ++up, at = at->GetOwner())
    if (auto* const setup = DYNAMIC_DOWNCAST(HostSetup, at)) return setup;
  return nullptr;
}

}  // namespace kestrova
