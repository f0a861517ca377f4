// kestrova document: creates, shows, converts, checks and repairs documents.
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "framework/ob_list.h"
#include "host/commands/commands.h"
#include "host/document/active_document.h"
#include "host/document/document_check.h"
#include "host/document/document_file.h"
#include "host/document/document_report.h"
#include "host/document/document_tree.h"
#include "host/document/host_document.h"
#include "host/document/open_document.h"
#include "host/document/sample_document.h"
#include "host/module/main_module.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "host/shell/whole_file.h"
#include "share/objects/save_history.h"

namespace kestrova {
namespace {

constexpr char kNewHelp[] = R"(
Creates a sample document: tools, setups, their features and operations, some of them suppressed, recycled or locked.
The same seed gives the same nodes.

  kestrova document new part.kvdoc
  kestrova document new big.kvdoc --nodes 1000000 --units inch --seed 7
)";

constexpr char kShowHelp[] = R"(
Shows the nodes as a tree: class, id, label, state, parameters, who created and changed the node, and when.

  kestrova document show part.kvdoc
  kestrova document show part.kvdoc --json
)";

constexpr char kDumpHelp[] = R"(
Prints the objects' dumps for support staff: the document with its indexer and history, then each node.

  kestrova document dump part.kvdoc > part.txt
)";

constexpr char kHistoryHelp[] = R"(
Shows the builds of the product that saved the document, how often, the user and the time of the last save.

  kestrova document history part.kvdoc
  kestrova document history part.kvdoc --json
)";

constexpr char kConvertHelp[] = R"(
Reads a document of any version and saves it in the current version.

  kestrova document convert old.kvdoc new.kvdoc
)";

constexpr char kVerifyHelp[] = R"(
Reads as much of the document as possible and lists the faults: changed or missing bytes with their position, references
to objects outside the document, objects in no list, wrong ids, states and indexer counts. Changes nothing. The exit code
is 1 if there are faults, and 3 if the file cannot be read.

  kestrova document verify part.kvdoc
  kestrova document verify part.kvdoc --json
)";

constexpr char kRepairHelp[] = R"(
Reads as much of a damaged document as possible, corrects the faults and saves the result in OUT: all nodes before the
first damaged one, without references to the others. Lists what was lost. FILE stays as it is; OUT passes verify. The exit
code is 1 if nodes were lost, and 3 if nothing could be saved.

  kestrova document repair part.kvdoc saved.kvdoc
  kestrova document repair part.kvdoc saved.kvdoc --json
)";

struct Options {
  std::string file;
  std::string out;
  DWORD nodes = 100;
  std::string units = "mm";
  ULONGLONG seed = 1;
  bool force = false;
  bool json = false;
};

using Json = nlohmann::ordered_json;

void New(const Options& options) {
  CheckTarget(options.file, options.force);
  StartMainModule();
  HostDocument document;
  const ActiveDocument active(&document);
  document.SetUnits(FindLengthUnit(options.units)->code);
  FillWithSample(document, options.nodes, options.seed);
  SaveDocument(document, options.file);
}

void Show(const Options& options) {
  UseLibrary();
  const OpenDocument opened(options.file);
  (options.json ? WriteTreeJson : WriteTree)(*opened.document, stdout);
}

// Prints the dumps of objects. A dump is written into a file; names in it can hold any characters.
class DumpText {
 public:
  DumpText() : file_(std::tmpfile()) {
    if (!file_) throw Failure("cannot create a temporary file; check the folder of temporary files");
  }
  ~DumpText() { std::fclose(file_); }
  DumpText(const DumpText&) = delete;
  DumpText& operator=(const DumpText&) = delete;

  void Print(QFObject& object) {
    std::rewind(file_);
    object.DumpData(file_);
    const long size = std::ftell(file_);
    std::rewind(file_);
    text_.resize(std::size_t(std::max(size, 0L)));
    if (size < 0 || std::fread(text_.data(), 1, text_.size(), file_) != text_.size())
      throw Failure("cannot write a temporary file; check whether the disk is full");
    PrintLines(text_);
  }

 private:
  std::FILE* file_;
  std::string text_;
};

void Dump(const Options& options) {
  UseLibrary();
  const OpenDocument opened(options.file);
  DumpText text;
  text.Print(*opened.document);
  opened.document->Walk([&](HostNode& node, int) { text.Print(node); });
}

void History(const Options& options) {
  UseLibrary();
  const OpenDocument opened(options.file);
  CObList records;
  opened.document->History().GetAllHistoryObjects(records);
  Json all = Json::array();
  for (POSITION at = records.GetHeadPosition(); at;) {
    const auto& record = *static_cast<const QFDocSrHistory*>(records.GetNext(at));
    const auto text = [](const CString& field) { return ToUtf8(field); };
    all.push_back({{"version", text(record.GetMajorVersion())},
                   {"servicePack", text(record.GetServicePack())},
                   {"build", text(record.GetBuildCode())},
                   {"storageVersion", record.GetStorageVersionNumber()},
                   {"user", text(record.GetUser())},
                   {"lastSave", text(record.GetDateAndTime())},
                   {"saves", std::stoi(text(record.GetNumSaves()))},
                   {"edition", text(record.GetProductEdition())}});
    if (options.json) continue;
    const std::string build = text(record.GetBuildCode());
    Print("{} {} build {}, storage version {}: {} saves, last {} by {}\n", text(record.GetMajorVersion()),
          text(record.GetServicePack()), build.empty() ? "unknown" : build,
          ToUtf8(record.GetStorageVersion().TrimLeft()), text(record.GetNumSaves()), text(record.GetDateAndTime()),
          text(record.GetUser()));
  }
  if (options.json) PrintJson({{"file", options.file}, {"builds", all}});
}

void Convert(const Options& options) {
  CheckTarget(options.out, options.force);
  StartMainModule();
  const OpenDocument opened(options.file);
  opened.document->FreezeIds(false);
  SaveDocument(*opened.document, options.out);
}

// ---- verify and repair

void Verify(const Options& options) {
  UseLibrary();
  DocumentLoader loader(options.file, DocumentLoader::Mode::kSalvage);
  const auto document = loader.Load();
  const ActiveDocument active(document.get());
  LoadReport report = loader.Report();
  CheckDocument(*document, CheckMode::kReport, report);
  if (options.json) {
    PrintJson(ReportJson(options.file, report));
  } else {
    PrintLines(ReportText(options.file, report));
  }
  if (report.findingCount > 0) throw FoundErrors();
}

void Repair(const Options& options) {
  CheckTarget(options.out, options.force);
  std::error_code unknown;
  if (std::filesystem::equivalent(options.file, options.out, unknown))
    throw Failure(fmt::format("{} is the damaged document; name another file for the result", options.out),
                  {.file = options.out});
  StartMainModule();
  DocumentLoader loader(options.file, DocumentLoader::Mode::kSalvage);
  const auto document = loader.Load();
  const ActiveDocument active(document.get());
  LoadReport report = loader.Report();
  if (report.part <= DocumentReading::Part::kFields)
    throw Failure(fmt::format("nothing of {} can be saved: stream {}: {}", options.file, report.findings.back().stream,
                              report.findings.back().text),
                  {.file = options.file});
  CheckDocument(*document, CheckMode::kRepair, report);
  SaveDocument(*document, options.out);
  if (options.json) {
    Json all = ReportJson(options.file, report);
    all["output"] = options.out;
    all["nodesSaved"] = document->NodeCount();
    PrintJson(all);
  } else {
    PrintLines(fmt::format("{}: {} of {} nodes saved{}\n{}", Harmless(options.out), report.whole, report.promised,
                           LostText(report), FindingsText(report)));
  }
  if (report.whole < report.promised) throw FoundErrors();
}

// The option parser accepts a minus and numbers that are too large.
std::string Seed(const std::string& text) {
  ULONGLONG seed = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, seed);
  return error == std::errc() && stop == end ? "" : text + " is not a whole number from 0 to 18446744073709551615";
}

CLI::App& AddCommand(CLI::App& group, const char* name, const char* what, const char* help, Options& options,
                     void (*run)(const Options&)) {
  CLI::App* command = group.add_subcommand(name, what);
  command->footer(help);
  command->add_option("FILE", options.file, "The document's file")->required();
  command->callback([&options, run] { run(options); });
  return *command;
}

void AddForce(CLI::App& command, Options& options) {
  command.add_flag("--force", options.force, "Replace a file that exists");
}
void AddJson(CLI::App& command, Options& options) { command.add_flag("--json", options.json, "As JSON"); }
void AddOut(CLI::App& command, Options& options) {
  command.add_option("OUT", options.out, "The new file")->required();
  AddForce(command, options);
}

}  // namespace

void AddDocumentCommands(CLI::App& group) {
  static Options options;
  group.require_subcommand(1);
  const auto add = [&](const char* name, const char* what, const char* help, void (*run)(const Options&)) -> CLI::App& {
    return AddCommand(group, name, what, help, options, run);
  };
  CLI::App& create = add("new", "Create a sample document", kNewHelp, New);
  create.add_option("--nodes", options.nodes, "Number of nodes; default 100")->check(CLI::Range(0, 5'000'000));
  create.add_option("--units", options.units, "Units of the document; default mm")
      ->check(CLI::IsMember({"mm", "inch"}));
  create.add_option("--seed", options.seed, "Seed of the random nodes; default 1")->check(Seed);
  AddForce(create, options);
  AddJson(add("show", "Show the nodes as a tree", kShowHelp, Show), options);
  add("dump", "Print the objects' dumps", kDumpHelp, Dump);
  AddJson(add("history", "Show which builds saved the document", kHistoryHelp, History), options);
  AddOut(add("convert", "Save a document of any version in the current one", kConvertHelp, Convert), options);
  AddJson(add("verify", "List the faults of a document", kVerifyHelp, Verify), options);
  CLI::App& repair = add("repair", "Save the intact nodes of a damaged document", kRepairHelp, Repair);
  AddOut(repair, options);
  AddJson(repair, options);
}

}  // namespace kestrova
