// The golden files of the settings, in which the folder for temporary files is "\tmp\".
#pragma once

#include <nlohmann/json.hpp>

#include "framework/text.h"
#include "platform/paths.h"
#include "platform/process.h"
#include "tests/folders.h"
#include "tests/scratch.h"

namespace kvtest {

// The golden file of a tree, for this system.
template <class Json = nlohmann::json>
Json GoldenSettings(const std::string& tree) {
  SetEnvironmentVariableW(_T("TMPDIR"), _T("/tmp"));
  TCHAR folder[MAX_PATH] = {};
  GetTempPathW(MAX_PATH, folder);
  const auto in_json = [](const std::string& text) {
    const std::string quoted = nlohmann::json(text).dump();
    return quoted.substr(1, quoted.size() - 2);
  };
  std::string text = ReadFile(SourceFile("tests/settings/golden") / (tree + "_settings.json"));
  const std::string from = in_json("\\tmp\\"), to = in_json(ToUtf8(CString(folder)));
  for (std::size_t at = 0; (at = text.find('"' + from, at)) != text.npos; at += to.size())
    text.replace(at + 1, from.size(), to);
  return Json::parse(text);
}

}  // namespace kvtest
