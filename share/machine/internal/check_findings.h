// Collects the findings of the check, and checks single attribute values.
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

// A value for a finding: in quotes, shortened if it is long, without control characters, valid UTF-8.
std::string Quoted(std::string_view value);

// The first control character of the text or separator of lines or paragraphs, as "U+000A"; empty without one.
std::string ControlIn(TextView text);

// Checks a value by the kind of the attribute's row and adds the findings. exported: the value is in the export file.
void CheckValue(const Attribute& row, std::string_view value, bool exported, KVXMLPlace place, Findings& findings);

}  // namespace kvmachine
