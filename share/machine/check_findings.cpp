#include "share/machine/internal/check_findings.h"

#include <fmt/format.h>

#include <algorithm>

#include "share/machine/internal/machine_numbers.h"

namespace kvmachine {
namespace {

constexpr std::size_t kMostQuoted = 60;

// Control characters, and the separators of lines and paragraphs.
bool IsControl(TCHAR unit) { return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x2028 || unit == 0x2029; }

// Checks one value; there is one call operator for each kind of attribute.
struct ValueCheck {
  std::string_view name;
  std::string_view value;
  bool exported;
  KVXMLPlace place;
  Findings& findings;

  std::string Head() const { return fmt::format("{}={}", name, Quoted(value)); }

  template <class Number>
  void Judge(Number read, const NumberNotes& notes) const {
    if (notes.none) {
      findings.Error(place, fmt::format("{} is not a number and is read as 0", Head()));
      return;
    }
    if (notes.clamped) {
      findings.Error(place, fmt::format("{} is out of range and is read as {}", Head(), read));
    } else if (notes.trailing) {
      findings.Warn(place, fmt::format("{} is read as {}: the text after the number is ignored", Head(), read));
    } else if (notes.commaRepaired) {
      findings.Warn(place, fmt::format("{} is read as {}: the comma is read as a decimal point", Head(), read));
    }
  }

  void JudgeThree(int count, const NumberNotes& notes) const {
    if (count < 3) {
      findings.Error(place, fmt::format("{} has {} of three numbers; the others are read as 0", Head(), count));
    } else if (notes.trailing) {
      findings.Warn(place, fmt::format("{}: the text after the third number is ignored", Head()));
    }
  }

  template <class Enumeration>
  void JudgeText(const char* what) const {
    Enumeration read;
    if (ReadText(value, read)) return;
    const std::string_view text = TextOf(read);
    findings.Error(place,
                   fmt::format("{} is not a known {} and is read as {}", Head(), what, text.empty() ? "none" : text));
  }

  void operator()(Set<TextVersion>) const {}
  void operator()(Set<std::string_view>) const {
    if (const std::string control = ControlIn(FromUtf8(value).View()); !control.empty()) {
      findings.Error(place, fmt::format("{} contains the control character {}{}", Head(), control,
                                        exported ? ", which breaks the export's lines" : ""));
    } else if (exported && name != "PATH" && value.find('=') != std::string_view::npos) {  // a path has its own line
      findings.Warn(place, fmt::format("{} contains =, which reads like a key in the export", Head()));
    }
  }
  void operator()(Set<IdList>) const {}  // machine_check.cpp checks shape lists
  void operator()(Set<int>) const {
    NumberNotes notes;
    const int read = ReadInteger(value, &notes);
    Judge(read, notes);
  }
  void operator()(Set<double>) const {
    NumberNotes notes;
    const double read = ReadReal(value, &notes);
    Judge(read, notes);
  }
  void operator()(Set<const FRVector&>) const {
    NumberNotes notes;
    float read[3];
    const int count = ScanReals(value, read, &notes);
    JudgeThree(count, notes);
  }
  void operator()(Set<Colour>) const {
    NumberNotes notes;
    int read[3];
    const int count = ScanIntegers(value, read, &notes);
    JudgeThree(count, notes);
    for (const int component : read) {
      if (component >= 0 && component <= 255) continue;
      findings.Warn(place, fmt::format("{}: {} is not a colour value from 0 to 255", Head(), component));
    }
  }
  void operator()(Set<Flag>) const {
    if (value == kTrue || value == "FALSE") return;
    findings.Warn(place, fmt::format("{} is neither TRUE nor FALSE and is read as FALSE", Head()));
  }
  void operator()(Set<TargetType>) const {
    if (value != kFixtureType) JudgeText<MDTurretType>("kind of target");
  }
  void operator()(Set<CMDirType>) const { JudgeText<CMDirType>("direction"); }
  void operator()(Set<CMParentType>) const { JudgeText<CMParentType>("kind of parent"); }
  void operator()(Set<CM_AXIS_TYPE>) const { JudgeText<CM_AXIS_TYPE>("axis"); }
};

}  // namespace

void Findings::Add(MachineFindingGrade grade, KVXMLPlace place, std::string text) {
  if (result_.findings.size() < kMachineMostFindings) {
    result_.findings.push_back({grade, place, std::move(text)});
  } else {
    result_.more = true;
  }
}

std::string Quoted(std::string_view value) {
  const bool cut = value.size() > kMostQuoted;
  if (cut) {
    std::size_t end = kMostQuoted;
    while (end > 0 && (BYTE(value[end]) & 0xC0) == 0x80) --end;
    value = value.substr(0, end);
  }
  Text text(FromUtf8(value).View());
  std::ranges::replace_if(text, IsControl, _T(' '));
  return '"' + ToUtf8(TextView(text)) + (cut ? "..." : "") + '"';
}

std::string ControlIn(TextView text) {
  const auto found = std::ranges::find_if(text, IsControl);
  return found == text.end() ? std::string() : fmt::format("U+{:04X}", unsigned(*found));
}

void CheckValue(const Attribute& row, std::string_view value, bool exported, KVXMLPlace place, Findings& findings) {
  std::visit(ValueCheck{row.name, value, exported, place, findings}, row.set);
}

}  // namespace kvmachine
