// How each typed value stands in the registry. Every call opens its key's path and closes it again.
#include <bit>
#include <charconv>
#include <cmath>

#include "share/settings/open_key.h"
#include "share/settings/settings_key.h"
#include "share/settings/settings_value.h"

namespace {

// The longest text that a restore takes over, in bytes; a longer one counts as unreadable.
constexpr DWORD kMostTextBytes = 0x1FFFFFFF;

// The key's path, opened as saving or restoring does.
OpenKey OpenForSaving(QFSettingsKey* key) {
  return OpenKey(key ? key->GetHandleToKey(/*create=*/1, /*readOnly=*/0) : nullptr);
}
OpenKey OpenForRestoring(QFSettingsKey* key) {
  return OpenKey(key ? key->GetHandleToKey(/*create=*/0, /*readOnly=*/1) : nullptr);
}

LSTATUS Query(const OpenKey& key, const CString& name, DWORD* type, void* bytes, DWORD* size) {
  return RegQueryValueExW(key, name, nullptr, type, static_cast<BYTE*>(bytes), size);
}

// Reads numbers from a text in the manner of scanf: blanks ahead of a number are skipped, and the first number that
// doesn't stand there ends the scan.
class Scan {
 public:
  explicit Scan(const CString& text) : rest_(text.View()) {}

  // A decimal number, cut to its low 32 bits; false, with the value untouched, if there is none.
  bool Integer(DWORD& value) {
    SkipBlanks();
    std::size_t at = 0;
    const bool negative = At(0) == '-';
    if (negative || At(0) == '+') ++at;
    if (!IsDigit(At(at))) return false;
    DWORD number = 0;
    for (; IsDigit(At(at)); ++at) number = number * 10 + DWORD(At(at) - '0');
    rest_.remove_prefix(at);
    value = negative ? 0 - number : number;
    return true;
  }
  bool Integer(LONG& value) {
    DWORD number = 0;
    if (!Integer(number)) return false;
    value = LONG(number);
    return true;
  }
  bool Real(double& value) {
    SkipBlanks();
    std::string narrow;
    for (std::size_t i = At(0) == '+' && At(1) != '-' ? 1 : 0; i < rest_.size() && rest_[i] < 0x80; ++i)
      narrow += char(rest_[i]);
    double number = 0;
    const auto [end, error] = std::from_chars(narrow.data(), narrow.data() + narrow.size(), number);
    if (error == std::errc::invalid_argument) return false;
    if (error == std::errc::result_out_of_range)
      number = OutOfRange(narrow.substr(0, std::size_t(end - narrow.data())));
    value = number;
    return true;
  }

 private:
  char16_t At(std::size_t i) const { return i < rest_.size() ? rest_[i] : u'\0'; }
  static bool IsDigit(char16_t c) { return c >= '0' && c <= '9'; }
  void SkipBlanks() {
    while (At(0) == ' ' || (At(0) >= '\t' && At(0) <= '\r')) rest_.remove_prefix(1);
  }
  // Too small reads as 0, too large as infinity.
  static double OutOfRange(const std::string& number) {
    const bool small = number.find("e-") != std::string::npos || number.find("E-") != std::string::npos ||
                       number.find_first_not_of('-') == number.find('0');
    return std::copysign(small ? 0.0 : HUGE_VAL, number[0] == '-' ? -1.0 : 1.0);
  }

  std::u16string_view rest_;
};

}  // namespace

// ---- what all share

int QFSettingsValue::SaveValueToRegistry(QFSettingsKey*) { return 0; }

int QFSettingsValue::RestoreValueFromRegistry(QFSettingsKey*) { return 0; }

int QFSettingsValue::SaveBytes(QFSettingsKey* key, DWORD type, const void* bytes, DWORD size) const {
  return RegSetValueExW(OpenForSaving(key), m_Name, 0, type, static_cast<const BYTE*>(bytes), size) == ERROR_SUCCESS;
}

int QFSettingsValue::SaveText(QFSettingsKey* key, const CString& text) const {
  return SaveBytes(key, REG_SZ, text.GetString(), DWORD(text.GetLength() + 1) * sizeof(TCHAR));
}

int QFSettingsValue::RestoreBytes(QFSettingsKey* key, void* bytes, DWORD size) const {
  return Query(OpenForRestoring(key), m_Name, nullptr, bytes, &size) == ERROR_SUCCESS;
}

int QFSettingsValue::RestoreText(QFSettingsKey* key, CString& text) const {
  const OpenKey opened = OpenForRestoring(key);
  DWORD size = 0;
  if (Query(opened, m_Name, nullptr, nullptr, &size) != ERROR_SUCCESS || size > kMostTextBytes) return 0;
  // As many characters as bytes, cleared: a text stored without its terminator ends here all the same.
  std::u16string buffer(std::size_t(size) + 1, u'\0');
  if (Query(opened, m_Name, nullptr, buffer.data(), &size) != ERROR_SUCCESS) return 0;
  text = buffer.c_str();
  return 1;
}

// ---- the types

int QFDoubleValue::SaveValueToRegistry(QFSettingsKey* key) {
  return SaveBytes(key, REG_BINARY, &m_Data, sizeof m_Data);
}

int QFDoubleValue::RestoreValueFromRegistry(QFSettingsKey* key) {
  double data = 0;
  if (!RestoreBytes(key, &data, sizeof data)) return 0;
  m_Data = data;
  return 1;
}

int QFStringValue::SaveValueToRegistry(QFSettingsKey* key) { return SaveText(key, m_Data); }

int QFStringValue::RestoreValueFromRegistry(QFSettingsKey* key) { return RestoreText(key, m_Data); }

int QFIntValue::SaveValueToRegistry(QFSettingsKey* key) { return SaveBytes(key, REG_DWORD, &m_Data, sizeof m_Data); }

int QFIntValue::RestoreValueFromRegistry(QFSettingsKey* key) {
  int data = 0;
  if (!RestoreBytes(key, &data, sizeof data)) return 0;
  m_Data = data;
  return 1;
}

int QFColorValue::SaveValueToRegistry(QFSettingsKey* key) { return SaveBytes(key, REG_DWORD, &m_Data, sizeof m_Data); }

int QFColorValue::RestoreValueFromRegistry(QFSettingsKey* key) {
  DWORD data = 0;
  if (!RestoreBytes(key, &data, sizeof data)) return 0;
  m_Data = data;
  return 1;
}

int QFPointValue::SaveValueToRegistry(QFSettingsKey* key) {
  CString text;
  text.Format(_T("%ld %ld"), m_Data.x, m_Data.y);
  return SaveText(key, text);
}

int QFPointValue::RestoreValueFromRegistry(QFSettingsKey* key) {
  CString text;
  if (!RestoreText(key, text)) return 0;
  Scan scan(text);
  // The scan's result doesn't count, as required: the fields that it reached are taken.
  static_cast<void>(scan.Integer(m_Data.x) && scan.Integer(m_Data.y));
  return 1;
}

int QFRectValue::SaveValueToRegistry(QFSettingsKey* key) {
  CString text;
  text.Format(_T("%ld %ld %ld %ld"), m_Data.left, m_Data.top, m_Data.right, m_Data.bottom);
  return SaveText(key, text);
}

int QFRectValue::RestoreValueFromRegistry(QFSettingsKey* key) {
  CString text;
  if (!RestoreText(key, text)) return 0;
  Scan scan(text);
  for (LONG* side : {&m_Data.left, &m_Data.top, &m_Data.right, &m_Data.bottom}) {
    if (!scan.Integer(*side)) break;  // as for a point
  }
  return 1;
}

int QFTimeValue::SaveValueToRegistry(QFSettingsKey* key) {
  CString text;
  text.Format(_T("%ld"), LONG(m_Data.GetTime()));  // cut to 32 bits, as the format requires
  return SaveText(key, text);
}

int QFTimeValue::RestoreValueFromRegistry(QFSettingsKey* key) {
  CString text;
  if (!RestoreText(key, text)) return 0;
  DWORD low = 0;  // only the low half of the 64 bits is ever filled: a negative text becomes a large positive time
  Scan(text).Integer(low);
  m_Data = CTime(LONGLONG(low));
  return 1;
}

int QFLongDoubleStrValue::SaveValueToRegistry(QFSettingsKey* key) {
  CString text;
  text.Format(_T("%lf"), m_Data);
  return SaveText(key, text);
}

int QFLongDoubleStrValue::RestoreValueFromRegistry(QFSettingsKey* key) {
  CString text;
  if (!RestoreText(key, text)) return 0;
  Scan(text).Real(m_Data);
  return 1;
}

int QFIntArrayValue::SaveValueToRegistry(QFSettingsKey* key) {
  return SaveBytes(key, REG_BINARY, m_Data.GetData(), DWORD(m_Data.GetSize()) * sizeof(int));
}

int QFIntArrayValue::RestoreValueFromRegistry(QFSettingsKey* key) {
  const OpenKey opened = OpenForRestoring(key);
  DWORD type = 0;
  DWORD size = 0;
  if (Query(opened, m_Name, &type, nullptr, &size) != ERROR_SUCCESS) return 0;
  if (type != REG_BINARY) return 1;  // required: another type counts as read and changes nothing
  std::vector<int> data((std::size_t(size) + sizeof(int) - 1) / sizeof(int));
  if (size != 0 && Query(opened, m_Name, nullptr, data.data(), &size) != ERROR_SUCCESS) return 0;
  m_Data.SetSize(LONGLONG(size / sizeof(int)));
  for (LONGLONG i = 0; i < m_Data.GetSize(); ++i) m_Data[i] = data[std::size_t(i)];
  return 1;
}
