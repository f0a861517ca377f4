// CQFIMapi: sends a mail with attachments through the user's mail program, which shows the mail before it is sent.
//
//   if (CQFIMapi::HasEmail()) {
//     CQFIMapi mail;
//     mail.To("support@example.com");
//     mail.Attach("C:\\Temp\\report.txt", nullptr);
//     mail.Subject("Crash report");
//     mail.Send(0);
//   }
//
// BodyText takes UTF-8. The other texts are passed to the mail library as they are: MailText (platform/mail.h) converts
// to its encoding. All objects use one mail library: the destructor of one unloads it for all. User-interface thread
// only.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "framework/text.h"
#include "platform/mail.h"

class KVSHARE_API CQFIMapi {
 public:
  // The values of Error().
  enum : int {
    kNoError = 0,
    kNoLibrary = 1,
    kNoFunction = 2,
    kToFailed = 3,
    kCcFailed = 4,
    kAttachFailed = 5,
  };

  // Loads the mail library if it is not loaded. A failure is shown in a message.
  CQFIMapi();
  ~CQFIMapi();
  CQFIMapi(const CQFIMapi&) = delete;
  CQFIMapi& operator=(const CQFIMapi&) = delete;

  // 1 if the user has a mail program. Asked once in a process.
  static int HasEmail();

  // Add a recipient or an attachment: 1 if it was added. title may be null: the attachment has the name of its file.
  int To(const char* name);
  int Cc(const char* name);
  int Attach(const char* path, const char* title);

  // They replace the former text.
  void Subject(const char* subject);
  void BodyText(const char* text);
  void From(const char* name);

  // Opens the mail in the user's mail program and forgets the recipients and attachments. 1 if it was sent, if the user
  // cancelled, or if the user could not log on; otherwise a message is shown, and the result is 0.
  int Send(unsigned long flags);

  // The last error; clears it.
  int Error();

  static HMODULE m_hInstMail;
  static int m_isMailAvail;  // -1: not asked yet

 private:
  int AddRecipient(const char* name, ULONG type, int error);
  char* Keep(const char* text);
  void Forget();

  MapiMessage m_Message = {};
  MapiRecipDesc m_Sender = {};
  int m_nError = kNoError;
  CString m_strText;
  LPMAPISENDMAIL m_lpfnSendMail = nullptr;
  std::vector<MapiRecipDesc> m_Recipients;
  std::vector<MapiFileDesc> m_Files;
  std::deque<std::string> m_Texts;  // of the recipients and attachments; a deque keeps their addresses
  std::string m_Subject, m_Note, m_SenderName;
};
