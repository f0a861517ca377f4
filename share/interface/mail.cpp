#include "share/interface/mail.h"

#include <new>
#include <utility>

#include "share/diagnostics/application_access.h"
#include "share/diagnostics/outcome.h"

namespace {

constexpr int kNoLibraryText = 61840;
constexpr int kNoFunctionText = 61841;
constexpr int kNotSentText = 61842;

}  // namespace

HMODULE CQFIMapi::m_hInstMail = nullptr;
int CQFIMapi::m_isMailAvail = -1;

CQFIMapi::CQFIMapi() {
  m_Message.lpOriginator = &m_Sender;
  m_Sender.ulRecipClass = MAPI_ORIG;
  if (!m_hInstMail) m_hInstMail = LoadMailLibrary();
  m_lpfnSendMail = m_hInstMail ? FindSendMail(m_hInstMail) : nullptr;
  if (m_lpfnSendMail) return;
  m_nError = m_hInstMail ? kNoFunction : kNoLibrary;
  Outcome(0, SEVERITY_STOP).Display(m_hInstMail ? kNoFunctionText : kNoLibraryText);
}

CQFIMapi::~CQFIMapi() {
  if (m_hInstMail) FreeMailLibrary(std::exchange(m_hInstMail, nullptr));
}

int CQFIMapi::HasEmail() {
  if (m_isMailAvail < 0) m_isMailAvail = HasMailSystem();
  return m_isMailAvail;
}

// ---- the message

// The structures have pointers that are not const; the mail library does not write to the texts.
char* CQFIMapi::Keep(const char* text) { return m_Texts.emplace_back(text ? text : "").data(); }

int CQFIMapi::AddRecipient(const char* name, ULONG type, int error) {
  try {
    m_Recipients.push_back({.ulReserved = 0,
                            .ulRecipClass = type,
                            .lpszName = Keep(name),
                            .lpszAddress = nullptr,
                            .ulEIDSize = 0,
                            .lpEntryID = nullptr});
    return 1;
  } catch (const std::bad_alloc&) {
    m_nError = error;
    return 0;
  }
}

int CQFIMapi::To(const char* name) { return AddRecipient(name, MAPI_TO, kToFailed); }
int CQFIMapi::Cc(const char* name) { return AddRecipient(name, MAPI_CC, kCcFailed); }

int CQFIMapi::Attach(const char* path, const char* title) {
  try {
    char* const name = Keep(path);
    m_Files.push_back({.ulReserved = 0,
                       .flFlags = 0,
                       .nPosition = 0,
                       .lpszPathName = name,
                       .lpszFileName = title ? Keep(title) : nullptr,
                       .lpFileType = nullptr});
    return 1;
  } catch (const std::bad_alloc&) {
    m_nError = kAttachFailed;
    return 0;
  }
}

void CQFIMapi::Subject(const char* subject) {
  m_Subject = subject ? subject : "";
  m_Message.lpszSubject = m_Subject.data();
}

void CQFIMapi::BodyText(const char* text) { m_strText = text; }

void CQFIMapi::From(const char* name) {
  m_SenderName = name ? name : "";
  m_Sender.lpszName = m_SenderName.data();
}

int CQFIMapi::Error() { return std::exchange(m_nError, int{kNoError}); }

// ---- sending

int CQFIMapi::Send(unsigned long flags) {
  const QFWaitCursor wait;
  // Each attachment has a blank of its own after the text.
  const auto start = ULONG(m_strText.GetLength());
  for (std::size_t i = 0; i < m_Files.size(); ++i) m_Files[i].nPosition = start + ULONG(i);
  m_Note = MailText((m_strText + CString(_T(' '), int(m_Files.size()))).View());
  m_Message.lpszNoteText = m_Note.data();
  m_Message.nRecipCount = ULONG(m_Recipients.size());
  m_Message.lpRecips = m_Recipients.data();
  m_Message.nFileCount = ULONG(m_Files.size());
  m_Message.lpFiles = m_Files.data();
  const auto owner = reinterpret_cast<std::uintptr_t>(QFAfx::GetMainHWnd());
  const ULONG result = m_lpfnSendMail
                           ? m_lpfnSendMail(0, owner, &m_Message, ULONG(flags) | MAPI_LOGON_UI | MAPI_DIALOG, 0)
                           : MAPI_E_FAILURE;
  Forget();
  if (result == SUCCESS_SUCCESS || result == MAPI_USER_ABORT || result == MAPI_E_LOGON_FAILURE) return 1;
  Outcome(0, SEVERITY_STOP).Display(kNotSentText);
  return 0;
}

void CQFIMapi::Forget() {
  m_Recipients.clear();
  m_Files.clear();
  m_Texts.clear();
}
