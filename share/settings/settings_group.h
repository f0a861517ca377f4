// SettingsGroup, a settings key that its constructor builds whole from a table: the form of every group of the
// application's and the document's settings (share/settings/application_settings.h, document_settings.h).
//
// A group is one class with one registry key below HKEY_CURRENT_USER. What it holds stands in a table, one row a value;
// the class itself adds its name, by which archives and dumps know it:
//
//   constexpr SettingsRow kConfigRows[] = {
//       {_T("ConfigurationSave"), 1},
//       {_T("UseKVConfig"), 1},
//   };
//   KV_SETTINGS_GROUP(QFConfigSettings)                                                  // header
//   KV_IMPLEMENT_SETTINGS_GROUP(QFConfigSettings, _T("Configurations"), _T("Configurations"), kConfigRows)  // source
#pragma once

#include <span>
#include <variant>

#include "share/settings/settings_key.h"

// A colour 0x00BBGGRR: 0xFF is pure red.
struct SettingsColor {
  DWORD bgr;
};

// A value by its name and its default, whose type is the value's. A function makes the default when the group is made.
struct SettingsRow {
  LPCTSTR name;
  std::variant<int, double, LPCTSTR, SettingsColor, POINT, RECT, CString (*)(), CTime (*)()> value;
};

class KVSHARE_API SettingsGroup : public QFSettingsKey {
 public:
  // The banners of the class, start and end with nothing between them, then the key's dump: that is required.
  void DumpData(FILE* file) override;

  // The name of the class, also of the few that have no run-time class of their own.
  CString GetGroupClassName() const { return m_ClassName; }

 protected:
  // Adds the rows in their order. The class's name is kept by its address.
  SettingsGroup(const std::type_info& type, LPCTSTR className, const CString& name, const CString& path,
                std::span<const SettingsRow> rows);

  // A path below the product's own registry key.
  static CString InProductRoot(LPCTSTR path);

 private:
  LPCTSTR m_ClassName;
};

// Declares a group that has nothing beyond its table: default constructor, run-time class, archive operator.
#define KV_SETTINGS_GROUP(class_name)                   \
  class KVSHARE_API class_name : public SettingsGroup { \
    DECLARE_SERIAL(class_name)                          \
                                                        \
   public:                                              \
    class_name();                                       \
  };

// Defines it: the key's name, its path below the product's registry key, its rows. Schema 1.
#define KV_IMPLEMENT_SETTINGS_GROUP(class_name, name, path, rows)     \
  IMPLEMENT_SERIAL(class_name, QFSettingsKey, VERSIONABLE_SCHEMA | 1) \
  class_name::class_name() : SettingsGroup(typeid(class_name), _T(#class_name), name, InProductRoot(path), rows) {}

// The registry key of an outside product, which stands in both trees. It declares no values.
KV_SETTINGS_GROUP(QFAdv3AxisSettings)
