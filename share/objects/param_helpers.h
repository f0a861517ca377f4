// What a node tells shared code of its parameters, without that code knowing the node's class: the helpers that
// QFObject::GetParamHelper hands out. One is for a document, one for the frame of a setup.
//
// A helper is the node's own and is used on the node's thread. As an object in an archive each has its header and its
// record; there is no class record inside, so the header's schema is all the version there is. Serialize raises what
// the archive raises.
#pragma once

#include "companions/geometry/transforms.h"
#include "framework/object.h"
#include "share/core/version_info.h"

// The common root; it tells nothing.
class KVSHARE_API QFParamHelper : public CObject {
  DECLARE_DYNAMIC(QFParamHelper)

 protected:
  QFParamHelper() = default;
};

// What a document says of itself.
class KVSHARE_API QFDocParamHelper : public QFParamHelper {
  DECLARE_SERIAL(QFDocParamHelper)

 public:
  explicit QFDocParamHelper(int units) : m_nDocUnits(units) {}

  // The unit code: 0 millimetres, for the others see IsUnitsMetric (share/core/document_messages.h); -1 unknown.
  int GetDocParamUnits() const { return m_nDocUnits; }
  void SetDocParamUnits(int units) { m_nDocUnits = units; }
  // 1 for millimetres.
  int IsDocumentUnitsMm() const { return m_nDocUnits == 0; }

  // The storage version of the document that is being read; 38.0, the current one, to begin with.
  float GetDocParamReadStorageUnits() const { return m_fReadStorageUnits; }
  void SetDocParamReadStorageUnits(float units) { m_fReadStorageUnits = units; }
  int IsDocumentModified() const { return m_bDocumentModified; }
  void SetDocumentModifiedFlag(int flag) { m_bDocumentModified = flag; }

  // The units alone, 32 bits: the other two stay what they are.
  void Serialize(CArchive& ar) override;

 protected:
  // By the run-time class: units unknown.
  QFDocParamHelper() = default;

 private:
  int m_nDocUnits = -1;
  float m_fReadStorageUnits = CKVVersionInfo::QF_STORAGE_VERSION;
  int m_bDocumentModified = 0;
};

// The local frame of a setup. Lengths are in the internal unit, the angle is in radians.
class KVSHARE_API QFSetupParamHelper : public QFParamHelper {
  DECLARE_SERIAL(QFSetupParamHelper)

 public:
  // The tool axis is (0, 0, 1), everything else 0.
  QFSetupParamHelper() = default;

  // The tool axis.
  FRUnitVector Direction() const { return m_Direction; }
  void SetDirection(const FRUnitVector& direction) { m_Direction = direction; }
  // The origin.
  FRPosition GetReferencePosition() const { return m_ReferencePosition; }
  void SetReferencePosition(const FRPosition& position) { m_ReferencePosition = position; }
  // The rotation about the axis.
  double GetAngle() const { return m_Angle; }
  void SetAngle(double angle_radians) { m_Angle = angle_radians; }
  FRPosition FromPoint() const { return m_FromPoint; }
  void SetFromPoint(const FRPosition& position) { m_FromPoint = position; }
  double Clearance() const { return m_Clearance; }
  void SetClearance(double clearance) { m_Clearance = clearance; }

  // From the document's frame to the setup's: moves the origin to (0, 0, 0), turns the opposite of the direction to the
  // Z axis (get_transform_to_xy_plane), then turns by the angle about (0, 0, -1). A new helper therefore makes a half
  // turn about the Y axis.
  FRTransf Transform() const;

  // Direction, reference position, from point, clearance, angle: not in the order of the fields. A direction that is
  // none comes in as (0, 0, 0).
  void Serialize(CArchive& ar) override;

 private:
  FRUnitVector m_Direction = FRUnitVector::AsGiven(0, 0, 1);
  FRPosition m_ReferencePosition;
  double m_Angle = 0;
  FRPosition m_FromPoint;
  double m_Clearance = 0;
};
