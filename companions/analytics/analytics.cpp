#include "companions/analytics/analytics.h"

#include <atomic>
#include <new>

#include "companions/analytics/event_file.h"
#include "companions/analytics/internal/event_line.h"
#include "platform/errors.h"
#include "platform/process.h"

namespace {

class LocalAnalytics final : public IQFAnalytics {
 public:
  int Initialize(int) override {
    initialized_ = !IsTrackingForbidden();
    return IsInitialized();
  }
  int Exit() override { return initialized_.exchange(false); }

  int AddCommandEvent(const CString& category, const CString& name) override {
    return Add("command", {{"category", category.View()}, {"name", name.View()}});
  }
  int AddNumericEvent(const CString& category, const CString& name, const double& value) override {
    return Add("numeric", {{"category", category.View()}, {"name", name.View()}, {"value", value}});
  }
  int AddTextEvent(const CString& category, const CString& name, const CString& value) override {
    return Add("text", {{"category", category.View()}, {"name", name.View()}, {"value", value.View()}});
  }
  int AddProductData(const CString& name, const CString& language, const CString& version,
                     const CString& buildCode) override {
    return Add("product", {{"name", name.View()},
                           {"language", language.View()},
                           {"version", version.View()},
                           {"buildCode", buildCode.View()}});
  }
  int IsInitialized() override { return initialized_; }
  int ClearEvents() override {
    try {
      return EventFile().Remove() == ERROR_SUCCESS;
    } catch (const std::bad_alloc&) {
      return 0;
    }
  }
  int AddExceptionData(const CString& type, const CString& text, const CString& module, const CString& place) override {
    return Add("exception",
               {{"type", type.View()}, {"text", text.View()}, {"module", module.View()}, {"place", place.View()}});
  }

 private:
  int Add(const char* kind, std::initializer_list<EventField> fields) const {
    return initialized_ ? AppendEvent(kind, GetCurrentProcessId(), fields) : 0;
  }

  std::atomic<bool> initialized_ = false;
};

}  // namespace

QFAnalyticsManager& QFAnalyticsManager::GetInstance() {
  static QFAnalyticsManager manager;
  return manager;
}

IQFAnalytics* QFAnalyticsManager::GetMWAnalytics() {
  static LocalAnalytics analytics;
  return &analytics;
}
