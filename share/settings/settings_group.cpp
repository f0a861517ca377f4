// Builds a group's values from its table.
#include "share/settings/settings_group.h"

#include "share/core/dump.h"
#include "share/core/registry_keys.h"

namespace {

// The default of a row in the type that AddValue takes.
CString DefaultOf(LPCTSTR text) { return text; }
unsigned long DefaultOf(SettingsColor color) { return color.bgr; }
CPoint DefaultOf(const POINT& point) { return point; }
CRect DefaultOf(const RECT& rect) { return rect; }
template <class Value>
Value DefaultOf(Value (*make)()) {
  return make();
}
template <class Number>
Number DefaultOf(Number number) {
  return number;
}

}  // namespace

SettingsGroup::SettingsGroup(const std::type_info& type, LPCTSTR className, const CString& name, const CString& path,
                             std::span<const SettingsRow> rows)
    : QFSettingsKey(name, path), m_ClassName(className) {
  SetLibraryClass(type);
  for (const SettingsRow& row : rows) {
    std::visit([&](const auto& value) { AddValue(row.name, DefaultOf(value)); }, row.value);
  }
}

CString SettingsGroup::InProductRoot(LPCTSTR path) { return CString(kProductRoot) + path; }

void SettingsGroup::DumpData(FILE* file) {
  if (!file) return;
  DumpBanner(file, m_ClassName, _T("Start"));
  DumpBanner(file, m_ClassName, _T("End"));
  QFSettingsKey::DumpData(file);
}

IMPLEMENT_SERIAL(QFAdv3AxisSettings, QFSettingsKey, VERSIONABLE_SCHEMA | 1)

QFAdv3AxisSettings::QFAdv3AxisSettings()
    : SettingsGroup(typeid(QFAdv3AxisSettings), _T("QFAdv3AxisSettings"), _T("Settings\\"),
                    _T("Software\\Vero International Software\\Machining Strategist\\7.0\\Settings\\"), {}) {}
