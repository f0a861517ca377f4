// The node's lifetime, identity, stamps and companion, and the defaults that mean "not applicable".
#include "share/objects/object.h"

#include <atomic>
#include <utility>

#include "framework/neutral_objects.h"
#include "share/core/document_callbacks.h"
#include "share/env/app_env.h"
#include "share/objects/command_runner.h"
#include "share/objects/internal/owner_depth_guard.h"
#include "share/objects/object_indexer.h"

QFObject::QFObject() = default;

// After a failed load, nodes that this node points to may be deleted already (share/objects/object.h). The original
// owner can be an object outside the load, which is then left; otherwise a destructor does not leave it.
QFObject::~QFObject() {
  if (m_pOriginalOwner && IsInCleanUp(this)) LeaveOriginalOwner();
  delete std::exchange(m_pUiObject, nullptr);
  DestroyPattern();
  DetachFromAllUserObjects();
}

CString QFObject::GetClassNameW() { return _T("QFObject"); }

void QFObject::OnPostLoadFromStorageNotify() {}

CRuntimeClass* QFObject::GetRuntimeClassForAutoIndexing() { return GetRuntimeClass(); }

CString QFObject::GetRegisterNodeName() { return {}; }

// ---- identity and stamps

unsigned QFObject::GetObjectId() {
  if (m_ObjectId == 0) m_ObjectId = DWORD(GetNextObjectIdCB());
  return m_ObjectId;
}

CString QFObject::GetObjNamePlusObjID() {
  CString text;
  text.Format(_T("%s-%d"), GetClassNameW(), GetObjectId());
  return text;
}

CString QFObject::Name() { return m_Label; }

void QFObject::ChangeName(const CString& name) { m_Label = name; }

void QFObject::SetNodeDesc(CString) {}

CString QFObject::GetNodeDesc() const { return m_NodeDesc; }

void QFObject::UpdateLastModified() {
  AuditTrail::Texts& stamps = m_Trail.Change();
  stamps.lastModified = AuditTrail::Now();
  stamps.lastModifiedBy = AppEnv()->GetUserNameW();
}

int QFObject::Invalidate() {
  m_ObjectId = 0;
  m_Label.Empty();
  return 1;
}

int QFObject::Merge(QFObject* other) {
  if (other) return other->Merge(nullptr);
  m_bMergeInProgress = true;
  m_bMerged = Invalidate() != 0;
  m_bMergeInProgress = false;
  return m_bMerged;
}

int QFObject::IsMerged() { return m_bMerged; }

void QFObject::SetMergeInProgress(int flag) { m_bMergeInProgress = flag != 0; }

int QFObject::IsMergeInProgress() { return m_bMergeInProgress; }

// ---- companion

QFCallbackHelper* QFObject::GetCallbackHelper() { return nullptr; }

ui_QFObject* QFObject::GetUiObject() {
  if (m_pUiObject) return m_pUiObject;
  const QFCallbackHelper* helper = GetCallbackHelper();
  if (helper && helper->GetCBUiObjCreate()) m_pUiObject = helper->GetCBUiObjCreate()(this);
  UpdateLastModified();
  AuditTrail::Texts& stamps = m_Trail.Change();
  if (stamps.createdBy.IsEmpty()) stamps.createdBy = AppEnv()->GetUserNameW();
  if (stamps.dateCreated.IsEmpty()) stamps.dateCreated = stamps.lastModified;
  return m_pUiObject;
}

void QFObject::ResetFlagForStockChange() {
  if (CFlaggedError* flag = GetFlag()) {
    flag->ResetFlag();
    flag->SetFlagErrorType(FLAGGED_ERROR_NORMAL);
  }
  if (ui_QFObject* companion = GetUiObject()) companion->ResetFlagForStockChange();
}

// ---- comparison

COMPARE_RESULT QFObject::Compare(QFObject*) { return NO_MATCH; }

void QFObject::SetMatch(QFObject* match) {
  m_pMatch = match;
  m_MatchId = match ? match->GetObjectId() : 0;
}

void QFObject::AssociateParameters(QFObject* target) {
  if (!target) return;
  target->m_iState = m_iState;
  target->m_Label = m_Label;
}

// ---- jobs

namespace {

constinit std::atomic<CommandRunner*> g_runner = nullptr;

}  // namespace

void SetCommandRunner(CommandRunner* runner) { g_runner.store(runner, std::memory_order_release); }

QFeThreadStatus QFObject::HandleCommand(QFeCommandType, unsigned, void*&) { return eThreadNotHandled; }

int QFObject::RunCommand(unsigned context, void* param, QFeThreadType type, QFeThreadEndType endType) {
  CommandRunner* runner = g_runner.load(std::memory_order_acquire);
  return runner ? runner->RunCommand(this, context, param, type, endType) : 0;
}

void QFObject::SetTimeTakenForGTP(CString text) { m_TimeTakenForGTP = std::move(text); }

CString QFObject::GetTimeTakenForGTP() { return m_TimeTakenForGTP; }

// ---- defaults

void QFObject::onCreate() {
  if (QFObjectIndexerHelper* indexer = qf_getActiveAutoIdHelper()) indexer->AddObj(this);
}

CFlaggedError* QFObject::GetFlag() { return nullptr; }
int QFObject::SendQFCoreMessage(QF_CORE_MESSAGE_ID, ULONGLONG, LONGLONG) { return 0; }
const QFParamHelper* QFObject::GetParamHelper() const { return nullptr; }
QFObject* QFObject::Clone() { return nullptr; }
void QFObject::iCreate() {}
int QFObject::IsRebuildReqOnStockChange() { return 0; }
int QFObject::IsDirtyOnStockChange() { return 0; }
void QFObject::FindDangling(int) {}

// ---- core messages

int SendCoreMessage(QFObject* document, QF_CORE_MESSAGE_ID message, ULONGLONG value, LONGLONG second) {
  return document ? document->SendQFCoreMessage(message, value, second) : 0;
}
