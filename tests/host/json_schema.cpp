#include "tests/host/json_schema.h"

#include <rapidjson/document.h>
#include <rapidjson/schema.h>
#include <rapidjson/stringbuffer.h>

#include <algorithm>
#include <cctype>

#include "tests/folders.h"
#include "tests/scratch.h"

namespace kvtest {
namespace {

template <class Pointer>
std::string TextOf(const Pointer& pointer) {
  rapidjson::StringBuffer text;
  pointer.StringifyUriFragment(text);
  return text.GetString();
}

std::string OddKey(const rapidjson::Value& value) {
  std::string odd;
  const auto look = [&](const rapidjson::Value& below) { odd = odd.empty() ? OddKey(below) : odd; };
  if (value.IsArray()) std::for_each(value.Begin(), value.End(), look);
  if (!value.IsObject()) return odd;
  for (const auto& member : value.GetObject()) {
    const std::string key = member.name.GetString();
    if (key.empty() || !std::islower(key[0]) ||
        !std::all_of(key.begin(), key.end(), [](int c) { return std::isalnum(c); }))
      return key;
    look(member.value);
  }
  return odd;
}

}  // namespace

std::string SchemaFile(const std::string& name) { return SourceFile("docs/schemas/" + name + ".schema.json").string(); }

std::string SchemaFault(const std::string& name, const std::string& json) {
  rapidjson::Document schema, value;
  if (schema.Parse(ReadFile(SchemaFile(name)).c_str()).HasParseError()) return "the schema is not JSON";
  if (value.Parse(json.c_str()).HasParseError()) return "not JSON: " + json;
  const rapidjson::SchemaDocument rules(schema);
  rapidjson::SchemaValidator validator(rules);
  if (!value.Accept(validator))
    return TextOf(validator.GetInvalidDocumentPointer()) + " breaks " + validator.GetInvalidSchemaKeyword() + " of " +
           TextOf(validator.GetInvalidSchemaPointer()) + " in " + name + "\n" + json;
  const std::string odd = OddKey(value);
  return odd.empty() ? "" : "the key " + odd + " is not in camelCase";
}

}  // namespace kvtest
