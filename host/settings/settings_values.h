// The values of a settings tree in the order of declaration, with their data as JSON and as text. `kestrova settings`
// lists, changes, exports and compares them.
//
// A colour is a number 0x00BBGGRR in JSON and #RRGGBB in text. Points, rectangles and arrays are arrays of numbers in
// JSON and numbers with commas in text. A time is in seconds since 1970.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "share/settings/settings_group.h"

namespace kestrova {

using Json = nlohmann::ordered_json;

// One declared value. The tree owns what the pointers point to.
struct TreeValue {
  std::string group;  // class name of the key
  std::string key;    // name of the key
  std::string path;   // of the key in the registry
  std::string name;
  int number = 0;  // 0 for the first value of that name in the key, 1 for the second
  QFSettingsKey* owner = nullptr;
  QFSettingsValue* value = nullptr;
  Json defaultData;

  std::string FullName() const { return key + '/' + name; }
};

// A change of a value: to its current data, or to its default, which removes it from the registry.
struct SettingChange {
  TreeValue* row;
  bool to_default = false;
};

inline constexpr char kApplicationTree[] = "application";
inline constexpr char kDocumentTree[] = "document";

// A tree's values and what stores them.
struct TreeValues {
  bool is_document = false;
  std::vector<TreeValue> all;

  const char* Name() const { return is_document ? kDocumentTree : kApplicationTree; }
  // The values that one stored value stands for, in the order of declaration: a document stores each value; the
  // registry has one value for all that have the same key and name.
  std::vector<TreeValue*> StoredWith(TreeValue& row);
  // Sets the value and all that are stored with it. Throws WrongUsage if one does not take the data.
  void Set(TreeValue& row, const Json& data);
};

// The values that `defaults` declares, with the tree's data and the default from `defaults`. Leaves out values that the
// tree does not have or has with another type, and tables of feed colours.
std::vector<TreeValue> ValuesOf(QFSettingsKey& tree, QFSettingsKey& defaults);

// "int", "double", "string", "colour", "point", "rect", "time" or "int array".
const char* TypeOf(const QFSettingsValue& value);
// What the type accepts, in words: "a whole number of 32 bits".
const char* ExpectedBy(const QFSettingsValue& value);

Json DataOf(const QFSettingsValue& value);
// True if the data has the value's type and range.
bool Takes(const QFSettingsValue& value, const Json& data);
// The value must take the data.
void SetData(QFSettingsValue& value, const Json& data);

std::string TextOf(const QFSettingsValue& value, const Json& data);
// The value's data for a script: a text as it is, a time in seconds, all else as TextOf.
std::string PlainTextOf(const QFSettingsValue& value);
// The data of a text from the command line; null, which no value takes, if the text does not have the type's form.
Json DataFromText(const QFSettingsValue& value, const std::string& text);

// The value that the tree's own search finds for the name: the last declared one. GROUP/NAME selects one group, by the
// name or the class of its key. Throws Failure with the nearest names if there is no such value.
TreeValue& FindValue(std::vector<TreeValue>& values, const std::string& name);

}  // namespace kestrova
