#include "host/settings/settings_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "host/shell/failure.h"
#include "host/shell/whole_file.h"

namespace kestrova {

namespace {

// An export has some 150 KB, and at most lists of pairs inside its rows. Parsed JSON takes up to 40 times its bytes.
constexpr std::size_t kMostImportBytes = 16 << 20;
constexpr int kMostDepth = 8;

}  // namespace

SettingsFile::SettingsFile(const std::string& file, TreeValues& tree) : file_(file), tree_(tree) {
  const std::string bytes = ReadWholeFile(file, kMostImportBytes);
  if (bytes.size() > kMostImportBytes) Refuse(fmt::format("it is longer than {} MiB", kMostImportBytes >> 20));
  Json json;
  try {
    json = Json::parse(bytes, [this](int depth, Json::parse_event_t, Json&) {
      if (depth > kMostDepth) Refuse("it is not an export of settings: it is nested too deeply");
      return true;
    });
  } catch (const Json::parse_error& error) {
    Refuse(fmt::format("byte {}: not valid JSON", error.byte));
  } catch (const Json::out_of_range&) {
    Refuse("a number is larger than any setting takes");
  }
  const auto name = json.is_object() ? json.find("tree") : json.end();
  const auto rows = json.is_object() ? json.find("values") : json.end();
  if (!json.is_object() || name == json.end() || !name->is_string() || rows == json.end() || !rows->is_array())
    Refuse("it is not an export of settings: \"tree\" and \"values\" are missing");
  if (*name != tree.Name())
    Refuse(fmt::format("it contains {} settings, not {} settings; see --tree and --document", name->get<std::string>(),
                       tree.Name()));
  for (const Json& row : *rows) Add(row);
}

void SettingsFile::Refuse(const std::string& reason) const {
  throw Failure(fmt::format("{}: {}", file_, reason), {file_});
}

std::string SettingsFile::Text(const Json& row, const char* field) const {
  const auto found = row.is_object() ? row.find(field) : row.end();
  if (!row.is_object() || found == row.end() || !found->is_string())
    Refuse(fmt::format("value {} has no \"{}\"", values_.size(), field));
  return found->get<std::string>();
}

// The second row of a name belongs to its second declaration.
TreeValue& SettingsFile::Find(const std::string& group, const std::string& path, const std::string& name) {
  const int number = seen_[{group, path, name}]++;
  for (TreeValue& value : tree_.all) {
    if (value.name == name && value.group == group && value.path == path && value.number == number) return value;
  }
  if (number > 0) Refuse(fmt::format("value {}: {} {} is listed too often", values_.size(), group, name));
  try {
    return FindValue(tree_.all, group + '/' + name);
  } catch (const Failure& failure) {
    Refuse(fmt::format("value {}: {}", values_.size(), failure.what()));
  }
}

void SettingsFile::Add(const Json& row) {
  const std::string group = Text(row, "group"), path = Text(row, "path"), name = Text(row, "name");
  TreeValue& found = Find(group, path, name);
  if (found.path != path)
    Refuse(fmt::format("value {}: {} {} is stored in {}, not in {}", values_.size(), group, name, found.path, path));
  const auto data = row.find("value");
  if (Text(row, "type") != TypeOf(*found.value))
    Refuse(fmt::format("value {}: {} has the type {}", values_.size(), found.FullName(), TypeOf(*found.value)));
  if (data == row.end() || !Takes(*found.value, *data))
    Refuse(fmt::format("value {}: {} takes {}", values_.size(), found.FullName(), ExpectedBy(*found.value)));
  values_.push_back({&found, *data});
}

// ---- changes

std::vector<const SettingsFile::Value*> SettingsFile::StoredWith(const Value& value) const {
  const std::vector<TreeValue*> rows = tree_.StoredWith(*value.row);
  std::vector<const Value*> found;
  for (const Value& each : values_)
    if (std::find(rows.begin(), rows.end(), each.row) != rows.end()) found.push_back(&each);
  return found;
}

// A name that is declared twice has two defaults: an export of a name that is not stored has both, and stands for "not
// stored". The registry has no form for other pairs.
std::vector<SettingChange> SettingsFile::SetAll() const {
  std::vector<std::vector<const Value*>> changed;
  for (const Value& value : values_) {
    const std::vector<const Value*> given = StoredWith(value);
    const auto all = [&](auto matches) { return std::all_of(given.begin(), given.end(), matches); };
    if (given.front() != &value || all([](auto* each) { return DataOf(*each->row->value) == each->data; })) continue;
    const bool defaults = given.size() == tree_.StoredWith(*value.row).size() &&
                          all([](auto* each) { return each->data == each->row->defaultData; });
    if (!defaults && !all([&](auto* each) { return each->data == value.data; }))
      Refuse(fmt::format("{} is declared twice, but the registry has one value; give it one in both rows",
                         value.row->FullName()));
    changed.push_back(given);
  }
  std::vector<SettingChange> changes;
  for (const auto& given : changed) {
    const bool same = given.front()->data == given.back()->data;
    if (same) tree_.Set(*given.front()->row, given.front()->data);
    for (const Value* each : given) SetData(*each->row->value, each->data);
    changes.push_back({given.front()->row, /*to_default=*/!same});
  }
  return changes;
}

// ---- exports

Json RowJson(const TreeValue& row) {
  return {{"group", row.group},          {"path", row.path},          {"name", row.name}, {"type", TypeOf(*row.value)},
          {"value", DataOf(*row.value)}, {"default", row.defaultData}};
}

bool IsChanged(const TreeValue& row) { return DataOf(*row.value) != row.defaultData; }

Json SettingsJson(const TreeValues& tree, bool changedOnly) {
  Json rows = Json::array();
  for (const TreeValue& row : tree.all) {
    if (!changedOnly || IsChanged(row)) rows.push_back(RowJson(row));
  }
  return {{"tree", tree.Name()}, {"values", std::move(rows)}};
}

}  // namespace kestrova
