// The numbers of the core messages: what the library says to a document, or asks of it, through
// QFObject::SendQFCoreMessage. The functions that send them stand in share/core/document_messages.h and, for the
// conversion of units, with the utilities.
//
// The message's first argument is the address of the value named here, unless it says otherwise; its second is 0. A
// document answers nonzero to a message that it knows. Numbers in between belong to the modules.
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
  QF_CORE_REMOVE_NODE_FROM_SELECTION = 284,  // the ui_QFObject's own address
  QF_CORE_GET_DOC_SERVICE_PACK = 290,        // CString, out
};

// Sends the message to the document: its QFObject::SendQFCoreMessage. Returns the document's answer; 0 for null. Kept
// apart from QFObject so that code below the nodes can send.
KVSHARE_API int SendCoreMessage(QFObject* document, QF_CORE_MESSAGE_ID message, ULONGLONG value, LONGLONG second);
