// HostDocument: answers to the core messages.
#include <algorithm>

#include "host/document/host_document.h"
#include "share/utilities/units.h"

namespace kestrova {

int HostDocument::SendQFCoreMessage(QF_CORE_MESSAGE_ID message, ULONGLONG argument, LONGLONG) {
  void* const value = reinterpret_cast<void*>(std::uintptr_t(argument));
  if (!value) return 0;
  auto& number = *static_cast<int*>(value);
  auto& real = *static_cast<float*>(value);
  auto& text = *static_cast<CString*>(value);
  switch (message) {
    case QF_CORE_GET_READ_STORAGE_UNITS: real = m_params.GetDocParamReadStorageUnits(); break;
    case QF_CORE_SET_READ_STORAGE_UNITS: m_params.SetDocParamReadStorageUnits(real); break;
    case QF_CORE_SET_DOCUMENT_MODIFIED: m_params.SetDocumentModifiedFlag(number); break;
    case QF_CORE_IS_DOCUMENT_MODIFIED: number = m_params.IsDocumentModified(); break;
    case QF_CORE_IS_DOCUMENT_UNITS_MM: number = m_params.IsDocumentUnitsMm(); break;
    case QF_CORE_GET_DOCUMENT_UNITS: number = m_params.GetDocParamUnits(); break;
    case QF_CORE_GET_DOC_TITLE: text = m_title; break;
    case QF_CORE_CONVERT_UNITS: return ConvertUnits(*static_cast<QFUnitsConversion*>(value));
    case QF_CORE_IS_FEATURE_TREE_ACTIVE: number = m_tree == Tree::kFeatures; break;
    case QF_CORE_IS_OPERATION_TREE_ACTIVE: number = m_tree == Tree::kOperations; break;
    case QF_CORE_IS_TOOL_TREE_ACTIVE: number = m_tree == Tree::kTools; break;
    case QF_CORE_GET_SHOW_EXCEPTION_MESSAGE: number = m_showExceptions; break;
    case QF_CORE_SET_SHOW_EXCEPTION_MESSAGE: m_showExceptions = number; break;
    case QF_CORE_REMOVE_NODE_FROM_SELECTION: return RemoveFromSelection(static_cast<ui_QFObject*>(value));
    case QF_CORE_GET_DOC_SERVICE_PACK: text = m_servicePack; break;
    default: return 0;
  }
  return 1;
}

int HostDocument::ConvertUnits(QFUnitsConversion& request) const {
  const bool angle = request.GetUnitEntityType() == QF_UNITS_ANGLE;
  if (!angle && request.GetUnitEntityType() != QF_UNITS_LENGTH) return 0;
  switch (request.GetUnitConversionType()) {
    case QF_UNITS_SYS_TO_USER:
      request.SetUserUnit(angle ? AngleText(request.GetSysVal()) : LengthText(request.GetSysVal(), Units()));
      return 1;
    case QF_UNITS_USER_TO_SYS: {
      double value = 0;
      const CString& text = request.GetUserUnit();
      if (!(angle ? ParseAngle(text, value) : ParseLength(text, Units(), value))) return 0;
      request.SetSysVal(value);
      return 1;
    }
    case QF_UNITS_SPIN_INCREMENT: request.SetSysVal(angle ? AngleIncrement() : Units().increment); return 1;
  }
  return 0;
}

int HostDocument::RemoveFromSelection(ui_QFObject* companion) { return std::erase(m_selection, companion) > 0; }

}  // namespace kestrova
