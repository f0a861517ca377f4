// Reads keys of the registry for a command: keys, values and everything below them, in one state of the hive.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/registry/registry_values.h"
#include "share/core/registry_key_handle.h"
#include "share/core/registry_transaction.h"

namespace kestrova {

// The reason and the remedy on one line.
std::string TextOf(const registry_text::Error& error);

// Throws NotFound for a missing key, and Failure for any other status but ERROR_SUCCESS.
void CheckStatus(LSTATUS status, const registry_text::KeyName& key);

// Opens a key outside transactions, as CheckStatus.
RegistryKeyHandle OpenKey(const registry_text::KeyName& key, REGSAM rights);

// All values of an open key, in the order of their creation. Throws Failure if one can't be read.
std::vector<RegistryValue> ReadValues(const registry_text::KeyName& key, HKEY open);
// Reads type and data of the value with value.name. False if there is no such value.
bool ReadValue(const registry_text::KeyName& key, HKEY open, RegistryValue& value);

class RegistryReader {
 public:
  // The key and, if `below`, all keys below it; with a name only the keys that have a value of that name. Throws
  // NotFound if the key is missing, Failure if something can't be read.
  std::vector<KeyContent> Read(const registry_text::KeyName& key, const std::optional<std::basic_string<TCHAR>>& name,
                               bool below);

 private:
  void Collect(const registry_text::KeyName& key, const std::optional<std::basic_string<TCHAR>>& name, bool below,
               bool listed);

  RegistryTransaction transaction_;
  std::vector<KeyContent> contents_;
};

}  // namespace kestrova
