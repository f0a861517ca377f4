// The numbers of the core messages, which the library sends to a document through QFObject::SendQFCoreMessage. The
// functions that send them are in share/core/document_messages.h and, for the conversion of units, in
// share/utilities/units.h.
//
// The first argument of a message is the address of the value named here, unless noted; the second is 0. "in": the
// document reads the value; "out": it writes it. A document returns nonzero for a message that it handles. Modules use
// the numbers in between.
#pragma once

#include "platform/types.h"

class QFObject;

enum QF_CORE_MESSAGE_ID : int {
  QF_CORE_GET_READ_STORAGE_UNITS = 201,      // float, out
  QF_CORE_SET_READ_STORAGE_UNITS = 202,      // float, in
  QF_CORE_SET_DOCUMENT_MODIFIED = 203,       // int, in
  QF_CORE_IS_DOCUMENT_MODIFIED = 204,        // int, out
  QF_CORE_IS_DOCUMENT_UNITS_MM = 205,        // int, out
  QF_CORE_GET_DOCUMENT_UNITS = 206,          // int, out
  QF_CORE_GET_DOC_TITLE = 227,               // CString, out
  QF_CORE_CONVERT_UNITS = 247,               // QFUnitsConversion, in and out
  QF_CORE_IS_FEATURE_TREE_ACTIVE = 269,      // int, out
  QF_CORE_IS_OPERATION_TREE_ACTIVE = 270,    // int, out
  QF_CORE_IS_TOOL_TREE_ACTIVE = 271,         // int, out
  QF_CORE_GET_SHOW_EXCEPTION_MESSAGE = 275,  // int, out
  QF_CORE_SET_SHOW_EXCEPTION_MESSAGE = 276,  // int, in
  QF_CORE_REMOVE_NODE_FROM_SELECTION = 284,  // the address of the ui_QFObject
  QF_CORE_GET_DOC_SERVICE_PACK = 290,        // CString, out
};

// Calls QFObject::SendQFCoreMessage of the document and returns its answer; 0 for a null document. A free function, so
// that code in rooms below QFObject can send messages.
KVSHARE_API int SendCoreMessage(QFObject* document, QF_CORE_MESSAGE_ID message, ULONGLONG value, LONGLONG second);
