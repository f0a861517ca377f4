// A file of settings as `kestrova settings export` writes it, or with only some of its values.
#pragma once

#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "host/settings/settings_values.h"

namespace kestrova {

class SettingsFile {
 public:
  struct Value {
    TreeValue* row;
    Json data;
  };

  // Reads the file for the tree, which must outlive this object. Throws Failure at the first thing in it that is wrong.
  SettingsFile(const std::string& file, TreeValues& tree);

  // In the order of the file.
  const std::vector<Value>& Values() const { return values_; }

  // Sets the tree's values that differ from the file, and returns what is to be saved. Throws Failure, before it sets a
  // value, if the file has two values for a name of which the registry has one.
  std::vector<SettingChange> SetAll() const;

 private:
  [[noreturn]] void Refuse(const std::string& reason) const;
  std::string Text(const Json& row, const char* field) const;
  void Add(const Json& row);
  TreeValue& Find(const std::string& group, const std::string& path, const std::string& name);
  std::vector<const Value*> StoredWith(const Value& value) const;

  const std::string& file_;
  TreeValues& tree_;
  std::vector<Value> values_;
  std::map<std::tuple<std::string, std::string, std::string>, int> seen_;
};

// The values as an export has them.
Json SettingsJson(const TreeValues& tree, bool changedOnly);
Json RowJson(const TreeValue& row);
bool IsChanged(const TreeValue& row);

}  // namespace kestrova
