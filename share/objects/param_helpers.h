// Helpers that QFObject::GetParamHelper returns: shared code reads a node's parameters through them without knowing the
// node's class. One helper is for a document, one for the frame of a setup.
//
// The node owns its helper, which is used on the node's thread. The records have no class record of their own: their
// only version is the schema of the object in the archive. Serialize passes the archive's exceptions on.
#pragma once

#include "companions/geometry/transforms.h"
#include "framework/object.h"
#include "share/core/version_info.h"

// The common base class, without data.
class KVSHARE_API QFParamHelper : public CObject {
  DECLARE_DYNAMIC(QFParamHelper)

 protected:
  QFParamHelper() = default;
};

// The parameters of a document.
class KVSHARE_API QFDocParamHelper : public QFParamHelper {
  DECLARE_SERIAL(QFDocParamHelper)

 public:
  explicit QFDocParamHelper(int units) : m_nDocUnits(units) {}

  // The unit code: 0 for millimetres, -1 for unknown; IsUnitsMetric (document_messages.h) lists the others.
  int GetDocParamUnits() const { return m_nDocUnits; }
  void SetDocParamUnits(int units) { m_nDocUnits = units; }
  // 1 for millimetres.
  int IsDocumentUnitsMm() const { return m_nDocUnits == 0; }

  // The storage version of the document that is being read; at first 38.0, the present version.
  float GetDocParamReadStorageUnits() const { return m_fReadStorageUnits; }
  void SetDocParamReadStorageUnits(float units) { m_fReadStorageUnits = units; }
  int IsDocumentModified() const { return m_bDocumentModified; }
  void SetDocumentModifiedFlag(int flag) { m_bDocumentModified = flag; }

  // Stores and loads the units only, 32 bits; loading leaves the other two values unchanged.
  void Serialize(CArchive& ar) override;

 protected:
  // For the run-time class: unknown units.
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
  // The tool axis is (0, 0, 1); all other values are 0.
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

  // The transform from the document's frame to the setup's. It moves the origin to (0, 0, 0), turns the opposite of the
  // direction to the Z axis (get_transform_to_xy_plane), then turns by the angle about (0, 0, -1). So the transform of
  // a new helper is a half turn about the Y axis.
  FRTransf Transform() const;

  // The record, in this order: direction, reference position, from point, clearance, angle. A stored direction of
  // length 0 or of values that are not finite is read as (0, 0, 0).
  void Serialize(CArchive& ar) override;

 private:
  FRUnitVector m_Direction = FRUnitVector::AsGiven(0, 0, 1);
  FRPosition m_ReferencePosition;
  double m_Angle = 0;
  FRPosition m_FromPoint;
  double m_Clearance = 0;
};
