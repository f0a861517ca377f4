// The typed values: each datum's form in archives, dumps and the registry.
#include "share/settings/settings_value.h"

#include <fmt/format.h>

#include <cstring>
#include <initializer_list>
#include <string>
#include <utility>

#include "framework/archive.h"
#include "platform/numbers.h"
#include "share/core/dump.h"
#include "share/settings/internal/registry_batch.h"
#include "share/settings/internal/text_scan.h"
#include "share/settings/settings_key.h"

IMPLEMENT_SERIAL(QFSettingsValue, QFBaseObject, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(QFDoubleValue, QFSettingsValue, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(QFStringValue, QFSettingsValue, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(QFIntValue, QFSettingsValue, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(QFColorValue, QFSettingsValue, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(QFPointValue, QFSettingsValue, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(QFRectValue, QFSettingsValue, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(QFTimeValue, QFSettingsValue, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(QFLongDoubleStrValue, QFSettingsValue, VERSIONABLE_SCHEMA | 1)
IMPLEMENT_SERIAL(QFIntArrayValue, QFSettingsValue, VERSIONABLE_SCHEMA | 1)

namespace {

// ---- archive

template <class T>
void Transfer(CArchive& ar, T& data) {
  if (ar.IsStoring()) {
    ar << data;
  } else {
    ar >> data;
  }
}

void Transfer(CArchive& ar, CPoint& data) {
  Transfer(ar, data.x);
  Transfer(ar, data.y);
}

void Transfer(CArchive& ar, CRect& data) {
  for (LONG* side : {&data.left, &data.top, &data.right, &data.bottom}) Transfer(ar, *side);
}

// The count has 32 bits here, unlike the counts of the framework's arrays.
void Transfer(CArchive& ar, CArray<int, int>& data) {
  if (ar.IsStoring()) {
    ar << DWORD(data.GetSize());
    ar.Write(data.GetData(), std::size_t(data.GetSize()) * sizeof(int));
  } else {
    DWORD count = 0;
    ar >> count;
    ar.EnsureLeft(count, sizeof(int));
    data.SetSize(count);
    ar.EnsureRead(data.GetData(), std::size_t(count) * sizeof(int));
  }
}

// ---- dumps: the name in the banners, and the text between them

template <class Parameter>
constexpr LPCTSTR kBannerOf = nullptr;
template <>
constexpr LPCTSTR kBannerOf<double> = _T("QFDoubleValue");
template <>
constexpr LPCTSTR kBannerOf<const CString&> = _T("QFStringValue");
template <>
constexpr LPCTSTR kBannerOf<int> = _T("QFIntValue");
template <>
constexpr LPCTSTR kBannerOf<unsigned long> = _T("QFColorValue");
template <>
constexpr LPCTSTR kBannerOf<const CPoint&> = _T("QFPointValue");
template <>
constexpr LPCTSTR kBannerOf<const CRect&> = _T("QFRectValue");
template <>
constexpr LPCTSTR kBannerOf<const CTime&> = _T("QFTimeValue");
template <>
constexpr LPCTSTR kBannerOf<long double> = _T("QFDoubleStrValue");
template <>
constexpr LPCTSTR kBannerOf<const CArray<int, int>&> = _T("QFIntArrayValue");

void DumpDatum(FILE* file, double data) { DumpPrint(file, _T("\n m_Data: %8.6f"), data); }
void DumpDatum(FILE* file, const CString& data) { DumpPrint(file, _T("\n m_Data: %s"), data); }
void DumpDatum(FILE* file, int data) { DumpPrint(file, _T("\n m_Data: %d"), data); }
void DumpDatum(FILE* file, unsigned long data) { DumpDatum(file, int(data)); }
void DumpDatum(FILE* file, const CPoint& data) {
  DumpPrint(file, _T("\n Point: m_Data.x = %d, m_Data.y = %d"), data.x, data.y);
}
void DumpDatum(FILE* file, const CRect& data) {
  DumpPrint(file, _T("\n Rect: m_Data.left = %d, m_Data.top = %d, m_Data.right = %d, m_Data.bottom = %d"), data.left,
            data.top, data.right, data.bottom);
}
void DumpDatum(FILE*, const CTime&) {}
void DumpDatum(FILE*, long double) {}
void DumpDatum(FILE*, const CArray<int, int>&) {}

// ---- registry

using Stored = StoredValue;

Stored BytesOf(DWORD type, const void* data, std::size_t size) {
  return {type, std::string(static_cast<const char*>(data), size)};
}

// The text with its terminator.
Stored TextOf(const CString& text) {
  return BytesOf(REG_SZ, text.GetString(), std::size_t(text.GetLength() + 1) * sizeof(TCHAR));
}

// Integers with a blank between them.
Stored TextOf(std::initializer_list<LONG> numbers) {
  Text text;
  for (const LONG number : numbers) {
    const fmt::format_int digits(number);
    if (!text.empty()) text += _T(' ');
    text.append(digits.data(), digits.data() + digits.size());
  }
  return BytesOf(REG_SZ, text.c_str(), (text.size() + 1) * sizeof(TCHAR));
}

Stored Encode(double data) { return BytesOf(REG_BINARY, &data, sizeof data); }
Stored Encode(const CString& data) { return TextOf(data); }
Stored Encode(int data) { return BytesOf(REG_DWORD, &data, sizeof data); }
Stored Encode(unsigned long data) { return Encode(int(DWORD(data))); }
Stored Encode(const CPoint& data) { return TextOf({data.x, data.y}); }
Stored Encode(const CRect& data) { return TextOf({data.left, data.top, data.right, data.bottom}); }
// The low 32 bits only, kept for existing registries.
Stored Encode(const CTime& data) { return TextOf({LONG(data.GetTime())}); }
Stored Encode(long double data) {
  CString text;
  text.Format(_T("%lf"), double(data));
  return TextOf(text);
}
Stored Encode(const CArray<int, int>& data) {
  return BytesOf(REG_BINARY, data.GetData(), std::size_t(data.GetSize()) * sizeof(int));
}

// The text up to the first terminator.
CString TextIn(const Stored& stored) {
  Text text((stored.bytes.size() + 1) / sizeof(TCHAR), _T('\0'));
  std::memcpy(text.data(), stored.bytes.data(), stored.bytes.size());
  return CString(text.c_str());
}

// True if the value counts as read; if false, the datum is unchanged. A number is read from a value of any type that
// has no more bytes than the number.
template <class Number>
bool Decode(const Stored& stored, Number& data) {
  if (stored.bytes.size() > sizeof data) return false;
  data = 0;
  std::memcpy(&data, stored.bytes.data(), stored.bytes.size());
  return true;
}
bool Decode(const Stored& stored, unsigned long& data) {
  std::uint32_t low = 0;
  if (!Decode(stored, low)) return false;
  data = low;
  return true;
}
bool Decode(const Stored& stored, CString& data) {
  data = TextIn(stored);
  return true;
}
// Always true, even if the text is no point (see QFPointValue).
bool Decode(const Stored& stored, CPoint& data) {
  const CString text = TextIn(stored);
  TextScan scan(text.View());
  static_cast<void>(scan.Integer(data.x) && scan.Integer(data.y));
  return true;
}
bool Decode(const Stored& stored, CRect& data) {
  const CString text = TextIn(stored);
  TextScan scan(text.View());
  for (LONG* side : {&data.left, &data.top, &data.right, &data.bottom}) {
    if (!scan.Integer(*side)) break;
  }
  return true;
}
bool Decode(const Stored& stored, CTime& data) {
  const CString text = TextIn(stored);
  DWORD low = 0;  // the upper 32 bits stay 0: a negative number becomes a large positive time
  TextScan(text.View()).Integer(low);
  data = CTime(LONGLONG(low));
  return true;
}
bool Decode(const Stored& stored, long double& data) {
  double number = 0;
  if (ReadNumber(ToUtf8(TextIn(stored)), number)) data = number;
  return true;
}
bool Decode(const Stored& stored, CArray<int, int>& data) {
  if (stored.type != REG_BINARY) return true;  // counts as read and changes nothing (see QFIntArrayValue)
  data.SetSize(LONGLONG(stored.bytes.size() / sizeof(int)));
  if (!data.IsEmpty()) std::memcpy(data.GetData(), stored.bytes.data(), std::size_t(data.GetSize()) * sizeof(int));
  return true;
}

}  // namespace

// ---- values without a datum

void QFSettingsValue::Serialize(CArchive& ar) {
  QFBaseObject::Serialize(ar);
  // Loading a value of a tree may change its name.
  if (ar.IsLoading() && m_pOwner) m_pOwner->DropIndexes();
  Transfer(ar, m_Name);
}

void QFSettingsValue::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("QFSettingsValue"), _T("Start"));
  DumpPrint(file, _T("\n m_Name: %s"), m_Name);
  DumpBanner(file, _T("QFSettingsValue"), _T("End"));
}

RegistryBatch* QFSettingsValue::BatchOf(QFSettingsKey* key) { return key ? key->m_pBatch : nullptr; }

int QFSettingsValue::SaveValueToRegistry(QFSettingsKey*) { return 0; }

int QFSettingsValue::RestoreValueFromRegistry(QFSettingsKey*) { return 0; }

// ---- typed values

template <class Datum, class Parameter>
void QFTypedValue<Datum, Parameter>::Serialize(CArchive& ar) {
  QFSettingsValue::Serialize(ar);
  Transfer(ar, m_Data);
}

template <class Datum, class Parameter>
void QFTypedValue<Datum, Parameter>::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, kBannerOf<Parameter>, _T("Start"));
  DumpDatum(file, Parameter(m_Data));
  DumpBanner(file, kBannerOf<Parameter>, _T("End"));
}

template <class Datum, class Parameter>
int QFTypedValue<Datum, Parameter>::SaveValueToRegistry(QFSettingsKey* key) {
  Stored stored = ToStored();
  if (RegistryBatch* batch = BatchOf(key)) {
    batch->Add(m_Name, std::move(stored));
    return 1;
  }
  return WriteStored(RegistryKeyHandle(key ? key->GetHandleToKey(/*create=*/1, /*readOnly=*/0) : nullptr), m_Name,
                     stored);
}

template <class Datum, class Parameter>
StoredValue QFTypedValue<Datum, Parameter>::ToStored() const {
  return Encode(Parameter(m_Data));
}

template <class Datum, class Parameter>
int QFTypedValue<Datum, Parameter>::RestoreValueFromRegistry(QFSettingsKey* key) {
  Stored stored;
  RegistryBatch* batch = BatchOf(key);
  const RegistryKeyHandle opened(key && !batch ? key->GetHandleToKey(/*create=*/0, /*readOnly=*/1) : nullptr);
  if (!ReadStored(batch ? batch->OpenForReading() : HKEY(opened), m_Name, stored)) return 0;
  if constexpr (std::is_class_v<Datum>) {
    return Decode(stored, m_Data);
  } else {
    Parameter data = m_Data;
    if (!Decode(stored, data)) return 0;
    m_Data = Datum(data);
    return 1;
  }
}

template class QFTypedValue<double>;
template class QFTypedValue<CString>;
template class QFTypedValue<int>;
template class QFTypedValue<DWORD, unsigned long>;
template class QFTypedValue<CPoint>;
template class QFTypedValue<CRect>;
template class QFTypedValue<CTime>;
template class QFTypedValue<double, long double>;
template class QFTypedValue<CArray<int, int>>;
