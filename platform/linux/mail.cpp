#include "platform/mail.h"

#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/desktop_programs.h"
#include "platform/paths.h"
#include "platform/utf8.h"

namespace {

constexpr std::string_view kAddressKind = "SMTP:";
constexpr int kFileIsMissing = 2;  // exit code of xdg-email

// A library is not needed; the handle only says that xdg-email was found.
const char kLibrary = 0;

std::string AddressOf(const MapiRecipDesc& recipient) {
  const char* const text = recipient.lpszAddress ? recipient.lpszAddress : recipient.lpszName;
  std::string_view address = text ? text : "";
  if (address.starts_with(kAddressKind)) address.remove_prefix(kAddressKind.size());
  return std::string(address);
}

void AddOption(std::vector<std::string>& words, const char* option, const char* value) {
  if (!value || !*value) return;
  words.insert(words.end(), {option, value});
}

ULONG AddRecipients(const MapiMessage& message, std::vector<std::string>& words, std::vector<std::string>& to) {
  for (ULONG i = 0; i < message.nRecipCount; ++i) {
    const std::string address = AddressOf(message.lpRecips[i]);
    if (address.empty() || address.starts_with('-')) return MAPI_E_BAD_RECIPTYPE;
    if (message.lpRecips[i].ulRecipClass == MAPI_CC) {
      words.insert(words.end(), {"--cc", address});
    } else {
      to.push_back(address);
    }
  }
  return SUCCESS_SUCCESS;
}

ULONG AddFiles(const MapiMessage& message, std::vector<std::string>& words) {
  for (ULONG i = 0; i < message.nFileCount; ++i) {
    const char* const name = message.lpFiles[i].lpszPathName;
    const std::string path = name ? SystemPathFromProduct(WideFromUtf8(name).c_str()) : std::string();
    char full[PATH_MAX];  // mail programs run in other folders
    if (path.empty() || !realpath(path.c_str(), full)) return MAPI_E_ATTACHMENT_NOT_FOUND;
    words.insert(words.end(), {"--attach", full});
  }
  return SUCCESS_SUCCESS;
}

ULONG SendByDesktop(std::uintptr_t, std::uintptr_t, MapiMessage* message, ULONG, ULONG) {
  const std::string program = FindProgram("xdg-email");
  if (!message || program.empty()) return MAPI_E_FAILURE;
  std::vector<std::string> words = {"--utf8"}, to;
  AddOption(words, "--subject", message->lpszSubject);
  AddOption(words, "--body", message->lpszNoteText);
  if (const ULONG status = AddRecipients(*message, words, to); status != SUCCESS_SUCCESS) return status;
  if (const ULONG status = AddFiles(*message, words); status != SUCCESS_SUCCESS) return status;
  words.insert(words.end(), to.begin(), to.end());
  const int code = StartProgram(program, words);
  if (code == kFileIsMissing) return MAPI_E_ATTACHMENT_NOT_FOUND;
  return code == 0 ? SUCCESS_SUCCESS : MAPI_E_FAILURE;
}

}  // namespace

bool HasMailSystem() {
  if (FindProgram("xdg-email").empty()) return false;
  const std::string query = FindProgram("xdg-mime");
  return !query.empty() && !OutputOf(query, {"query", "default", "x-scheme-handler/mailto"}).empty();
}

HMODULE LoadMailLibrary() {
  if (FindProgram("xdg-email").empty()) return nullptr;
  return reinterpret_cast<HMODULE>(const_cast<char*>(&kLibrary));
}

LPMAPISENDMAIL FindSendMail(HMODULE library) { return library ? SendByDesktop : nullptr; }

void FreeMailLibrary(HMODULE) {}

std::string MailText(TextView text) { return Utf8FromWide(text); }
