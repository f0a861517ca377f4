// Applies the steps of registry text to the registry, and writes a key as text.
#include <fmt/format.h>

#include <algorithm>

#include "framework/text.h"
#include "platform/errors.h"
#include "platform/process.h"
#include "platform/registry_files.h"
#include "share/core/registry_key_handle.h"
#include "share/core/registry_transaction.h"
#include "share/settings/registry_text.h"

namespace registry_text {

namespace {

using Text = std::basic_string<TCHAR>;
using TextView = std::basic_string_view<TCHAR>;

constexpr std::size_t kNameRoom = 16384;

// ---- applying

class Import {
 public:
  LSTATUS Run(const Step& step) {
    switch (step.kind) {
      case Step::Kind::kCreateKey: return Create(step.key);
      case Step::Kind::kDeleteKey: key_.Close(); return Missing(DeleteTree(step.key.hive, step.key.path));
      case Step::Kind::kSetValue:
        return RegSetValueExW(key_, step.name.c_str(), 0, step.type, step.data.data(), DWORD(step.data.size()));
      case Step::Kind::kDeleteValue: return Missing(RegDeleteValueW(key_, step.name.c_str()));
    }
    return ERROR_INVALID_PARAMETER;
  }

  LSTATUS Commit() {
    key_.Close();
    return transaction_.Commit();
  }

 private:
  static LSTATUS Missing(LSTATUS status) { return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status; }

  LSTATUS Create(const KeyName& key) {
    return CreateKeyIn(transaction_, key.hive, key.path.c_str(), KEY_SET_VALUE, key_.Receive());
  }

  // Deletes the leaves first. A path has at most 512 levels. A sub-key that is listed and can't be found is damage.
  LSTATUS DeleteTree(HKEY hive, const Text& path) {
    RegistryKeyHandle key;
    LSTATUS status = OpenKeyIn(transaction_, hive, path.c_str(), KEY_ENUMERATE_SUB_KEYS, key.Receive());
    while (status == ERROR_SUCCESS) {
      TCHAR name[256];
      DWORD units = 256;
      status = RegEnumKeyExW(key, 0, name, &units, nullptr, nullptr, nullptr, nullptr);
      if (status == ERROR_SUCCESS) status = DeleteTree(hive, path + TCHAR('\\') + name);
      if (status == ERROR_FILE_NOT_FOUND) return ERROR_BADDB;
    }
    key.Close();
    return status == ERROR_NO_MORE_ITEMS ? DeleteKeyIn(transaction_, hive, path.c_str()) : status;
  }

  RegistryTransaction transaction_;
  RegistryKeyHandle key_;  // the key of the last kCreateKey step; the steps for its values follow
};

// ---- writing

class Writer {
 public:
  Writer(std::string& bytes, Error& error) : bytes_(bytes), error_(error), name_(kNameRoom, TCHAR(0)) {}

  bool Run(const KeyName& key) {
    bytes_ = "\xFF\xFE";
    Put(_T("Windows Registry Editor Version 5.00\r\n"));
    if (!WriteKey(key, /*listed=*/false)) return false;
    Put(_T("\r\n"));
    return true;
  }

 private:
  void Put(TextView text) {
    for (const TCHAR unit : text) {
      bytes_.push_back(char(unit));
      bytes_.push_back(char(unit >> 8));
    }
    column_ += text.size();
  }
  void PutAscii(std::string_view text) { Put(Text(text.begin(), text.end())); }

  void PutQuoted(TextView text) {
    Put(_T("\""));
    for (const TCHAR unit : text) {
      if (unit == '"' || unit == '\\') Put(_T("\\"));
      Put({&unit, 1});
    }
    Put(_T("\""));
  }

  bool Fail(const Error& error) {
    error_ = error;
    return false;
  }
  bool CheckName(const KeyName& key, TextView name) {
    if (name.find_first_of(_T("\r\n")) == TextView::npos) return true;
    return Fail({0, fmt::format("a name in {} has a line break", ToUtf8(FullName(key))), "rename or delete it first"});
  }

  // A sub-key that its key has listed and that can't be found is damage.
  bool WriteKey(const KeyName& key, bool listed) {
    RegistryKeyHandle open;
    if (const LSTATUS status = OpenKeyIn(transaction_, key.hive, key.path.c_str(), KEY_READ, open.Receive())) {
      return Fail(ErrorOf(listed && status == ERROR_FILE_NOT_FOUND ? ERROR_BADDB : status, key));
    }
    Put(_T("\r\n["));
    Put(FullName(key));
    Put(_T("]\r\n"));
    LSTATUS status = ERROR_SUCCESS;
    for (DWORD i = 0; status == ERROR_SUCCESS; ++i) {
      if (!WriteValue(key, open, i, status)) return false;
    }
    if (status != ERROR_NO_MORE_ITEMS) return Fail(ErrorOf(status, key));
    for (DWORD i = 0;; ++i) {
      TCHAR name[256];
      DWORD units = 256;
      status = RegEnumKeyExW(open, i, name, &units, nullptr, nullptr, nullptr, nullptr);
      if (status == ERROR_NO_MORE_ITEMS) return true;
      if (status != ERROR_SUCCESS) return Fail(ErrorOf(status, key));
      if (!CheckName(key, {name, units})) return false;
      const KeyName below{key.hive, key.path.empty() ? Text(name) : key.path + TCHAR('\\') + name};
      if (!WriteKey(below, /*listed=*/true)) return false;
    }
  }

  bool WriteValue(const KeyName& key, HKEY handle, DWORD index, LSTATUS& status) {
    DWORD type = 0, size = DWORD(data_.size()), units = kNameRoom;
    status = RegEnumValueW(handle, index, name_.data(), &units, nullptr, &type, data_.data(), &size);
    if (status == ERROR_MORE_DATA) {
      data_.resize(size);
      units = kNameRoom;
      status = RegEnumValueW(handle, index, name_.data(), &units, nullptr, &type, data_.data(), &size);
    }
    if (status != ERROR_SUCCESS) return true;
    const TextView name(name_.data(), units);
    if (!CheckName(key, name)) return false;
    column_ = 0;
    if (name.empty()) {
      Put(_T("@"));
    } else {
      PutQuoted(name);
    }
    Put(_T("="));
    WriteData(type, {data_.data(), size});
    Put(_T("\r\n"));
    return true;
  }

  void WriteData(DWORD type, std::basic_string_view<BYTE> data) {
    Text text;
    if (type == REG_SZ && IsPlainText(data, text)) {
      PutQuoted(text);
    } else if (type == REG_DWORD && data.size() == 4) {
      PutAscii(fmt::format("dword:{:02x}{:02x}{:02x}{:02x}", data[3], data[2], data[1], data[0]));
    } else {
      PutAscii(type == REG_BINARY ? "hex:" : fmt::format("hex({:x}):", type));
      WriteHex(data);
    }
  }

  // Breaks lines at the column at which the usual editor of such files breaks them.
  void WriteHex(std::basic_string_view<BYTE> data) {
    constexpr std::size_t kLastColumn = 76;
    for (std::size_t i = 0; i < data.size(); ++i) {
      const bool last = i + 1 == data.size();
      PutAscii(fmt::format("{:02x}{}", data[i], last ? "" : ","));
      if (last || column_ <= kLastColumn) continue;
      Put(_T("\\\r\n"));
      column_ = 0;
      Put(_T("  "));
    }
  }

  // Whether the data parses back to the same bytes from a quoted text: one terminator, at the end, and no line break.
  static bool IsPlainText(std::basic_string_view<BYTE> data, Text& text) {
    if (data.size() < 2 || data.size() % 2 != 0) return false;
    for (std::size_t i = 0; i < data.size(); i += 2) text.push_back(TCHAR(data[i] | data[i + 1] << 8));
    if (text.find_first_of(Text{'\r', '\n', TCHAR(0)}) != text.size() - 1 || text.back() != 0) return false;
    text.pop_back();
    return true;
  }

  RegistryTransaction transaction_;
  std::string& bytes_;
  Error& error_;
  std::size_t column_ = 0;
  Text name_;
  std::vector<BYTE> data_ = std::vector<BYTE>(256);
};

}  // namespace

namespace {

bool IsSet(LPCTSTR variable) { return GetEnvironmentVariableW(variable, nullptr, 0) > 1; }

std::string RemedyOfRights(HKEY hive) {
  const bool homeless = hive == HKEY_CURRENT_USER && !IsSet(_T("HOME")) && !IsSet(_T("XDG_CONFIG_HOME"));
  if (homeless && !IsSet(_T("KV_REGISTRY"))) return "set HOME, or KV_REGISTRY to a folder that you may write";
  return "run as a user who has the rights, or set KV_REGISTRY to another folder";
}

}  // namespace

Error ErrorOf(LSTATUS status, const KeyName& key, int line) {
  const std::string name = ToUtf8(FullName(key)), file = HiveFile(key.hive);
  switch (status) {
    case ERROR_FILE_NOT_FOUND:
      if (CheckHive(key.hive) != ERROR_FILE_NOT_FOUND)
        return {line, fmt::format("there is no key {}", name), "check the name"};
      return {line, fmt::format("there is no key {}: the registry is empty, {} does not exist", name, file),
              "set KV_REGISTRY if the registry is in another folder"};
    case ERROR_ACCESS_DENIED:
      return {line, fmt::format("access to {} is denied: {} or its folder", name, file), RemedyOfRights(key.hive)};
    case ERROR_PATH_NOT_FOUND:
      return {line, fmt::format("{} cannot be used: a part of the path is not a folder", file),
              "set KV_REGISTRY to a folder"};
    case ERROR_BADDB:
      return {line, fmt::format("{} is damaged", file),
              "restore it from a backup, or move it away to begin with an empty registry"};
    case ERROR_UNKNOWN_REVISION:
      return {line, fmt::format("{} was written by a later release", file),
              "use that release, or set KV_REGISTRY to another folder"};
    case ERROR_DISK_FULL: return {line, fmt::format("{}: the disk is full", file), "free some space"};
    case ERROR_REGISTRY_IO_FAILED:
      return {line, fmt::format("{}: {}", file, ErrorText(DWORD(status))), "check the disk"};
    case ERROR_BUSY: return {line, fmt::format("another process keeps {} locked", file), "end it, or try again later"};
    default: return {line, fmt::format("{}: {}", name, ErrorText(DWORD(status))), "try again"};
  }
}

bool Apply(const std::vector<Step>& steps, Error& error) {
  Import import;
  for (const Step& step : steps) {
    if (const LSTATUS status = import.Run(step)) {
      error = ErrorOf(status, step.key, step.line);
      return false;
    }
  }
  if (const LSTATUS status = import.Commit()) {
    error = ErrorOf(status, steps.empty() ? KeyName{HKEY_CURRENT_USER, {}} : steps.back().key);
    return false;
  }
  return true;
}

bool Write(const KeyName& key, std::string& bytes, Error& error) {
  error = {};
  return Writer(bytes, error).Run(key);
}

}  // namespace registry_text
