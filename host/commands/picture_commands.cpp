// kestrova picture: draws what a file describes.
#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <optional>

#include "framework/text.h"
#include "host/commands/commands.h"
#include "host/document/open_document.h"
#include "host/module/main_module.h"
#include "host/pictures/toolpath_picture.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "host/shell/whole_file.h"
#include "platform/paths.h"
#include "share/display/file_display.h"

namespace kestrova {
namespace {

constexpr char kHelp[] = R"(
Records the toolpaths of a document: the feed moves as polylines in the colours of the table for milling (kestrova
feedcolors) if the document's setting UseFeedColors is 1, otherwise black, and the rapid moves as dashed lines.
Positions are in metres in the document's frame. Suppressed and recycled operations are left out, unless --node names
one. OUT gets the binary form, and OUT.txt the readable one.
JSON: {"file", "output", "text", "operations", "items", "positions"}.

  kestrova picture part.kvdoc --of toolpath --out part.kvrec
  kestrova picture part.kvdoc --of toolpath --out part.kvrec --by file --json
)";

struct Options {
  std::string file;
  std::string of = "toolpath";
  std::string by = "file";
  std::string out;
  std::optional<unsigned> node;
  bool force = false;
  bool json = false;

  std::string TextFile() const { return out + ".txt"; }
};

// The folder and the name of the output as product paths.
std::pair<CString, CString> SplitOutput(const Options& options) {
  const CString path(ProductPathFromSystem(options.out).c_str());
  const int slash = path.ReverseFind(_T('\\'));
  const CString name = path.Mid(slash + 1);
  if (name.IsEmpty()) throw WrongUsage("--out " + options.out + " is a folder; name a file, such as part.kvrec");
  return {slash < 0 ? CString(_T(".")) : path.Left(slash + 1), name};
}

[[noreturn]] void ThrowNothing(const Options& options) {
  const std::string reason = options.node
                                 ? fmt::format("no operation of {} has the id {}", options.file, *options.node)
                                 : options.file + " has no operation to draw; suppressed and recycled ones need --node";
  throw NotFound(reason + "; kestrova document show prints states and ids", {.file = options.file});
}

void Draw(const Options& options) {
  const auto [folder, name] = SplitOutput(options);
  CheckTarget(options.out, options.force);
  CheckTarget(options.TextFile(), options.force);
  StartMainModule();
  const OpenDocument opened(options.file);
  QFDisplayInfo display(/*useOpenGL=*/0, /*window=*/nullptr, FRTransf());
  auto recording = std::make_unique<QFFileDisplay>(FRTransf(), folder, name);
  QFFileDisplay& file = *recording;
  display.SetDisplay(recording.release());
  ToolpathPicture picture;
  try {
    picture = DrawToolpaths(*opened.document, display, options.node);
  } catch (...) {
    file.Discard();
    throw;
  }
  const std::size_t items = file.GetItems().size();
  if (items == 0) ThrowNothing(options);
  QFRecordingFailure failure;
  if (!file.WriteFiles(&failure))
    ThrowNotWritten(SystemPathFromProduct(failure.path), failure.status, failure.replaced);
  if (!options.json)
    return Print("{}\n{}\n{} operations, {} items, {} positions\n", options.out, options.TextFile(), picture.operations,
                 items, picture.positions);
  PrintJson({{"file", options.file},
             {"output", options.out},
             {"text", options.TextFile()},
             {"operations", picture.operations},
             {"items", items},
             {"positions", picture.positions}});
}

}  // namespace

void AddPictureCommands(CLI::App& group) {
  static Options options;
  group.footer(kHelp);
  group.add_option("FILE", options.file, "The document's file")->required();
  group.add_option("--of", options.of, "What to draw; default toolpath")->check(CLI::IsMember({"toolpath"}));
  group.add_option("--out", options.out, "The new file, such as part.kvrec")->required();
  group.add_option("--by", options.by, "How to draw; default file, a recording")->check(CLI::IsMember({"file"}));
  group.add_option("--node", options.node, "Only the operation with this id");
  group.add_flag("--force", options.force, "Replace files that exist");
  group.add_flag("--json", options.json, "As JSON");
  group.callback([] { Draw(options); });
}

}  // namespace kestrova
