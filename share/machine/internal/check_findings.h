// How findings are collected, and the findings that one attribute's value alone gives rise to.
//
// Inside this folder only.
#pragma once

#include <string>
#include <string_view>

#include "share/machine/internal/machine_grammar.h"
#include "share/machine/machine_check.h"

namespace kvmachine {

class Findings {
 public:
  explicit Findings(MachineCheckResult& result) : result_(result) {}

  void Note(KVXMLPlace place, std::string text) { Add(MachineFindingGrade::kNote, place, std::move(text)); }
  void Warn(KVXMLPlace place, std::string text) { Add(MachineFindingGrade::kWarning, place, std::move(text)); }
  void Error(KVXMLPlace place, std::string text) { Add(MachineFindingGrade::kError, place, std::move(text)); }

 private:
  void Add(MachineFindingGrade grade, KVXMLPlace place, std::string text);

  MachineCheckResult& result_;
};

// A value as it stands in a finding: in quotes, cut when it is long, without control characters, valid UTF-8.
std::string Quoted(std::string_view value);

// Checks a value by the kind that the attribute's row says.
void CheckValue(const Attribute& row, std::string_view value, KVXMLPlace place, Findings& findings);

}  // namespace kvmachine
