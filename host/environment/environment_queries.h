// All queries of the environment by the name of their operation, for `kestrova env`.
#pragma once

#include <span>
#include <variant>

#include "framework/text.h"

class CKVEnvApp;

namespace kestrova {

using QueryAnswer = std::variant<CString, long long, bool>;

struct EnvironmentQuery {
  const char* operation;
  QueryAnswer (*ask)(CKVEnvApp& env);
};

struct EnvironmentQueryGroup {
  const char* title;
  const char* json_name;
  std::span<const EnvironmentQuery> queries;
};

// In the order of the output. The span stays valid for the whole process.
std::span<const EnvironmentQueryGroup> EnvironmentQueryGroups();

// The result of the environment's start in words.
const char* InitResultInWords(const CKVEnvApp& env);

}  // namespace kestrova
