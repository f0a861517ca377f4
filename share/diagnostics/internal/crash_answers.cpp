#include "share/diagnostics/internal/crash_answers.h"

#include <cstring>
#include <string_view>

#include "companions/analytics/analytics.h"
#include "framework/text.h"
#include "platform/exceptions.h"
#include "share/core/document_callbacks.h"
#include "share/core/document_messages.h"
#include "share/diagnostics/internal/crash_request.h"

namespace {

constexpr DWORD kLimit_ms = 2000;
constexpr std::size_t kMostNameBytes = 200;

constinit CrashAnswers g_known = {0, 0, 1, 0, ""};

void AskPermission(void*) { g_known.isPermitted = IsCrashReportPermittedCB(); }

void AskMessageFlag(void*) {
  int flag = 0;
  GetShowExceptionMsgFlag(flag);
  g_known.showMessage = flag;
}

void AskTitle(void*) {
  const std::string title = ToUtf8(GetDocTitle());
  SetField(g_known.title, title);
}

void AskAlerts(void*) {
  short flag = 0;
  GetAppDisplayAlerts(&flag);
  g_known.areAlertsShown = flag != 0 && gGetAppSilentModeFlag() == 0;
}

void AskEvents(void*) {
  IQFAnalytics* const receiver = QFAnalyticsManager::GetInstance().GetMWAnalytics();
  g_known.areEventsOn = receiver && receiver->IsInitialized();
}

constexpr void (*kQuestions[])(void*) = {AskMessageFlag, AskPermission, AskTitle, AskAlerts, AskEvents};

}  // namespace

void KeepCrashAnswers() {
  for (const auto question : kQuestions) question(nullptr);
}

// After one question that fails or hangs, the others keep their answers: the limit holds for all.
CrashAnswers AskInCrash() {
  CallAndSurvive(
      [](void*) {
        for (const auto question : kQuestions) question(nullptr);
      },
      nullptr, kLimit_ms);
  return g_known;
}

void ClearMessageFlag() {
  CallAndSurvive(
      [](void*) {
        int flag = 0;
        SetShowExceptionMsgFlag(flag);
      },
      nullptr, kLimit_ms);
}

void CrashBaseName(const char* title, char (&name)[256]) {
  std::string_view base = title;
  if (const std::size_t dot = base.rfind('.'); dot != base.npos && dot > 0) base = base.substr(0, dot);
  if (base.size() > kMostNameBytes) {
    std::size_t end = kMostNameBytes;
    while (end > 0 && (base[end] & 0xC0) == 0x80) --end;  // not within a character
    base = base.substr(0, end);
  }
  std::size_t length = 0;
  for (const char c : base) {
    const bool is_refused = static_cast<unsigned char>(c) < 0x20 || std::strchr("\\/:*?\"<>|", c);
    name[length++] = is_refused ? '_' : c;
  }
  name[length] = '\0';
}
