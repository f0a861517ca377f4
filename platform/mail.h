// Simple mail: a message with attachments, which the user's mail program shows before it is sent.
//
// The structures, the call and its results have the platform's names. On Linux the desktop's xdg-email passes the
// message to the user's mail program; it is the user who sends it. Main thread only.
#pragma once

#include <string>

#include "platform/types.h"

#ifdef _WIN32

#include <mapi.h>

#else

inline constexpr ULONG SUCCESS_SUCCESS = 0;
inline constexpr ULONG MAPI_USER_ABORT = 1;
inline constexpr ULONG MAPI_E_FAILURE = 2;
inline constexpr ULONG MAPI_E_LOGON_FAILURE = 3;
inline constexpr ULONG MAPI_E_ATTACHMENT_NOT_FOUND = 11;
inline constexpr ULONG MAPI_E_BAD_RECIPTYPE = 15;

inline constexpr ULONG MAPI_LOGON_UI = 1;
inline constexpr ULONG MAPI_DIALOG = 8;

// Classes of recipients.
inline constexpr ULONG MAPI_ORIG = 0;
inline constexpr ULONG MAPI_TO = 1;
inline constexpr ULONG MAPI_CC = 2;

// Texts are narrow (MailText) and may be null.
struct MapiRecipDesc {
  ULONG ulReserved;
  ULONG ulRecipClass;
  LPSTR lpszName;
  LPSTR lpszAddress;
  ULONG ulEIDSize;
  void* lpEntryID;
};
struct MapiFileDesc {
  ULONG ulReserved;
  ULONG flFlags;
  ULONG nPosition;  // of its place in the text
  LPSTR lpszPathName;
  LPSTR lpszFileName;
  void* lpFileType;
};
struct MapiMessage {
  ULONG ulReserved;
  LPSTR lpszSubject;
  LPSTR lpszNoteText;
  LPSTR lpszMessageType;
  LPSTR lpszDateReceived;
  LPSTR lpszConversationID;
  ULONG flFlags;
  MapiRecipDesc* lpOriginator;
  ULONG nRecipCount;
  MapiRecipDesc* lpRecips;
  ULONG nFileCount;
  MapiFileDesc* lpFiles;
};

// Opens the message in the user's mail program. The name of a recipient is an address, or a name with its address in
// lpszAddress; "SMTP:" before an address is ignored. A path is a product path. Names of attachments, the originator,
// the session, the owner and the flags have no effect. MAPI_E_BAD_RECIPTYPE for an address that begins with "-" or for
// a missing one, MAPI_E_ATTACHMENT_NOT_FOUND for a missing file, MAPI_E_FAILURE if the mail program could not be
// started.
using MAPISENDMAIL = ULONG(std::uintptr_t session, std::uintptr_t owner, MapiMessage* message, ULONG flags,
                           ULONG reserved);
using LPMAPISENDMAIL = MAPISENDMAIL*;

#endif

// Whether the user has a mail program. On Linux: xdg-email is installed, and a program is registered for mailto:.
KVSHARE_API bool HasMailSystem();

// Loads the mail library; on Linux, finds xdg-email. Null on failure.
KVSHARE_API HMODULE LoadMailLibrary();
// MAPISendMail of the library; null if it has none.
KVSHARE_API LPMAPISENDMAIL FindSendMail(HMODULE library);
KVSHARE_API void FreeMailLibrary(HMODULE library);

// A text in the narrow encoding of these structures: UTF-8, on Windows the user's code page.
KVSHARE_API std::string MailText(TextView text);
