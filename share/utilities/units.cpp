// The conversions that the active document makes.
#include "share/utilities/units.h"

#include <cstdint>

#include "share/env/core_messages.h"
#include "share/env/document_callbacks.h"
#include "share/objects/object.h"

namespace {

// Puts the request to the active document, which leaves its answer in it. Without one the request stays as it is.
void Ask(QFUnitsConversion& request) {
  if (QFObject* document = GetActiveDocument())
    document->SendQFCoreMessage(QF_CORE_CONVERT_UNITS, reinterpret_cast<std::uintptr_t>(&request), 0);
}

CString ToUser(QFeUnitEntityType entity, double value) {
  QFUnitsConversion request(QF_UNITS_SYS_TO_USER, entity);
  request.SetSysVal(value);
  Ask(request);
  return request.GetUserUnit();
}

double ToSystem(QFeUnitEntityType entity, const CString& text) {
  QFUnitsConversion request(QF_UNITS_USER_TO_SYS, entity);
  request.SetUserUnit(text);
  Ask(request);
  return request.GetSysVal();
}

double SpinIncrement(QFeUnitEntityType entity) {
  QFUnitsConversion request(QF_UNITS_SPIN_INCREMENT, entity);
  Ask(request);
  return request.GetSysVal();
}

}  // namespace

CString ConvertLengthToUserUnits(double value) { return ToUser(QF_UNITS_LENGTH, value); }
CString ConvertAngleToUserUnits(double value) { return ToUser(QF_UNITS_ANGLE, value); }
double ConvertLengthUserUnitsToSysValue(const CString& text) { return ToSystem(QF_UNITS_LENGTH, text); }
double ConvertAngleUserUnitsToSysValue(const CString& text) { return ToSystem(QF_UNITS_ANGLE, text); }
double GetLengthUnitSpinIncrement() { return SpinIncrement(QF_UNITS_LENGTH); }
double GetAngleUnitSpinIncrement() { return SpinIncrement(QF_UNITS_ANGLE); }
