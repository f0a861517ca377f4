// What the library asks of the active document and tells it, by core messages (share/core/core_messages.h).
//
// Every function works on GetActiveDocument() at the moment of the call. Without a document nothing is sent and the
// result is 0, or an empty text, unless it says otherwise; a document that doesn't know the message leaves the same
// result. Called on the thread that owns the document.
#pragma once

#include "framework/text.h"
#include "share/core/core_messages.h"

class QFObject;
class ui_QFObject;

// Sends the active document a message about a value, which it reads or fills; which type, the message's number says.
// Gives the document's answer; 0, with the value left alone, without a document. For messages without a function below.
KVSHARE_API int SendToActiveDocument(QF_CORE_MESSAGE_ID message, void* value);

// ---- reading and saving

// The storage version of the document that is being read. A document that answers 0, within RESABS, counts as current:
// 38.0; so does having none.
KVSHARE_API float GetActiveDocReadStorageUnits();
// While one lives, the calling thread asks the document no more: GetActiveDocReadStorageUnits gives what it gave when
// this was made, or what SetActiveDocReadStorageUnits has brought about since. For a host that reads many objects one
// behind the other, while the active document stays the same and changes its answer in no other way.
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
// Tells the document which one to answer from now on.
KVSHARE_API void SetActiveDocReadStorageUnits(float units);
// To the document given, or to the active one for null.
KVSHARE_API void SetDocumentModifiedFlag(int flag, QFObject* document);
KVSHARE_API int IsDocumentModified();
KVSHARE_API CString GetDocTitle();
// The service pack of the product that saved the document.
KVSHARE_API CString GetDocServicePack();

// ---- units

KVSHARE_API int IsDocumentUnitsMm();
// The code of the document's units; 0, millimetres, without a document.
KVSHARE_API int GetDocumentUnits();
// 1 for the unit codes 0, 1, 2, 6, 7 and 8.
KVSHARE_API int IsUnitsMetric(int units);
KVSHARE_API int IsDocumentUnitsMetric();

// ---- user interface

// Whether the tree of features, operations or tools is the one shown.
KVSHARE_API int IsFEATTreeActive();
KVSHARE_API int IsOPERTreeActive();
KVSHARE_API int IsToolTreeActive();
// Whether messages of exceptions are shown to the user. They give the document's answer.
KVSHARE_API int GetShowExceptionMsgFlag(int& flag);
KVSHARE_API int SetShowExceptionMsgFlag(int& flag);
// Gives the document's answer; 0 for null.
KVSHARE_API int RemoveNodeFromSelection(ui_QFObject* node);
