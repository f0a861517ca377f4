// kestrova document: documents made, shown, converted, checked and repaired.
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <cstdio>
#include <nlohmann/json.hpp>

#include "framework/ob_list.h"
#include "host/commands.h"
#include "host/document/document_file.h"
#include "host/document/document_loader.h"
#include "host/document/document_tree.h"
#include "host/document/host_document.h"
#include "host/document/sample_document.h"
#include "host/main_module.h"
#include "platform/files.h"
#include "platform/paths.h"
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

void CheckTarget(const std::string& path, bool force) {
  if (!force && _waccess(ProductPathFromSystem(path).c_str(), 0) == 0)
    throw Failure(path + " exists; add --force to replace it");
}

// A document that was loaded, as the active one.
struct Opened {
  explicit Opened(const std::string& path) : Opened(DocumentLoader(path, DocumentLoader::Mode::kStrict)) {
    const std::size_t mended = report.findingCount;
    if (mended > 0)
      fmt::print(stderr, "kestrova: {}: {} fault{} put right while reading; see kestrova document verify\n", path,
                 mended, mended == 1 ? " was" : "s were");
  }

  std::unique_ptr<HostDocument> document;
  LoadReport report;
  ActiveDocument active;

 private:
  explicit Opened(DocumentLoader loader) : document(loader.Load()), report(loader.Report()), active(document.get()) {}
};

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
  const Opened opened(given.file);
  (given.json ? WriteTreeJson : WriteTree)(*opened.document, stdout);
}

void Dump(const Given& given) {
  UseLibrary();
  const Opened opened(given.file);
  opened.document->DumpData(stdout);
  opened.document->Walk([](HostNode& node, int) { node.DumpData(stdout); });
}

void History(const Given& given) {
  UseLibrary();
  const Opened opened(given.file);
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
      fmt::print("{} {} build {}, storage version {}: {} saves, last {} by {}\n", text(record.GetMajorVersion()),
                 text(record.GetServicePack()), text(record.GetBuildCode()),
                 ToUtf8(record.GetStorageVersion().TrimLeft()), text(record.GetNumSaves()),
                 text(record.GetDateAndTime()), text(record.GetUser()));
    }
  }
  if (given.json) fmt::print("{}\n", all.dump(2, ' ', false, Json::error_handler_t::replace));
}

void Convert(const Given& given) {
  CheckTarget(given.out, given.force);
  StartMainModule();
  const Opened opened(given.file);
  opened.document->FreezeIds(false);
  SaveDocument(*opened.document, given.out);
}

CLI::App* AddCommand(CLI::App& group, const char* name, const char* what, const char* help, Given& given,
                     void (*run)(const Given&)) {
  CLI::App* command = group.add_subcommand(name, what);
  command->footer(help);
  command->add_option("FILE", given.file, "The document's file")->required();
  command->callback([&given, run] { run(given); });
  return command;
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

void AddDocumentCommands(CLI::App& app) {
  static Given given;
  CLI::App* group = app.add_subcommand("document", "Documents: new, show, dump, history, convert");
  group->require_subcommand(1);
  CLI::App* fresh = AddCommand(*group, "new", "Make a document to try things with", kNewHelp, given, New);
  fresh->add_option("--nodes", given.nodes, "How many nodes, 100 unless told")->check(CLI::Range(0, 8'000'000));
  fresh->add_option("--units", given.units, "The document's units, mm unless told")
      ->check(CLI::IsMember({"mm", "inch"}));
  fresh->add_option("--seed", given.seed, "What the nodes are drawn from, 1 unless told");
  AddForce(*fresh, given);
  AddJson(*AddCommand(*group, "show", "Show the nodes as a tree", kShowHelp, given, Show), given);
  AddCommand(*group, "dump", "Print the objects' own dumps", kDumpHelp, given, Dump);
  AddJson(*AddCommand(*group, "history", "Show who saved the document", kHistoryHelp, given, History), given);
  AddOut(
      *AddCommand(*group, "convert", "Save a document of any version as this build does", kConvertHelp, given, Convert),
      given);
}

}  // namespace kestrova
