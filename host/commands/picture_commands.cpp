// kestrova picture: draws what a file describes, as an image or a recording.
#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <functional>
#include <optional>

#include "host/commands/commands.h"
#include "host/document/open_document.h"
#include "host/machine/machine_folder.h"
#include "host/module/main_module.h"
#include "host/pictures/document_picture.h"
#include "host/pictures/gdi_picture.h"
#include "host/pictures/machine_picture.h"
#include "host/pictures/opengl_picture.h"
#include "host/pictures/png_file.h"
#include "host/pictures/recording.h"
#include "host/pictures/recording_picture.h"
#include "host/pictures/svg_picture.h"
#include "host/pictures/toolpath_picture.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "host/shell/whole_file.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "share/env/app_env.h"

namespace kestrova {
namespace {

using Json = nlohmann::ordered_json;

constexpr char kHelp[] = R"(
Draws the toolpaths, features or patterns of a document, or a machine.

--of toolpath: the feed moves in the colours of the table for milling (kestrova feedcolors) if the document's setting
UseFeedColors is 1, otherwise in one colour, and the rapid moves as dashed lines, in metres in the document's frame.
Suppressed and recycled operations are left out, unless --node names one.
--of document: the features as outlines, with the instances of their patterns, and their names.
--of pattern: only features with a pattern. Each instance has a marker, red if it is skipped, and a number: its place in
the order of the first operation with an order, from 1, else its own number, from 0. --node names a feature or, for its
order, an operation. If all of them are in one setup, --view looks at that setup.
--of machine: FILE is a definition, KestrovaAPT.xml, its folder, or the name of a machine of the environment. Its solids
are drawn as their STL files put them, in the colours of the shape lists (--colors own: of the definition), with the axes
and the origins of the fixtures.

The name of OUT chooses what is made. OUT.png is an image by OpenGL, or with --by gdi on a device context, with names and
a legend; it needs no display. OUT.svg is a vector image. Any other OUT is a recording of lines and triangles, without
markers: OUT gets its binary form, and OUT.txt the readable one. kestrova picture replay draws a recording.

--view shows everything from one side, in parallel projection; --eye gives a view with perspective, in the units of the
file. JSON: {"file", "output"}; "operations" and "positions", or "features", "patterns", "instances" and "skipped", or
"shapes", "triangles" and "missing"; and "width" and "height" of an image or "items" and "text" of a recording.

  kestrova picture part.kvdoc --of toolpath --out part.png
  kestrova picture part.kvdoc --of toolpath --out top.png --view top --size 1200x800 --background dark
  kestrova picture part.kvdoc --of toolpath --out near.png --eye 0.3,-0.4,0.3 --target 0.05,0.03,0 --fov 30
  kestrova picture part.kvdoc --of toolpath --out part.kvrec --by file --json
  kestrova picture part.kvdoc --of document --out features.svg
  kestrova picture part.kvdoc --of pattern --out holes.png --node 7 --view top
  kestrova picture Vertical850 --of machine --out mill.png
)";

constexpr char kReplayHelp[] = R"(
Draws a recording, the binary file that kestrova picture or a module has written, as a PNG or SVG image. The image is
that of the direct drawing in the document's frame, without legend and markers. Texts are not drawn: the binary file has only their lengths.
JSON: {"file", "output", "items", "leftOut", "width", "height"}.

  kestrova picture replay moves.kvrec --out moves.png
)";

struct Options {
  std::string file;
  std::string of = "toolpath";
  std::string by;
  std::string out;
  std::string eye, target, size, background = "white", colors = "lists";
  std::optional<unsigned> node, highlight;
  ViewOptions view;
  bool force = false;
  bool json = false;
};

// ---- what is drawn

// A picture with its facts for the answer.
struct Subject {
  virtual ~Subject() = default;
  virtual Picture& Drawn() = 0;
  // Of the last drawing.
  virtual void AddFacts(Json& json) const = 0;
  virtual std::string Facts() const = 0;
  // The reason why nothing was drawn.
  [[noreturn]] virtual void ThrowNothing() const = 0;
};

class ToolpathSubject : public Subject {
 public:
  explicit ToolpathSubject(const Options& options)
      : options_(options), opened_(options.file), picture_(*opened_.document, {options.node, options.highlight}) {
    if (options.highlight && !picture_.HasOperation(*options.highlight))
      throw NotFound(fmt::format("no operation of {} has the id {}; kestrova document show prints ids", options.file,
                                 *options.highlight),
                     {.file = options.file});
  }

  Picture& Drawn() override { return picture_; }
  void AddFacts(Json& json) const override {
    json["operations"] = picture_.Operations();
    json["positions"] = picture_.Positions();
  }
  std::string Facts() const override {
    return fmt::format("{} operations, {} positions", picture_.Operations(), picture_.Positions());
  }
  [[noreturn]] void ThrowNothing() const override {
    const std::string& file = options_.file;
    const std::string reason = options_.node
                                   ? fmt::format("no operation of {} has the id {}", file, *options_.node)
                                   : file + " has no operation to draw; suppressed and recycled ones need --node";
    throw NotFound(reason + "; kestrova document show prints states and ids", {.file = file});
  }

 private:
  const Options& options_;
  const OpenDocument opened_;
  ToolpathPicture picture_;
};

class DocumentSubject : public Subject {
 public:
  explicit DocumentSubject(const Options& options)
      : options_(options),
        opened_(options.file),
        picture_(*opened_.document, {options.of == "pattern", options.node, options.highlight}) {
    if (options.highlight && !picture_.HasFeature(*options.highlight))
      throw NotFound(fmt::format("no feature of {} has the id {}; kestrova document show prints ids", options.file,
                                 *options.highlight),
                     {.file = options.file});
  }

  Picture& Drawn() override { return picture_; }
  void AddFacts(Json& json) const override {
    json["features"] = picture_.Features();
    json["patterns"] = picture_.Patterns();
    json["instances"] = picture_.Instances();
    json["skipped"] = picture_.Skipped();
  }
  std::string Facts() const override {
    return fmt::format("{} features, {} patterns, {} instances, {} skipped", picture_.Features(), picture_.Patterns(),
                       picture_.Instances(), picture_.Skipped());
  }
  [[noreturn]] void ThrowNothing() const override {
    const std::string& file = options_.file;
    const char* const what = options_.of == "pattern" ? "feature with a pattern" : "feature";
    const std::string reason =
        options_.node ? fmt::format("no {} of {} has the id {} or an operation with it", what, file, *options_.node)
                      : fmt::format("{} has no {} to draw; suppressed and recycled ones need --node", file, what);
    throw NotFound(reason + "; kestrova document show prints states, patterns and ids", {.file = file});
  }

 private:
  const Options& options_;
  const OpenDocument opened_;
  DocumentPicture picture_;
};

// The folder of a machine that is named without a path; otherwise the file as it is.
std::string MachineFileOf(const std::string& file) {
  if (file.find_first_of("/\\") != std::string::npos || _waccess(ProductPathFromSystem(file).c_str(), 0) == 0)
    return file;
  std::vector<std::string> found;
  for (const MachineEntry& machine : MachinesIn(AppEnv()->GetDefaultSimulationMachineFolderPath()))
    if (machine.name == file) found.push_back(SystemPathFromProduct(machine.definition));
  if (found.size() > 1)
    throw WrongUsage(fmt::format("several machines are named {}; name one by its file, such as {}", file, found[0]));
  if (found.empty())
    throw Failure(
        fmt::format("cannot read {}: there is no such file, and kestrova machine list shows no such machine", file),
        {.file = file});
  return found[0];
}

class MachineSubject : public Subject {
 public:
  explicit MachineSubject(const Options& options)
      : file_(MachineFileOf(options.file)),
        picture_(file_, options.colors == "own" ? MachinePicture::Colors::kOwn : MachinePicture::Colors::kLists) {
    for (const std::string& missing : picture_.Missing()) PrintNote("not drawn: " + missing);
  }

  Picture& Drawn() override { return picture_; }
  void AddFacts(Json& json) const override {
    json["shapes"] = picture_.Shapes();
    json["triangles"] = picture_.Triangles();
    json["missing"] = picture_.Missing();
  }
  std::string Facts() const override {
    return fmt::format("{} shapes, {} triangles", picture_.Shapes(), picture_.Triangles());
  }
  [[noreturn]] void ThrowNothing() const override {
    throw NotFound(file_ + " has no shape with a solid to draw", {.file = file_});
  }

 private:
  const std::string file_;
  MachinePicture picture_;
};

class RecordingSubject : public Subject {
 public:
  explicit RecordingSubject(const Options& options)
      : file_(options.file), picture_(RecordingPicture::ReadItems(options.file)) {}

  Picture& Drawn() override { return picture_; }
  void AddFacts(Json& json) const override {
    json["items"] = picture_.ItemCount();
    json["leftOut"] = picture_.LeftOut();
  }
  std::string Facts() const override {
    return fmt::format("{} items, {} left out", picture_.ItemCount(), picture_.LeftOut());
  }
  [[noreturn]] void ThrowNothing() const override {
    throw NotFound(file_ + " has nothing that can be drawn", {.file = file_});
  }

 private:
  const std::string file_;
  RecordingPicture picture_;
};

// ---- how it is drawn

bool EndsIn(const std::string& name, std::string_view suffix) {
  const auto same = [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; };
  return name.size() >= suffix.size() &&
         std::equal(suffix.begin(), suffix.end(), name.end() - long(suffix.size()), same);
}

bool IsImage(const std::string& name) { return EndsIn(name, ".png") || EndsIn(name, ".svg"); }

void ReadView(Options& options) {
  if (!options.size.empty()) ReadSize(options.size, options.view);
  if (!options.eye.empty()) options.view.eye = ReadPosition("--eye", options.eye);
  if (!options.target.empty()) options.view.target = ReadPosition("--target", options.target);
  if (options.view.target && !options.view.eye) throw WrongUsage("--target needs --eye, the place to look from");
  options.view.dark = options.background == "dark";
}

void Print(const Options& options, const Subject& subject, const Json& more, const std::string& facts) {
  if (!options.json) return kestrova::Print("{}\n{}{}\n", options.out, subject.Facts(), facts);
  Json answer = {{"file", options.file}, {"output", options.out}};
  subject.AddFacts(answer);
  answer.update(more);
  PrintJson(answer);
}

void MakeImage(const Options& options, Subject& subject) {
  std::string bytes;
  if (EndsIn(options.out, ".svg")) {
    bytes = SvgOf(subject.Drawn(), options.view);
  } else if (options.by == "gdi") {
    const Pixels pixels = DrawByGdi(subject.Drawn(), options.view);
    if (pixels.width > 0) bytes = PngOf(pixels);
  } else {
    OpenGLPicture image(options.view);
    if (image.Draw(subject.Drawn())) bytes = PngOf(image.Read());
  }
  if (bytes.empty()) subject.ThrowNothing();
  WriteWholeFile(options.out, bytes);
  Print(options, subject, {{"width", options.view.width}, {"height", options.view.height}},
        fmt::format(", {} x {} pixels", options.view.width, options.view.height));
}

void MakeRecording(const Options& options, Subject& subject) {
  const std::size_t items = Record(subject.Drawn(), options.out);
  if (items == 0) subject.ThrowNothing();
  const std::string text = TextFileOf(options.out);
  Print(options, subject, {{"items", items}, {"text", text}}, fmt::format(", {} items\n{}", items, text));
}

std::unique_ptr<Subject> SubjectOf(const Options& options) {
  if (options.of == "machine") return std::make_unique<MachineSubject>(options);
  if (options.of == "toolpath") return std::make_unique<ToolpathSubject>(options);
  return std::make_unique<DocumentSubject>(options);
}

void Draw(Options& options) {
  if (options.out.empty()) throw CLI::RequiredError("--out");
  const bool image = IsImage(options.out);
  if ((options.by == "opengl" || options.by == "gdi") && !EndsIn(options.out, ".png"))
    throw WrongUsage("--by " + options.by + " makes a PNG file; let the name of --out end in .png");
  if (options.by == "gdi" && (options.of == "machine" || !options.eye.empty()))
    throw WrongUsage("--by gdi has neither hidden surfaces nor perspective; leave it out");
  if (options.by == "file" && EndsIn(options.out, ".png"))
    throw WrongUsage("--by file makes a recording or an SVG file of its items; --out may not end in .png");
  ReadView(options);
  if (!image) CheckRecordingPath(options.out);
  CheckTarget(options.out, options.force);
  if (!image) CheckTarget(TextFileOf(options.out), options.force);
  StartMainModule();
  const std::unique_ptr<Subject> subject = SubjectOf(options);
  image ? MakeImage(options, *subject) : MakeRecording(options, *subject);
}

void Replay(Options& options) {
  if (!IsImage(options.out))
    throw WrongUsage("--out " + options.out + " is no image; let its name end in .png or .svg");
  ReadView(options);
  CheckTarget(options.out, options.force);
  StartMainModule();
  RecordingSubject subject(options);
  MakeImage(options, subject);
}

// The options that both commands have.
void AddViewOptions(CLI::App& command, Options& options) {
  command.add_option("--view", options.view.name, "The side to look from; default iso")
      ->check(CLI::IsMember({"iso", "top", "front", "right"}));
  command.add_option("--eye", options.eye, "Look from there, with perspective")->type_name("X,Y,Z");
  command.add_option("--target", options.target, "What the eye looks at; default the middle")->type_name("X,Y,Z");
  command.add_option("--fov", options.view.fov_degrees, "The eye's vertical angle of view in degrees; default 40")
      ->check(CLI::Range(1.0, 150.0))
      ->type_name("DEG");
  command.add_option("--size", options.size, "The pixels of an image; default 1600x1000")->type_name("WxH");
  command.add_option("--background", options.background, "Of an image; default white")
      ->check(CLI::IsMember({"white", "dark"}));
  command.add_flag("--force", options.force, "Replace files that exist");
  command.add_flag("--json", options.json, "As JSON");
}

}  // namespace

void AddPictureCommands(CLI::App& group) {
  static Options options;
  group.footer(kHelp);
  group.add_option("FILE", options.file, "The document's file, or the machine's definition");
  group.add_option("--of", options.of, "What to draw; default toolpath")
      ->check(CLI::IsMember({"toolpath", "machine", "document", "pattern"}));
  group.add_option("--out", options.out, "The new file, such as part.png or part.kvrec");
  group.add_option("--by", options.by, "How to draw; default by the name of OUT")
      ->check(CLI::IsMember({"opengl", "gdi", "file"}));
  group.add_option("--node", options.node, "Only the operation, or the feature, with this id");
  group.add_option("--highlight", options.highlight,
                   "Draw the operation, or the feature, with this id over the others");
  group.add_option("--colors", options.colors, "Of a machine's shapes; default lists")
      ->check(CLI::IsMember({"lists", "own"}));
  AddViewOptions(group, options);
  static Options replayed;
  CLI::App* const replay = group.add_subcommand("replay", "Draw a recording");
  replay->footer(kReplayHelp);
  replay->add_option("REC", replayed.file, "The binary file of the recording")->required();
  replay->add_option("--out", replayed.out, "The new image, such as part.png")->required();
  AddViewOptions(*replay, replayed);
  replay->callback([] { Replay(replayed); });
  group.callback([&group] {
    if (!group.get_subcommands().empty()) return;
    if (options.file.empty()) throw CLI::RequiredError("FILE");
    Draw(options);
  });
}

}  // namespace kestrova
