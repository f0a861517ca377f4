// kestrova document: documents made, shown, converted, checked and repaired.
#include <fmt/format.h>
#include <CLI/CLI.hpp>

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
#include "host/shell/text_table.h"
#include "host/shell/whole_file.h"
#include "share/objects/save_history.h"

namespace kestrova {
namespace {

constexpr char kNewHelp[] = R"(
Makes a document to try things with: tools, setups, their features and operations, some of them suppressed, recycled or
locked. The same seed gives the same nodes.

  kestrova document new part.kvdoc
  kestrova document new big.kvdoc --nodes 1000000 --units inch --seed 7
)";

constexpr char kShowHelp[] = R"(
Shows the nodes as a tree: class, id, label, state, what is set, who made and changed it when.

  kestrova document show part.kvdoc
  kestrova document show part.kvdoc --json
)";

constexpr char kDumpHelp[] = R"(
Prints what the objects print of themselves for support staff: the document with its indexer and history, then each node.

  kestrova document dump part.kvdoc > part.txt
)";

constexpr char kHistoryHelp[] = R"(
Shows which builds of the product have saved the document, how often, for whom and when last.

  kestrova document history part.kvdoc
  kestrova document history part.kvdoc --json
)";

constexpr char kConvertHelp[] = R"(
Reads a document of any version and saves it as this build does.

  kestrova document convert old.kvdoc new.kvdoc
)";

constexpr char kVerifyHelp[] = R"(
Reads the document as far as it goes, as repair would, and tells what is wrong: bytes that have changed or are missing,
with their place; references to what isn't there; objects that no list holds; ids, states and the indexer's counts. Ends
with 1 if there is anything. Changes nothing.

  kestrova document verify part.kvdoc
  kestrova document verify part.kvdoc --json
)";

constexpr char kRepairHelp[] = R"(
Reads a damaged document as far as it goes, puts right what can be put right, and saves the rest: of nodes all those
ahead of the first that is not whole, without references to the others. Says what was lost. FILE stays as it is. What
was saved passes verify.

  kestrova document repair part.kvdoc saved.kvdoc
)";

// What the command line said.
struct Given {
  std::string file;
  std::string out;
  DWORD nodes = 100;
  std::string units = "mm";
  ULONGLONG seed = 1;
  bool force = false;
  bool json = false;
};

using Json = nlohmann::ordered_json;

void PrintJson(const Json& json) { fmt::print("{}\n", json.dump(2, ' ', false, Json::error_handler_t::replace)); }

void New(const Given& given) {
  CheckTarget(given.file, given.force);
  StartMainModule();
  HostDocument document;
  const ActiveDocument active(&document);
  document.SetUnits(FindLengthUnit(given.units)->code);
  FillWithSample(document, given.nodes, given.seed);
  SaveDocument(document, given.file);
}

void Show(const Given& given) {
  UseLibrary();
  const OpenDocument opened(given.file);
  (given.json ? WriteTreeJson : WriteTree)(*opened.document, stdout);
}

void Dump(const Given& given) {
  UseLibrary();
  const OpenDocument opened(given.file);
  opened.document->DumpData(stdout);
  opened.document->Walk([](HostNode& node, int) { node.DumpData(stdout); });
}

void History(const Given& given) {
  UseLibrary();
  const OpenDocument opened(given.file);
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
    if (!given.json) {
      const std::string build = text(record.GetBuildCode());
      std::string line = fmt::format("{} {} build {}, storage version {}: {} saves, last {} by {}",
                                     text(record.GetMajorVersion()), text(record.GetServicePack()),
                                     build.empty() ? "unknown" : build, ToUtf8(record.GetStorageVersion().TrimLeft()),
                                     text(record.GetNumSaves()), text(record.GetDateAndTime()), text(record.GetUser()));
      BlankControls(line);
      fmt::print("{}\n", line);
    }
  }
  if (given.json) PrintJson(all);
}

void Convert(const Given& given) {
  CheckTarget(given.out, given.force);
  StartMainModule();
  const OpenDocument opened(given.file);
  opened.document->FreezeIds(false);
  SaveDocument(*opened.document, given.out);
}

// ---- verify and repair

void Verify(const Given& given) {
  UseLibrary();
  DocumentLoader loader(given.file, DocumentLoader::Mode::kSalvage);
  const auto document = loader.Load();
  const ActiveDocument active(document.get());
  LoadReport report = loader.Report();
  CheckDocument(*document, CheckMode::kLook, report);
  if (given.json) {
    PrintJson(ReportJson(given.file, report));
  } else {
    fmt::print("{}", ReportText(given.file, report));
  }
  if (report.findingCount > 0) throw FoundErrors();
}

void Repair(const Given& given) {
  CheckTarget(given.out, given.force);
  std::error_code unknown;
  if (std::filesystem::equivalent(given.file, given.out, unknown))
    throw Failure(fmt::format("{} is the damaged document itself, which repair keeps; name another file", given.out));
  StartMainModule();
  DocumentLoader loader(given.file, DocumentLoader::Mode::kSalvage);
  const auto document = loader.Load();
  const ActiveDocument active(document.get());
  LoadReport report = loader.Report();
  if (report.part <= DocumentReading::Part::kFields)
    throw Failure(fmt::format("nothing of {} can be saved: stream {}: {}", given.file, report.findings.back().stream,
                              report.findings.back().text));
  CheckDocument(*document, CheckMode::kMend, report);
  SaveDocument(*document, given.out);
  if (given.json) return PrintJson(ReportJson(given.file, report));
  fmt::print("{}: {} of {} nodes saved{}\n{}", given.out, report.whole, report.promised, LostText(report),
             FindingsText(report));
}

// The option parser itself takes a minus and numbers that are too large.
std::string Seed(const std::string& text) {
  ULONGLONG seed = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, seed);
  return error == std::errc() && stop == end ? "" : text + " is no whole number from 0 to 18446744073709551615";
}

CLI::App& AddCommand(CLI::App& group, const char* name, const char* what, const char* help, Given& given,
                     void (*run)(const Given&)) {
  CLI::App* command = group.add_subcommand(name, what);
  command->footer(help);
  command->add_option("FILE", given.file, "The document's file")->required();
  command->callback([&given, run] { run(given); });
  return *command;
}

void AddForce(CLI::App& command, Given& given) {
  command.add_flag("--force", given.force, "Replace a file that exists");
}
void AddJson(CLI::App& command, Given& given) { command.add_flag("--json", given.json, "As JSON"); }
void AddOut(CLI::App& command, Given& given) {
  command.add_option("OUT", given.out, "The file to be written")->required();
  AddForce(command, given);
}

}  // namespace

void AddDocumentCommands(CLI::App& group) {
  static Given given;
  group.require_subcommand(1);
  const auto add = [&](const char* name, const char* what, const char* help, void (*run)(const Given&)) -> CLI::App& {
    return AddCommand(group, name, what, help, given, run);
  };
  CLI::App& fresh = add("new", "Make a document to try things with", kNewHelp, New);
  fresh.add_option("--nodes", given.nodes, "How many nodes, 100 unless told")->check(CLI::Range(0, 5'000'000));
  fresh.add_option("--units", given.units, "The document's units, mm unless told")
      ->check(CLI::IsMember({"mm", "inch"}));
  fresh.add_option("--seed", given.seed, "What the nodes are drawn from, 1 unless told")->check(Seed);
  AddForce(fresh, given);
  AddJson(add("show", "Show the nodes as a tree", kShowHelp, Show), given);
  add("dump", "Print the objects' own dumps", kDumpHelp, Dump);
  AddJson(add("history", "Show who saved the document", kHistoryHelp, History), given);
  AddOut(add("convert", "Save a document of any version as this build does", kConvertHelp, Convert), given);
  AddJson(add("verify", "Read a document as far as it goes and tell what is wrong", kVerifyHelp, Verify), given);
  CLI::App& repair = add("repair", "Save what is whole of a damaged document", kRepairHelp, Repair);
  AddOut(repair, given);
  AddJson(repair, given);
}

}  // namespace kestrova
