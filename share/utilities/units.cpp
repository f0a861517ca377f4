// Conversions by the active document. Without a document a request does not change.
#include "share/utilities/units.h"

#include "share/core/document_messages.h"

namespace {

CString ToUser(QFeUnitEntityType entity, double value) {
  QFUnitsConversion request(QF_UNITS_SYS_TO_USER, entity);
  request.SetSysVal(value);
  SendToActiveDocument(QF_CORE_CONVERT_UNITS, &request);
  return request.GetUserUnit();
}

double ToSystem(QFeUnitEntityType entity, const CString& text) {
  QFUnitsConversion request(QF_UNITS_USER_TO_SYS, entity);
  request.SetUserUnit(text);
  SendToActiveDocument(QF_CORE_CONVERT_UNITS, &request);
  return request.GetSysVal();
}

double SpinIncrement(QFeUnitEntityType entity) {
  QFUnitsConversion request(QF_UNITS_SPIN_INCREMENT, entity);
  SendToActiveDocument(QF_CORE_CONVERT_UNITS, &request);
  return request.GetSysVal();
}

}  // namespace

CString ConvertLengthToUserUnits(double value) { return ToUser(QF_UNITS_LENGTH, value); }
CString ConvertAngleToUserUnits(double value) { return ToUser(QF_UNITS_ANGLE, value); }
double ConvertLengthUserUnitsToSysValue(const CString& text) { return ToSystem(QF_UNITS_LENGTH, text); }
double ConvertAngleUserUnitsToSysValue(const CString& text) { return ToSystem(QF_UNITS_ANGLE, text); }
double GetLengthUnitSpinIncrement() { return SpinIncrement(QF_UNITS_LENGTH); }
double GetAngleUnitSpinIncrement() { return SpinIncrement(QF_UNITS_ANGLE); }
