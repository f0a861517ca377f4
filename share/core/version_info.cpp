// Comparisons with this build's date and storage version, and its constants as texts.
#include "share/core/version_info.h"

#include "platform/numbers.h"

namespace {

struct Date {
  int year;
  int monthAndDay;

  auto operator<=>(const Date&) const = default;
};

Date DateOf(const CString& text) {
  constexpr int kDigits = 4;
  const auto number = [](const CString& digits) { return IntegerFromUtf8(ToUtf8(digits)); };
  return {number(text.Left(kDigits)), number(text.Right(kDigits))};
}

}  // namespace

int CKVVersionInfo::IsGreater(const CString& date) { return DateOf(date) > DateOf(QF_VERSION_FOR_HELP_ABOUT); }

int CKVVersionInfo::IsGreater(float version) { return version > QF_STORAGE_VERSION; }

CString GetKVVersion() { return CKVVersionInfo::QF_VERSION_MAJOR_FOR_SERVICE_PACK; }
CString GetKVBuildDate() { return CKVVersionInfo::QF_BUILD_DATE_FOR_HELP_ABOUT; }
CString GetKVServicePack() { return CKVVersionInfo::QF_SERVICE_PACK; }
CString GetRequiredSWVersion() { return CKVVersionInfo::QF_REQUIRED_SOLIDWORKS_VERSION_CODE; }
