#include "host/registry/registry_reader.h"

#include <fmt/format.h>

#include "host/registry/registry_health.h"
#include "host/shell/failure.h"

namespace kestrova {

namespace {

using registry_text::KeyName;
using Text = std::basic_string<TCHAR>;

constexpr std::size_t kNameRoom = 16384;

std::vector<Text> ReadSubKeys(const KeyName& key, HKEY open) {
  std::vector<Text> names;
  for (TCHAR name[256];;) {
    DWORD units = 256;
    const LSTATUS status = RegEnumKeyExW(open, DWORD(names.size()), name, &units, nullptr, nullptr, nullptr, nullptr);
    if (status == ERROR_NO_MORE_ITEMS) return names;
    CheckStatus(status, key);
    names.emplace_back(name, units);
  }
}

KeyName Below(const KeyName& key, const Text& name) {
  return {key.hive, key.path.empty() ? name : key.path + TCHAR('\\') + name};
}

}  // namespace

std::string TextOf(const registry_text::Error& error) { return fmt::format("{}; {}", error.reason, error.remedy); }

void CheckStatus(LSTATUS status, const KeyName& key) {
  if (status == ERROR_SUCCESS) return;
  const std::string reason = TextOf(registry_text::ErrorOf(status, key));
  if (status == ERROR_FILE_NOT_FOUND) throw NotFound(reason);
  throw Failure(reason);
}

RegistryKeyHandle OpenKey(const KeyName& key, REGSAM rights) {
  RegistryKeyHandle open;
  CheckStatus(RegOpenKeyExW(key.hive, key.path.c_str(), 0, rights, open.Receive()), key);
  return open;
}

std::vector<RegistryValue> ReadValues(const KeyName& key, HKEY open) {
  std::vector<RegistryValue> values;
  Text name(kNameRoom, TCHAR(0));
  for (std::vector<BYTE> data(4096);;) {
    DWORD units = DWORD(name.size()), size = DWORD(data.size()), type = 0;
    const LSTATUS status =
        RegEnumValueW(open, DWORD(values.size()), name.data(), &units, nullptr, &type, data.data(), &size);
    if (status == ERROR_NO_MORE_ITEMS) return values;
    if (status == ERROR_MORE_DATA && size > data.size()) {
      data.resize(size);
    } else {
      CheckStatus(status, key);
      values.push_back({name.substr(0, units), type, {data.begin(), data.begin() + size}});
    }
  }
}

bool ReadValue(const KeyName& key, HKEY open, RegistryValue& value) {
  DWORD size = 256;
  LSTATUS status = ERROR_MORE_DATA;
  while (status == ERROR_MORE_DATA) {
    value.data.resize(size);
    status = RegQueryValueExW(open, value.name.c_str(), nullptr, &value.type, value.data.data(), &size);
  }
  if (status == ERROR_FILE_NOT_FOUND) return false;
  CheckStatus(status, key);
  value.data.resize(size);
  return true;
}

std::vector<KeyContent> RegistryReader::Read(const KeyName& key, const std::optional<Text>& name, bool below) {
  contents_.clear();
  if (below || key.path.empty()) CheckWhole(key.hive);
  Collect(key, name, below, /*listed=*/false);
  return std::move(contents_);
}

// Recurses once for each level of the tree, of which there are at most 512. A sub-key that its key has listed and that
// can't be found is damage.
void RegistryReader::Collect(const KeyName& key, const std::optional<Text>& name, bool below, bool listed) {
  RegistryKeyHandle open;
  const LSTATUS status = OpenKeyIn(transaction_, key.hive, key.path.c_str(), KEY_READ, open.Receive());
  CheckStatus(listed && status == ERROR_FILE_NOT_FOUND ? ERROR_BADDB : status, key);
  KeyContent content{key, {}, ReadSubKeys(key, open)};
  RegistryValue value{name.value_or(Text()), REG_NONE, {}};
  if (!name) {
    content.values = ReadValues(key, open);
  } else if (ReadValue(key, open, value)) {
    content.values.push_back(value);
  }
  open.Close();
  const std::vector<Text> sub_keys = below ? content.sub_keys : std::vector<Text>();
  if (!name || !content.values.empty()) contents_.push_back(std::move(content));
  for (const Text& sub_key : sub_keys) Collect(Below(key, sub_key), name, below, /*listed=*/true);
}

}  // namespace kestrova
