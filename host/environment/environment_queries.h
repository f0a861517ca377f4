// Every query of the environment by its operation's name, for `kestrova env`.
#pragma once

#include <span>
#include <variant>

#include "framework/text.h"

class CKVEnvApp;

namespace kestrova {

using QueryAnswer = std::variant<CString, long long>;

struct EnvironmentQuery {
  const char* operation;
  QueryAnswer (*ask)(CKVEnvApp& env);
};

struct EnvironmentQueryGroup {
  const char* title;
  const char* json_name;
  std::span<const EnvironmentQuery> queries;
};

// In the order in which they are printed. They live as long as the process.
std::span<const EnvironmentQueryGroup> EnvironmentQueryGroups();

// What the result of the environment's start means.
const char* InitResultInWords(const CKVEnvApp& env);

}  // namespace kestrova
