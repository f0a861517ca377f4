// Messages between the library and the active document (share/core/core_messages.h).
//
// Every function uses the document that GetActiveDocument() returns now. Without a document nothing is sent, and the
// result is 0 or an empty text unless it says otherwise; the same if the document doesn't handle the message. Call them
// on the thread that owns the document.
#pragma once

#include "framework/text.h"
#include "share/core/core_messages.h"

class QFObject;
class ui_QFObject;

// Sends a message with a value to the active document, for messages without a function below. QF_CORE_MESSAGE_ID says
// the type of the value and whether the document reads or writes it. Returns the document's answer; 0, with the value
// unchanged, without a document.
KVSHARE_API int SendToActiveDocument(QF_CORE_MESSAGE_ID message, void* value);

// ---- reading and saving

// The storage version of the document that is being read. 38.0, the current version, if the document answers 0 (within
// RESABS) or there is no document.
KVSHARE_API float GetActiveDocReadStorageUnits();
// Caches the storage version for the calling thread: while one exists, GetActiveDocReadStorageUnits sends no message.
// SetActiveDocReadStorageUnits updates the cache. For a host that reads many objects in sequence. Use it only while the
// active document stays the same and its storage version changes only through SetActiveDocReadStorageUnits. Scopes may
// nest.
class KVSHARE_API ReadStorageUnitsScope {
 public:
  ReadStorageUnitsScope();
  ~ReadStorageUnitsScope();
  ReadStorageUnitsScope(const ReadStorageUnitsScope&) = delete;
  ReadStorageUnitsScope& operator=(const ReadStorageUnitsScope&) = delete;

 private:
  float m_units;
  float* m_outer;
};
// Sets the storage version that the document answers from now on.
KVSHARE_API void SetActiveDocReadStorageUnits(float units);
// Sets the flag of the given document; null means the active one.
KVSHARE_API void SetDocumentModifiedFlag(int flag, QFObject* document);
KVSHARE_API int IsDocumentModified();
KVSHARE_API CString GetDocTitle();
// The service pack of the product that saved the document.
KVSHARE_API CString GetDocServicePack();

// ---- units

KVSHARE_API int IsDocumentUnitsMm();
// The code of the document's units. 0 (millimetres) without a document.
KVSHARE_API int GetDocumentUnits();
// 1 for the metric unit codes: 0, 1, 2, 6, 7 and 8.
KVSHARE_API int IsUnitsMetric(int units);
KVSHARE_API int IsDocumentUnitsMetric();

// ---- user interface

// 1 if the tree of features, operations or tools is shown.
KVSHARE_API int IsFEATTreeActive();
KVSHARE_API int IsOPERTreeActive();
KVSHARE_API int IsToolTreeActive();
// Read or set the document's flag whether messages of exceptions are shown to the user. Return the document's answer.
KVSHARE_API int GetShowExceptionMsgFlag(int& flag);
KVSHARE_API int SetShowExceptionMsgFlag(int& flag);
// Removes the node from the selection. Returns the document's answer; 0 for null.
KVSHARE_API int RemoveNodeFromSelection(ui_QFObject* node);
