// The values of a settings tree one by one, in the order of declaration, with their data as JSON and as text: what
// `kestrova settings` lists, changes, exports and compares.
//
// A colour is a number 0x00BBGGRR in JSON and #RRGGBB in text; points, rectangles and arrays are arrays of numbers in
// JSON and numbers with commas in text; a time is in seconds since 1970.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "share/settings/settings_group.h"

namespace kestrova {

using Json = nlohmann::ordered_json;

// One declared value. The pointers stay the tree's.
struct TreeValue {
  std::string group;  // its class
  std::string key;    // the key's name
  std::string path;   // in the registry
  std::string name;
  int number = 0;  // among the values of that name in its key, from 0; a name that is declared once has 0 alone
  QFSettingsKey* owner = nullptr;
  QFSettingsValue* value = nullptr;
  Json defaultData;

  std::string FullName() const { return key + '/' + name; }
};

// The values of the tree that `defaults` declares; their default is what they have there. What the tree lacks, or has
// of another type, is left out, and so are tables of feed colours.
std::vector<TreeValue> ValuesOf(QFSettingsKey& tree, QFSettingsKey& defaults);

// "int", "double", "string", "colour", "point", "rect", "time" or "int array".
const char* TypeOf(const QFSettingsValue& value);
// What the type takes, in words.
const char* WantedBy(const QFSettingsValue& value);

Json DataOf(const QFSettingsValue& value);
// Whether the value takes the data.
bool Takes(const QFSettingsValue& value, const Json& data);
// To be called with data that the value takes.
void SetData(QFSettingsValue& value, const Json& data);

std::string TextOf(const QFSettingsValue& value, const Json& data);
// What a user means by the text; null, which no value takes, if it has not the type's form.
Json DataFromText(const QFSettingsValue& value, const std::string& text);

// The value of that name that the tree's own search finds: of several the one that was declared last. GROUP/NAME, with
// the key's name or the class, names one of a group. Throws Failure with the nearest names.
TreeValue& FindValue(std::vector<TreeValue>& values, const std::string& name);

}  // namespace kestrova
