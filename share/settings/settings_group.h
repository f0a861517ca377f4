// SettingsGroup: a settings key whose constructor adds the values of a table. Every group of the application settings
// and the document settings is one (share/settings/application_settings.h, document_settings.h).
//
// A group is a class with one registry key below HKEY_CURRENT_USER. A table has its values, one per row; archives and
// dumps use the name of the class:
//
//   constexpr SettingsRow kConfigRows[] = {
//       {_T("ConfigurationSave"), 1},
//       {_T("UseKVConfig"), 1},
//   };
//   KV_SETTINGS_GROUP(QFConfigSettings)                                                  // header
//   KV_IMPLEMENT_SETTINGS_GROUP(QFConfigSettings, _T("Configurations"), _T("Configurations"), kConfigRows)  // source
#pragma once

#include <memory>
#include <span>
#include <variant>

#include "share/settings/settings_key.h"

// A colour 0x00BBGGRR: 0xFF is pure red.
struct SettingsColor {
  DWORD bgr;
};

// The name and the default of a value. The type of the default selects the type of the value; a function is called in
// the group's constructor.
struct SettingsRow {
  LPCTSTR name;
  std::variant<int, double, LPCTSTR, SettingsColor, POINT, RECT, CString (*)(), CTime (*)()> value;
};

class KVSHARE_API SettingsGroup : public QFSettingsKey {
 public:
  // Prints the start and the end banner of the class with nothing between them, and then the dump of the key. The form
  // is kept for existing readers of dumps.
  void DumpData(FILE* file) override;

  // The name of the class; also of a class without a run-time class.
  CString GetGroupClassName() const { return m_ClassName; }

 protected:
  // Adds the rows in order. className is not copied: it must outlive the group.
  SettingsGroup(const std::type_info& type, LPCTSTR className, const CString& name, const CString& path,
                std::span<const SettingsRow> rows);

  // Adds a new sub-key.
  template <class Group>
  void AddGroup() {
    auto group = std::make_unique<Group>();
    AddKey(group.get());
    static_cast<void>(group.release());
  }

  // The path below the product's registry key.
  static CString InProductRoot(LPCTSTR path);

 private:
  LPCTSTR m_ClassName;
};

// Declares a group without members besides its table: default constructor, run-time class, archive operator.
#define KV_SETTINGS_GROUP(class_name)                   \
  class KVSHARE_API class_name : public SettingsGroup { \
    DECLARE_SERIAL(class_name)                          \
                                                        \
   public:                                              \
    class_name();                                       \
  };

// Defines such a group: the name of the key, its path below the product's registry key, its rows. Schema 1.
#define KV_IMPLEMENT_SETTINGS_GROUP(class_name, name, path, rows)     \
  IMPLEMENT_SERIAL(class_name, QFSettingsKey, VERSIONABLE_SCHEMA | 1) \
  class_name::class_name() : SettingsGroup(typeid(class_name), _T(#class_name), name, InProductRoot(path), rows) {}

// The registry key of another maker's product, in both trees. It has no values.
KV_SETTINGS_GROUP(QFAdv3AxisSettings)
