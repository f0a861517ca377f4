// Conversions of lengths and angles between the internal unit, in which the product computes, and texts in the active
// document's unit. The document converts: each function sends it core message 247.
//
// Call them on the thread that uses the document. Without an active document, or if it does not know the message, a
// text result is empty and a number 0; nothing fails. The document defines its units, its number format, and the result
// for a text that is no number.
#pragma once

#include "framework/text.h"

enum QFeUnitsConversionType : int {
  QF_UNITS_SYS_TO_USER = 0,     // internal value to user text
  QF_UNITS_USER_TO_SYS = 1,     // user text to internal value
  QF_UNITS_SPIN_INCREMENT = 2,  // the step of a spin button, as internal value
};

enum QFeUnitEntityType : int {
  QF_UNITS_LENGTH = 0,
  QF_UNITS_ANGLE = 1,
};

// A request to the document and its answer. The conversion type says which of value and text is the input.
class KVSHARE_API QFUnitsConversion {
 public:
  QFUnitsConversion(QFeUnitsConversionType type, QFeUnitEntityType entity) : m_eType(type), m_eEntity(entity) {}

  // At first 0.
  double GetSysVal() const { return m_dSysVal; }
  void SetSysVal(double value) { m_dSysVal = value; }
  // At first empty.
  const CString& GetUserUnit() const { return m_UserUnit; }
  void SetUserUnit(const CString& text) { m_UserUnit = text; }
  QFeUnitsConversionType GetUnitConversionType() const { return m_eType; }
  QFeUnitEntityType GetUnitEntityType() const { return m_eEntity; }

 private:
  double m_dSysVal = 0;
  CString m_UserUnit;
  QFeUnitsConversionType m_eType;
  QFeUnitEntityType m_eEntity;
};

KVSHARE_API CString ConvertLengthToUserUnits(double value);
KVSHARE_API CString ConvertAngleToUserUnits(double value);
KVSHARE_API double ConvertLengthUserUnitsToSysValue(const CString& text);
KVSHARE_API double ConvertAngleUserUnitsToSysValue(const CString& text);
KVSHARE_API double GetLengthUnitSpinIncrement();
KVSHARE_API double GetAngleUnitSpinIncrement();
