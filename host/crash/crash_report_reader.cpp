// A report begins with the line "Error type". Titles between equal signs divide it into sections; most lines are a
// label, a colon and a value. It ends with "[end of FILE]". Lines end in CR LF, or in CR CR LF where a stream has
// translated the LF.
#include "host/crash/crash_report_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>

namespace kestrova {
namespace {

enum class Section { kNone, kHead, kProduct, kSystem, kGraphics, kRegisters, kBytes, kModules };

constexpr std::pair<std::string_view, Section> kTitles[] = {
    {"Kestrova", Section::kProduct},
    {"System information", Section::kSystem},
    {"Graphics information", Section::kGraphics},
    {"Register information", Section::kRegisters},
    {"Bytes at CS:EIP", Section::kBytes},
    {"Modules loaded", Section::kModules},
};
constexpr std::string_view kStart = "Error type", kEnd = "---------- [end of ", kAfterEnd = "] ------------";
constexpr std::string_view kPartial = "---------- [partial";
constexpr std::string_view kTitleMark = "==========";
constexpr std::string_view kBlanks = " \t\r\n\f\v";

std::string_view Trimmed(std::string_view text) {
  const std::size_t start = text.find_first_not_of(kBlanks);
  return start == text.npos ? std::string_view() : text.substr(start, text.find_last_not_of(kBlanks) - start + 1);
}

// Takes a word up to a blank or one of the marks from the front of the text.
std::string_view TakeWord(std::string_view& text, std::string_view marks) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  const std::size_t end = std::min({text.find_first_of(kBlanks), text.find_first_of(marks), text.size()});
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(end);
  return word;
}

// The whole text as a number; false for any other text or a larger number.
template <class Number>
bool ParseNumber(std::string_view text, Number& number, int base) {
  if (base == 16 && (text.starts_with("0x") || text.starts_with("0X"))) text.remove_prefix(2);
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  return error == std::errc() && end == text.data() + text.size();
}

// Divides "label : value" at the first colon.
bool Divide(std::string_view line, std::string_view& label, std::string_view& value) {
  const std::size_t colon = line.find(':');
  if (colon == line.npos) return false;
  label = Trimmed(line.substr(0, colon));
  value = Trimmed(line.substr(colon + 1));
  return !label.empty();
}

// Divides a line with two labels, such as "Desired Base:   0x1    Image Size:   0x2".
bool DividePair(std::string_view line, std::string_view first, std::string_view second, std::string_view& one,
                std::string_view& other) {
  const std::size_t at = line.find(second);
  std::string_view label;
  if (at == line.npos || !Divide(line.substr(0, at), label, one) || label != first) return false;
  return Divide(line.substr(at), label, other) && label == second;
}

bool HexPair(std::string_view line, std::string_view first, std::string_view second, std::uint32_t& one,
             std::uint32_t& other) {
  std::string_view a, b;
  return DividePair(line, first, second, a, b) && ParseNumber(a, one, 16) && ParseNumber(b, other, 16);
}

class Parser {
 public:
  explicit Parser(std::string_view bytes) : bytes_(bytes) {}
  CrashReports Read();

 private:
  void Line(std::string_view line);
  bool Start(std::string_view line);
  bool Title(std::string_view line);
  bool End(std::string_view line);
  bool Content(std::string_view line);
  bool Head(std::string_view line);
  bool Access(std::string_view line);
  bool Registers(std::string_view line);
  bool CodeBytes(std::string_view line);
  bool Module(std::string_view line);
  void Finish();
  void Fault(std::string reason);
  CrashReport& Report() { return result_.reports.back(); }

  std::string_view bytes_;
  std::size_t at_ = 0;  // of the current line
  int line_ = 0;
  Section section_ = Section::kNone;
  int module_line_ = 0;  // of the current module, from its number on
  CrashReports result_;
};

void Parser::Fault(std::string reason) {
  const std::size_t count = result_.faults.size();
  if (count + 1 == kMostReportFaults) reason = "from here on faults are left out";
  if (count < kMostReportFaults) result_.faults.push_back({at_, line_, std::move(reason)});
}

CrashReports Parser::Read() {
  for (std::size_t next = 0; at_ < bytes_.size(); at_ = next) {
    const std::size_t end = std::min(bytes_.find('\n', at_), bytes_.size());
    next = std::min(end + 1, bytes_.size());
    ++line_;
    Line(Trimmed(bytes_.substr(at_, end - at_)));
  }
  Finish();
  return std::move(result_);
}

void Parser::Line(std::string_view line) {
  if (line.empty() || Start(line)) return;
  if (section_ == Section::kNone) return Fault("the line belongs to no report");
  if (Title(line) || End(line)) return;
  if (line.starts_with(kPartial)) return void(Report().partial = true);
  if (!Content(line)) Fault("the line is not as this section of a report has it");
}

// The last report has ended, or the file has.
void Parser::Finish() {
  if (section_ != Section::kNone) Fault(fmt::format("the report that begins in line {} has no end", Report().line));
  section_ = Section::kNone;
}

bool Parser::Start(std::string_view line) {
  std::string_view label, value;
  if (!Divide(line, label, value) || label != kStart) return false;
  Finish();
  section_ = Section::kHead;
  CrashReport& report = result_.reports.emplace_back();
  report.byte = at_;
  report.line = line_;
  const std::size_t code = value.rfind(" (0x");
  report.error = Trimmed(value.substr(0, code));
  if (code == value.npos || !value.ends_with(')') ||
      !ParseNumber(value.substr(code + 2, value.size() - code - 3), report.code, 16))
    Fault("the code of the error is missing");
  return true;
}

bool Parser::Title(std::string_view line) {
  if (!line.starts_with(kTitleMark)) return false;
  const std::size_t start = line.find_first_not_of('='), end = line.find_last_not_of("= ");
  const std::string_view title = start == line.npos || end < start ? "" : Trimmed(line.substr(start, end - start + 1));
  for (const auto& [name, section] : kTitles) {
    if (name != title) continue;
    if (section <= section_) Fault(fmt::format("the section \"{}\" is there twice, or not in its place", name));
    section_ = section;
    module_line_ = 0;
    return true;
  }
  return false;
}

bool Parser::End(std::string_view line) {
  if (!line.starts_with(kEnd) || !line.ends_with(kAfterEnd) || line.size() < kEnd.size() + kAfterEnd.size())
    return false;
  Report().end_name = line.substr(kEnd.size(), line.size() - kEnd.size() - kAfterEnd.size());
  Report().whole = section_ == Section::kModules;
  if (!Report().whole) Fault("the report ends before its list of modules");
  section_ = Section::kNone;
  return true;
}

bool Parser::Content(std::string_view line) {
  const auto add = [&](ReportFields& fields) {
    std::string_view label, value;
    const bool divided = Divide(line, label, value);
    if (divided) fields.emplace_back(label, value);
    return divided;
  };
  switch (section_) {
    case Section::kNone: return false;
    case Section::kHead: return Head(line);
    case Section::kProduct: return add(Report().product);
    case Section::kSystem: return add(Report().system);
    case Section::kGraphics: return add(Report().graphics);
    case Section::kRegisters: return Registers(line);
    case Section::kBytes: return CodeBytes(line);
    case Section::kModules: return Module(line);
  }
  return false;
}

bool Parser::Head(std::string_view line) {
  if (Access(line)) return true;
  std::string_view label, value;
  if (!Divide(line, label, value)) return false;
  if (label == "Module name") return Report().module = value, true;
  if (label == "Program name") return Report().program = value, true;
  const std::size_t colon = value.find(':');
  return label == "Error at" && colon != value.npos && ParseNumber(value.substr(0, colon), Report().segment, 16) &&
         ParseNumber(value.substr(colon + 1), Report().instruction, 16);
}

bool Parser::Access(std::string_view line) {
  constexpr std::string_view kWrite = "Write to location ", kRead = "Read from location ";
  constexpr std::string_view kCaused = " caused an access violation.";
  const bool write = line.starts_with(kWrite);
  if ((!write && !line.starts_with(kRead)) || !line.ends_with(kCaused)) return false;
  line.remove_prefix((write ? kWrite : kRead).size());
  std::uint32_t address = 0;
  if (line.size() < kCaused.size() || !ParseNumber(line.substr(0, line.size() - kCaused.size()), address, 16))
    return false;
  Report().access = {write, address};
  return true;
}

bool Parser::Registers(std::string_view line) {
  if (line == "Context:") return true;
  while (!line.empty()) {
    const std::string_view name = TakeWord(line, ":");
    const std::size_t colon = line.find_first_not_of(kBlanks);
    std::uint32_t number = 0;
    if (name.empty() || colon == line.npos || line[colon] != ':') return false;
    line.remove_prefix(colon + 1);
    if (!ParseNumber(TakeWord(line, {}), number, 16)) return false;
    Report().registers.emplace_back(name, number);
  }
  return true;
}

bool Parser::CodeBytes(std::string_view line) {
  constexpr std::size_t kMost = 16;
  while (!line.empty()) {
    std::uint8_t byte = 0;
    if (!ParseNumber(TakeWord(line, {}), byte, 16) || Report().code_bytes.size() == kMost) return false;
    Report().code_bytes += char(byte);
  }
  return true;
}

// A module has six lines: number, file and four pairs of values. An empty line, which is skipped, follows.
bool Parser::Module(std::string_view line) {
  constexpr std::string_view kModule = "Module ", kAfterName = "Desired Base";
  constexpr int kName = 1, kLastLine = 5;
  std::vector<ReportModule>& modules = Report().modules;
  int number = 0;
  const bool first = line.starts_with(kModule) && ParseNumber(line.substr(kModule.size()), number, 10);
  const bool expected = first && number == int(modules.size()) + 1;
  if (module_line_ == 0 || (expected && module_line_ > kName)) {
    if (!first) return false;
    if (module_line_ > 0) Fault(fmt::format("module {} is not whole", modules.size()));
    if (!expected) Fault(fmt::format("module {} is expected", modules.size() + 1));
    modules.emplace_back().number = number;
    module_line_ = kName;
    return true;
  }
  if (module_line_ == kName && line.starts_with(kAfterName)) ++module_line_;  // the name is empty
  ReportModule& module = modules.back();
  std::string_view size, time;
  switch (std::exchange(module_line_, module_line_ == kLastLine ? 0 : module_line_ + 1)) {
    case kName: return module.file = line, true;
    case 2: return HexPair(line, kAfterName, "Image Size", module.desired_base, module.size);
    case 3: return HexPair(line, "Actual Base", "Image End", module.base, module.end);
    case 4: return HexPair(line, "Checksum", "Time Stamp", module.checksum, module.timestamp);
    default:
      if (!DividePair(line, "File Size", "File Time", size, time)) return false;
      module.file_time = time;
      return ParseNumber(size, module.file_size, 10);
  }
}

}  // namespace

CrashReports ReadCrashReports(std::string_view bytes) { return Parser(bytes).Read(); }

}  // namespace kestrova
