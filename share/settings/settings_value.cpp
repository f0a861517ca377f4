// The typed values: archive records and dumps. Their registry encodings stand in settings_encoding.cpp.
#include "share/settings/settings_value.h"

#include "framework/archive.h"
#include "share/objects/dump.h"
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

template <class T>
void Transfer(CArchive& ar, T& data) {
  if (ar.IsStoring()) {
    ar << data;
  } else {
    ar >> data;
  }
}

}  // namespace

// ---- archive

void QFSettingsValue::Serialize(CArchive& ar) {
  QFBaseObject::Serialize(ar);
  // A value that is read while it stands in a tree may get another name.
  if (ar.IsLoading() && m_pOwner) m_pOwner->ForgetNames();
  Transfer(ar, m_Name);
}

void QFDoubleValue::Serialize(CArchive& ar) {
  QFSettingsValue::Serialize(ar);
  Transfer(ar, m_Data);
}

void QFStringValue::Serialize(CArchive& ar) {
  QFSettingsValue::Serialize(ar);
  Transfer(ar, m_Data);
}

void QFIntValue::Serialize(CArchive& ar) {
  QFSettingsValue::Serialize(ar);
  Transfer(ar, m_Data);
}

void QFColorValue::Serialize(CArchive& ar) {
  QFSettingsValue::Serialize(ar);
  Transfer(ar, m_Data);
}

void QFPointValue::Serialize(CArchive& ar) {
  QFSettingsValue::Serialize(ar);
  Transfer(ar, m_Data.x);
  Transfer(ar, m_Data.y);
}

void QFRectValue::Serialize(CArchive& ar) {
  QFSettingsValue::Serialize(ar);
  for (LONG* side : {&m_Data.left, &m_Data.top, &m_Data.right, &m_Data.bottom}) Transfer(ar, *side);
}

void QFTimeValue::Serialize(CArchive& ar) {
  QFSettingsValue::Serialize(ar);
  Transfer(ar, m_Data);
}

void QFLongDoubleStrValue::Serialize(CArchive& ar) {
  QFSettingsValue::Serialize(ar);
  Transfer(ar, m_Data);
}

// The count is 32 bits wide here, unlike the counts of the framework's own arrays.
void QFIntArrayValue::Serialize(CArchive& ar) {
  QFSettingsValue::Serialize(ar);
  if (ar.IsStoring()) {
    ar << DWORD(m_Data.GetSize());
    ar.Write(m_Data.GetData(), std::size_t(m_Data.GetSize()) * sizeof(int));
  } else {
    DWORD count = 0;
    ar >> count;
    ar.EnsureLeft(count, sizeof(int));
    m_Data.SetSize(count);
    ar.EnsureRead(m_Data.GetData(), std::size_t(count) * sizeof(int));
  }
}

// ---- dumps

void QFSettingsValue::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("QFSettingsValue"), _T("Start"));
  DumpPrint(file, _T("\n m_Name: %s"), m_Name);
  DumpBanner(file, _T("QFSettingsValue"), _T("End"));
}

void QFDoubleValue::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("QFDoubleValue"), _T("Start"));
  DumpPrint(file, _T("\n m_Data: %8.6f"), m_Data);
  DumpBanner(file, _T("QFDoubleValue"), _T("End"));
}

void QFStringValue::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("QFStringValue"), _T("Start"));
  DumpPrint(file, _T("\n m_Data: %s"), m_Data);
  DumpBanner(file, _T("QFStringValue"), _T("End"));
}

void QFIntValue::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("QFIntValue"), _T("Start"));
  DumpPrint(file, _T("\n m_Data: %d"), m_Data);
  DumpBanner(file, _T("QFIntValue"), _T("End"));
}

void QFColorValue::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("QFColorValue"), _T("Start"));
  DumpPrint(file, _T("\n m_Data: %d"), int(m_Data));
  DumpBanner(file, _T("QFColorValue"), _T("End"));
}

void QFPointValue::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("QFPointValue"), _T("Start"));
  CString point;
  point.Format(_T("m_Data.x = %d, m_Data.y = %d"), m_Data.x, m_Data.y);
  DumpPrint(file, _T("\n Point: %s"), point);
  DumpBanner(file, _T("QFPointValue"), _T("End"));
}

void QFRectValue::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("QFRectValue"), _T("Start"));
  CString rect;
  rect.Format(_T("m_Data.left = %d, m_Data.top = %d, m_Data.right = %d, m_Data.bottom = %d"), m_Data.left, m_Data.top,
              m_Data.right, m_Data.bottom);
  DumpPrint(file, _T("\n Rect: %s"), rect);
  DumpBanner(file, _T("QFRectValue"), _T("End"));
}

void QFTimeValue::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("QFTimeValue"), _T("Start"));
  DumpBanner(file, _T("QFTimeValue"), _T("End"));
}

void QFLongDoubleStrValue::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("QFDoubleStrValue"), _T("Start"));
  DumpBanner(file, _T("QFDoubleStrValue"), _T("End"));
}

void QFIntArrayValue::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, _T("QFIntArrayValue"), _T("Start"));
  DumpBanner(file, _T("QFIntArrayValue"), _T("End"));
}
