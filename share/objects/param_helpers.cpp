// The records of the helpers, and the setup's frame.
#include "share/objects/param_helpers.h"

#include "share/objects/geometry_archive.h"
#include "share/utilities/geometry_helpers.h"

IMPLEMENT_DYNAMIC(QFParamHelper, CObject)
IMPLEMENT_SERIAL(QFDocParamHelper, QFParamHelper, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(QFSetupParamHelper, QFParamHelper, VERSIONABLE_SCHEMA | 1)

void QFDocParamHelper::Serialize(CArchive& ar) {
  CObject::Serialize(ar);
  if (ar.IsStoring()) {
    ar << m_nDocUnits;
  } else {
    ar >> m_nDocUnits;
  }
}

FRTransf QFSetupParamHelper::Transform() const { return GetXYTransform(m_Direction, m_ReferencePosition, m_Angle); }

void QFSetupParamHelper::Serialize(CArchive& ar) {
  CObject::Serialize(ar);
  if (ar.IsStoring()) {
    ar << m_Direction << m_ReferencePosition << m_FromPoint << m_Clearance << m_Angle;
  } else {
    ar >> m_Direction >> m_ReferencePosition >> m_FromPoint >> m_Clearance >> m_Angle;
  }
}
