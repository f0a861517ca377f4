// The system's mail library, loaded when it is needed.
#include "platform/mail.h"

namespace {

constexpr LPCWSTR kLibrary = L"MAPI32.DLL";

}  // namespace

bool HasMailSystem() {
  WCHAR path[MAX_PATH];
  return GetProfileIntW(L"MAIL", L"MAPI", 0) != 0 &&
         SearchPathW(nullptr, kLibrary, nullptr, MAX_PATH, path, nullptr) != 0;
}

HMODULE LoadMailLibrary() { return LoadLibraryW(kLibrary); }

LPMAPISENDMAIL FindSendMail(HMODULE library) {
  return reinterpret_cast<LPMAPISENDMAIL>(reinterpret_cast<void*>(GetProcAddress(library, "MAPISendMail")));
}

void FreeMailLibrary(HMODULE library) { FreeLibrary(library); }

std::string MailText(TextView text) {
  const int bytes = WideCharToMultiByte(CP_ACP, 0, text.data(), int(text.size()), nullptr, 0, nullptr, nullptr);
  std::string narrow(std::size_t(bytes), '\0');
  WideCharToMultiByte(CP_ACP, 0, text.data(), int(text.size()), narrow.data(), bytes, nullptr, nullptr);
  return narrow;
}
