// The shared texts of audit trails: copy on write, and the time stamp.
#include "share/objects/audit_trail.h"

#include <utility>

#include "share/env/app_env.h"

CString AuditTrail::Now() {
  const CKVEnvApp* env = AppEnv();
  return env ? env->GetCurrentDate() + _T("::") + env->GetTickCount() : CString();
}

const AuditTrail::Texts& AuditTrail::Empty() {
  static const Texts none;
  return none;
}

AuditTrail::Texts& AuditTrail::Change() {
  if (!m_pBody || m_pBody->users.load(std::memory_order_acquire) != 1) {
    auto* own = new Body;
    own->texts = Get();
    Release();
    m_pBody = own;
  }
  return m_pBody->texts;
}
