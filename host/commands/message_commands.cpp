// kestrova message: shows the library's messages as a product does, and checks files of answers.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>

#include "host/commands/commands.h"
#include "host/module/main_module.h"
#include "host/shell/arguments.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "host/shell/text_table.h"
#include "host/shell/whole_file.h"
#include "platform/answers.h"
#include "share/diagnostics/outcome.h"
#include "share/diagnostics/warning_dialogs.h"
#include "share/settings/settings_key.h"

namespace kestrova {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kWarningDialog = 1602;
constexpr std::size_t kMostAnswerBytes = std::size_t(1) << 20;

constexpr char kShowHelp[] = R"(
The message is a window if an X server is reachable, else a question on the terminal; without a terminal it is one line
on stderr, and the command fails. KV_ANSWERS names a file that answers it (see kestrova message answers --help).

Exit codes: 0 for OK and Yes, 1 for No and Cancel, 3 if the message cannot be shown.

Examples:
  kestrova message show 'Delete the tool?' --kind warning-yes-no --silent
  kestrova message show --string 61842 --kind error --silent --json)";

constexpr char kAnswersHelp[] = R"(
A line for each message that a run will show: the caption, ": ", the text, " -> ", and what to press. A "*" stands for
any text; the text has one blank for each line end. A message that the file does not expect ends the run.

  # the tool is in use, so it stays
  Warning: The tool is used by 3 operations. Delete it? -> No
  *: File * could not be found* -> Cancel
  Kestrova: Units differ* -> Do not show this message again, OK

Example:
  kestrova message answers answers.txt)";

// In the order of SeverityIndex.
struct Kind {
  const char* name;
  const char* icon;
  const char* buttons;
  int caption;
};
constexpr Kind kKinds[] = {
    {"error", "stop", "OK", 2555},
    {"warning-yes-no", "exclamation", "Yes, No", 2554},
    {"warning-yes-no-cancel", "exclamation", "Yes, No, Cancel", 2554},
    {"info", "information", "OK", 2553},
    {"info-yes-no", "information", "Yes, No", 2553},
    {"info-yes-no-cancel", "information", "Yes, No, Cancel", 2553},
};

struct Options {
  std::string text, kind = "info", dialog, file;
  std::vector<std::string> labels;
  int string = 0;
  unsigned topic = 0;
  bool focus_no = false, silent = false, json = false;
};

CString TextOf(const char* what, const std::string& argument) {
  RequireUtf8(what, argument);
  return FromUtf8(argument);
}

CString LoadedText(int number) {
  CString text;
  text.LoadString(UINT(number));
  return text;
}

// ---- list

void List(const Options& options) {
  StartMainModule();
  if (options.json) {
    Json kinds = Json::array();
    for (const Kind& kind : kKinds)
      kinds.push_back({{"kind", kind.name},
                       {"icon", kind.icon},
                       {"buttons", kind.buttons},
                       {"caption", ToUtf8(LoadedText(kind.caption))}});
    return PrintJson({{"kinds", kinds}});
  }
  TextTable table({{"KIND", false}, {"ICON", false}, {"BUTTONS", false}, {"CAPTION", false}});
  for (const Kind& kind : kKinds) table.Add({kind.name, kind.icon, kind.buttons, ToUtf8(LoadedText(kind.caption))});
  PrintLines(table.Text());
}

// ---- show

const char* NameOfButton(unsigned button) {
  switch (button) {
    case IDOK: return "OK";
    case IDCANCEL: return "Cancel";
    case IDYES: return "Yes";
    case IDNO: return "No";
    default: return "";
  }
}

CString TextToShow(const Options& options) {
  if ((options.string == 0) == options.text.empty()) throw WrongUsage("name a TEXT or a --string");
  if (options.string == 0) return TextOf("text", options.text);
  CString text = LoadedText(options.string);
  if (text.IsEmpty()) throw NotFound(fmt::format("the language library has no string {}", options.string));
  return text;
}

unsigned ShowBox(const Options& options) {
  const auto* const kind =
      std::find_if(std::begin(kKinds), std::end(kKinds), [&](const Kind& row) { return options.kind == row.name; });
  Outcome outcome(0, SeverityIndex(kind - kKinds), 0, options.topic ? options.topic : Outcome::kNoHelp);
  const auto label = [&](std::size_t i) { return TextOf("label", options.labels[i]); };
  if (options.labels.size() == 2) outcome.SetMessageBoxButtonNewLabels(label(0), label(1));
  if (options.labels.size() == 3) outcome.SetMessageBoxButtonNewLabels(label(0), label(1), label(2));
  if (options.focus_no) outcome.SetMessageBoxButtonFocus(IDNO);
  return outcome.Display(TextToShow(options));
}

// The settings of the check boxes live as long as the dialog.
unsigned ShowDialog(const Options& options, Json& json) {
  QFSettingsKey settings(_T("Messages"), CString());
  settings.AddValue(_T("Show"), 1);
  settings.AddValue(_T("Update"), 0);
  const int topic = options.topic ? int(options.topic) : -1;
  INT_PTR pressed = 0;
  if (options.dialog == "message") {
    pressed = QFMessageDontShowDlg(TextToShow(options), _T("Show"), &settings, topic).DoModal();
  } else {
    pressed = QFWarnDontShowDlg(kWarningDialog, _T("Show"), _T("Update"), &settings, topic).DoModal();
  }
  int shown = 1, updates = 0;
  settings.GetValue(_T("Show"), shown);
  settings.GetValue(_T("Update"), updates);
  json["stopped"] = shown == 0;
  json["updates"] = updates != 0;
  return pressed < 0 ? 0 : unsigned(pressed);
}

void Show(const Options& options) {
  if (options.labels.size() == 1 || options.labels.size() > 3)
    throw WrongUsage("--labels needs two or three labels, such as Keep,Delete");
  StartMainModule();
  WantMessages(!options.silent);
  Json json;
  const unsigned pressed = options.dialog.empty() ? ShowBox(options) : ShowDialog(options, json);
  if (pressed == 0)
    throw Failure("the message cannot be shown: there is neither an X server nor a terminal; KV_ANSWERS can answer it");
  json["pressed"] = pressed;
  json["button"] = NameOfButton(pressed);
  if (options.json) {
    PrintJson(json);
  } else {
    Print("{}\n", NameOfButton(pressed));
    if (json.value("stopped", false)) Print("do not show again\n");
    if (json.value("updates", false)) Print("update\n");
  }
  if (pressed == IDNO || pressed == IDCANCEL) throw FoundErrors();
}

// ---- answers

void CheckAnswers(const Options& options) {
  const BoxAnswers parsed = ParseBoxAnswers(ReadWholeFile(options.file, kMostAnswerBytes));
  if (!parsed.error.empty())
    throw Failure(fmt::format("{}:{}: {}", options.file, parsed.error_line, parsed.error),
                  {.file = options.file, .line = parsed.error_line});
  if (!options.json) return Print("{}: {}\n", options.file, Counted(int(parsed.answers.size()), "answer"));
  Json answers = Json::array();
  for (const BoxAnswer& answer : parsed.answers)
    answers.push_back({{"line", answer.line}, {"expected", answer.expected}, {"press", answer.presses}});
  PrintJson({{"file", options.file}, {"answers", answers}});
}

}  // namespace

void AddMessageCommands(CLI::App& group) {
  static Options options;
  group.require_subcommand(1);
  const auto add = [&](const char* name, const char* what, const char* footer, void (*run)(const Options&)) {
    CLI::App* const command = group.add_subcommand(name, what);
    command->footer(footer);
    command->add_flag("--json", options.json, "As JSON");
    command->callback([run] { run(options); });
    return command;
  };
  add("list", "Print the kinds of messages", "Example:\n  kestrova message list", List);
  CLI::App* const show = add("show", "Show a message and print the pressed button", kShowHelp, Show);
  std::vector<std::string> kinds;
  for (const Kind& kind : kKinds) kinds.emplace_back(kind.name);
  show->add_option("TEXT", options.text, "The text");
  show->add_option("--string", options.string, "The text is this string of the language library")
      ->check(CLI::Range(1, 65535));
  show->add_option("--kind", options.kind, "The icon, buttons and caption; default info")->check(CLI::IsMember(kinds));
  show->add_option("--labels", options.labels, "New labels of Yes and No, or of Yes, No and Cancel")->delimiter(',');
  show->add_flag("--focus-no", options.focus_no, "With --labels: No has the focus");
  show->add_option("--topic", options.topic, "Number of a help topic: the message has a Help button");
  show->add_option("--dialog", options.dialog, "A dialog that can be stopped from appearing again")
      ->check(CLI::IsMember({"message", "warning"}));
  show->add_flag("--silent", options.silent, "The product wants no messages: answer Yes without showing it");
  add("answers", "Check a file of answers for KV_ANSWERS", kAnswersHelp, CheckAnswers)
      ->add_option("FILE", options.file, "The file")
      ->required();
}

}  // namespace kestrova
