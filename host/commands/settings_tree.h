// The settings that a command works on: the application's, which the registry stores, or a document's, which are in its
// file.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/document/open_document.h"
#include "host/settings/settings_values.h"
#include "share/settings/application_settings.h"
#include "share/settings/document_settings.h"
#include "share/settings/registry_text.h"

namespace kestrova {

class SettingsTree {
 public:
  enum class For {
    kShowing,    // defaults for values that can't be read, with a line on stderr
    kComparing,  // Failure if the registry can't be read
    kChanging,   // the same
  };
  // Opens the tree of that name; if it is empty the document's if there is a file, else the application's. Without a
  // file the document's tree is that of a new document. The application's values are those of one moment.
  SettingsTree(const std::string& name, const std::string& file, For use);

  TreeValues& Values() { return values_; }

  // Saves all changes, or none and throws Failure.
  void Save(const std::vector<SettingChange>& changes);

 private:
  void OpenApplication(For use);

  const std::string file_;
  std::optional<OpenDocument> document_;
  std::optional<QFDocSettings> fresh_;
  std::unique_ptr<QFSettingsKey> stored_;
  std::unique_ptr<QFSettingsKey> defaults_;
  QFSettingsKey* tree_ = nullptr;
  TreeValues values_;
};

}  // namespace kestrova
