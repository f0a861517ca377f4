// Sends core messages to the active document.
#include "share/core/document_messages.h"

#include <utility>

#include "companions/geometry/constants.h"
#include "share/core/document_callbacks.h"
#include "share/core/version_info.h"

namespace {

int Send(QFObject* document, QF_CORE_MESSAGE_ID message, void* value) {
  return SendCoreMessage(document, message, reinterpret_cast<std::uintptr_t>(value), 0);
}

// The value from the active document; 0 or empty if it doesn't set one.
template <class Value>
Value ReadFromActiveDocument(QF_CORE_MESSAGE_ID message) {
  Value value = {};
  SendToActiveDocument(message, &value);
  return value;
}

}  // namespace

int SendToActiveDocument(QF_CORE_MESSAGE_ID message, void* value) { return Send(GetActiveDocument(), message, value); }

// ---- reading and saving

namespace {

KV_FAST_THREAD_LOCAL constinit float* t_cachedUnits = nullptr;

float ReadStorageUnitsFromDocument() {
  const float units = ReadFromActiveDocument<float>(QF_CORE_GET_READ_STORAGE_UNITS);
  return units > -RESABS && units < RESABS ? CKVVersionInfo::QF_STORAGE_VERSION : units;
}

}  // namespace

float GetActiveDocReadStorageUnits() { return t_cachedUnits ? *t_cachedUnits : ReadStorageUnitsFromDocument(); }

void SetActiveDocReadStorageUnits(float units) {
  SendToActiveDocument(QF_CORE_SET_READ_STORAGE_UNITS, &units);
  if (t_cachedUnits) *t_cachedUnits = ReadStorageUnitsFromDocument();
}

ReadStorageUnitsScope::ReadStorageUnitsScope()
    : m_units(GetActiveDocReadStorageUnits()), m_outer(std::exchange(t_cachedUnits, &m_units)) {}

ReadStorageUnitsScope::~ReadStorageUnitsScope() { t_cachedUnits = m_outer; }

void SetDocumentModifiedFlag(int flag, QFObject* document) {
  Send(document ? document : GetActiveDocument(), QF_CORE_SET_DOCUMENT_MODIFIED, &flag);
}

int IsDocumentModified() { return ReadFromActiveDocument<int>(QF_CORE_IS_DOCUMENT_MODIFIED); }
CString GetDocTitle() { return ReadFromActiveDocument<CString>(QF_CORE_GET_DOC_TITLE); }
CString GetDocServicePack() { return ReadFromActiveDocument<CString>(QF_CORE_GET_DOC_SERVICE_PACK); }

// ---- units

int IsDocumentUnitsMm() { return ReadFromActiveDocument<int>(QF_CORE_IS_DOCUMENT_UNITS_MM); }
int GetDocumentUnits() { return ReadFromActiveDocument<int>(QF_CORE_GET_DOCUMENT_UNITS); }
int IsUnitsMetric(int units) { return (units >= 0 && units <= 2) || (units >= 6 && units <= 8); }
int IsDocumentUnitsMetric() { return IsUnitsMetric(GetDocumentUnits()); }

// ---- user interface

int IsFEATTreeActive() { return ReadFromActiveDocument<int>(QF_CORE_IS_FEATURE_TREE_ACTIVE); }
int IsOPERTreeActive() { return ReadFromActiveDocument<int>(QF_CORE_IS_OPERATION_TREE_ACTIVE); }
int IsToolTreeActive() { return ReadFromActiveDocument<int>(QF_CORE_IS_TOOL_TREE_ACTIVE); }
int GetShowExceptionMsgFlag(int& flag) { return SendToActiveDocument(QF_CORE_GET_SHOW_EXCEPTION_MESSAGE, &flag); }
int SetShowExceptionMsgFlag(int& flag) { return SendToActiveDocument(QF_CORE_SET_SHOW_EXCEPTION_MESSAGE, &flag); }

int RemoveNodeFromSelection(ui_QFObject* node) {
  return node ? SendToActiveDocument(QF_CORE_REMOVE_NODE_FROM_SELECTION, node) : 0;
}
