// kestrova pattern: repeats features of a document as patterns. A change is saved as a whole or not at all.
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <functional>
#include <nlohmann/json.hpp>
#include <optional>

#include "framework/ob_list.h"
#include "host/commands/commands.h"
#include "host/commands/pattern_options.h"
#include "host/document/document_file.h"
#include "host/document/host_document.h"
#include "host/document/instance_choice.h"
#include "host/document/open_document.h"
#include "host/document/operation_node.h"
#include "host/document/pattern_report.h"
#include "host/module/main_module.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "share/patterns/pattern_manager.h"

namespace kestrova {
namespace {

constexpr char kAddHelp[] = R"(
Repeats the feature NODE as a pattern. Instance 0 is the feature itself. Lengths are in the units of the document, or
with a unit (20mm, 0.5in); angles are in degrees, or with a unit.

  linear    --direction, --spacing and --count, and the same with a 2 for rows in a second direction
  circular  --centre, --axis (default 0,0,1), --angle between neighbours, or of all instances with --total, and --count
  polyline  --points, a polyline of two or more points, and --count of equal steps along it

  kestrova pattern add part.kvdoc 5 --kind linear --direction 1,0,0 --spacing 20 --count 5
  kestrova pattern add part.kvdoc 5 --kind linear --direction 1,0,0 --spacing 20 --count 5 --direction2 0,1,0 --spacing2 15 --count2 3
  kestrova pattern add part.kvdoc 5 --kind circular --centre 50,50,0 --angle 360 --total --count 6
  kestrova pattern add part.kvdoc 7 --kind polyline --points 0,0 100,0 100,50 --count 7 --force --json
)";

constexpr char kListHelp[] = R"(
Lists the patterns of the document; with NODE the pattern of that feature with the place and state of each instance.

  kestrova pattern list part.kvdoc
  kestrova pattern list part.kvdoc 7 --json
)";

constexpr char kSkipHelp[] = R"(
Skips instances of the pattern of NODE, or makes them active again. Instances are numbers from 0 and ranges.

  kestrova pattern skip part.kvdoc 7 1,3-4
  kestrova pattern skip part.kvdoc 7 3 --activate
)";

constexpr char kOrderHelp[] = R"(
Sets the order in which an operation of the feature NODE machines the instances of its pattern: the given instances, the
active ones backwards, or from the first active one always to the nearest (up to 20000 instances). --clear returns to the
pattern's own order.

  kestrova pattern order part.kvdoc 7 --operation 9 --instances 4,0-2
  kestrova pattern order part.kvdoc 7 --operation 9 --by nearest --json
  kestrova pattern order part.kvdoc 7 --operation 9 --clear
)";

constexpr char kRebuildHelp[] = R"(
Computes the patterns again, or the one of NODE: after a change of a feature they start at its present reference point.
Drops orders of operations that the feature no longer has.

  kestrova pattern rebuild part.kvdoc
  kestrova pattern rebuild part.kvdoc 7 --json
)";

struct Options {
  std::string file;
  std::optional<DWORD> node;
  PatternOptions pattern;
  std::string instances;
  bool activate = false;
  DWORD operation = 0;
  std::string by;
  bool clear = false;
  bool force = false;
  bool json = false;
};

// ---- nodes

HostNode* FindNode(const HostDocument& document, DWORD id) {
  for (DWORD place = 0; place < document.NodeCount(); ++place)
    if (document.NodeAt(place).GetObjectId() == id) return &document.NodeAt(place);
  return nullptr;
}

std::string LabelOf(HostNode& node) {
  return fmt::format("{} {} \"{}\"", ToUtf8(node.GetClassNameW()), node.GetObjectId(), ToUtf8(node.Name()));
}

HostNode& NodeOf(const HostDocument& document, const Options& options) {
  HostNode* const node = FindNode(document, *options.node);
  if (!node)
    throw NotFound(
        fmt::format("no node of {} has the id {}; kestrova document show prints the ids", options.file, *options.node),
        {.file = options.file});
  return *node;
}

HostNode& PatternedNodeOf(const HostDocument& document, const Options& options) {
  HostNode& node = NodeOf(document, options);
  if (PatternOf(node)) return node;
  throw NotFound(fmt::format("{} of {} has no pattern; kestrova pattern list prints those that have one", LabelOf(node),
                             options.file),
                 {.file = options.file});
}

void RequireUnlocked(HostNode& node, const Options& options) {
  if (node.IsEditable() && !node.IsLocked() && !node.IsRecycled()) return;
  throw Failure(fmt::format("{} of {} is {} and cannot be changed", LabelOf(node), options.file,
                            node.IsRecycled() ? "recycled" : "locked"),
                {.file = options.file});
}

// ---- output

using Json = nlohmann::ordered_json;

Json ReportOf(HostNode& node, const LengthUnit& unit) {
  Json all = {{"node", node.GetObjectId()}, {"class", ToUtf8(node.GetClassNameW())}, {"label", ToUtf8(node.Name())}};
  all.update(PatternJson(node, unit));
  return all;
}

void PrintPatterns(const HostDocument& document, const Options& options, const std::vector<HostNode*>& nodes) {
  if (!options.json) {
    for (HostNode* node : nodes) Print("{}: {}\n", LabelOf(*node), PatternText(*node));
    return;
  }
  JsonPrinter printer;
  printer.Add("file", options.file);
  printer.Add("units", document.Units().name);
  printer.Open("patterns", '[');
  for (HostNode* node : nodes) printer.Add({}, ReportOf(*node, document.Units()));
  printer.Close();
  printer.Close();
}

// ---- commands that change a document

// Opens the document, lets `change` change it and name the changed nodes, saves it, and prints the patterns.
void ChangeDocument(const Options& options, const std::function<std::vector<HostNode*>(HostDocument&)>& change) {
  StartMainModule();
  const OpenDocument opened(options.file);
  HostDocument& document = *opened.document;
  document.FreezeIds(false);
  const std::vector<HostNode*> nodes = change(document);
  for (HostNode* node : nodes) node->UpdateLastModified();
  if (!nodes.empty()) SaveDocument(document, options.file);
  PrintPatterns(document, options, nodes);
}

void ChangePattern(const Options& options, const std::function<void(HostDocument&, HostNode&)>& change) {
  ChangeDocument(options, [&](HostDocument& document) {
    HostNode& node = PatternedNodeOf(document, options);
    RequireUnlocked(node, options);
    change(document, node);
    return std::vector<HostNode*>{&node};
  });
}

void Add(const Options& options) {
  ChangeDocument(options, [&](HostDocument& document) {
    HostNode& node = NodeOf(document, options);
    if (!node.GetIsPatternSupported())
      throw Failure(fmt::format("{} of {} cannot be repeated; name a feature", LabelOf(node), options.file),
                    {.file = options.file});
    RequireUnlocked(node, options);
    if (node.GetIsPatterned() && !options.force)
      throw Failure(fmt::format("{} of {} has a pattern; add --force", LabelOf(node), options.file),
                    {.file = options.file});
    auto pattern = options.pattern.Build(document.Units());
    node.DestroyPattern();
    node.CreatePattern();
    node.GetPatternMgr()->SetPatternInfo(pattern.release(), /*deleteOld=*/1);
    node.RebuildPattern();
    return std::vector<HostNode*>{&node};
  });
}

void Skip(const Options& options) {
  ChangePattern(options, [&](HostDocument&, HostNode& node) {
    QFPatternInfo& pattern = *PatternOf(node);
    const auto status = options.activate ? ePatternInstanceActive : ePatternInstanceNotActive;
    for (const int instance : ParseInstances(options.instances, pattern.GetNumPatternInstances()))
      pattern.SetInstanceStatus(instance, status);
  });
}

HostOperation& OperationOf(const HostDocument& document, HostNode& node, const Options& options) {
  HostNode* const found = FindNode(document, options.operation);
  auto* const operation = DYNAMIC_DOWNCAST(HostOperation, found);
  if (operation && operation->GetOwner() == &node) return *operation;
  throw NotFound(fmt::format("{} of {} has no operation with the id {}; kestrova document show prints the ids",
                             LabelOf(node), options.file, options.operation),
                 {.file = options.file});
}

void Order(const Options& options) {
  const int ways = int(!options.instances.empty()) + int(!options.by.empty()) + int(options.clear);
  if (ways != 1) throw WrongUsage("name one of --instances, --by and --clear");
  ChangePattern(options, [&](HostDocument& document, HostNode& node) {
    QFPatternInfo& pattern = *PatternOf(node);
    HostOperation& operation = OperationOf(document, node, options);
    RequireUnlocked(operation, options);
    if (options.clear) {
      if (pattern.RemoveFromUserObjectsList(&operation)) return;
      throw NotFound(fmt::format("{} of {} has no order of its own", LabelOf(operation), options.file),
                     {.file = options.file});
    }
    std::vector<int> numbers = options.by == "nearest" ? NearestFirst(pattern)
                               : options.by == "reverse"
                                   ? Backwards(pattern)
                                   : ParseInstances(options.instances, pattern.GetNumPatternInstances());
    CArray<int, int&> order;
    for (int& number : numbers) order.Add(number);
    pattern.SetOptimizedList(&operation, order);
  });
}

void RebuildOne(HostDocument& document, HostNode& node, const Options& options) {
  if (!node.RebuildPattern())
    throw Failure(
        fmt::format("the pattern of {} of {} has invalid parameters; kestrova pattern add --force replaces it",
                    LabelOf(node), options.file),
        {.file = options.file});
  CObList operations;
  for (HostNode* child = document.FirstChild(&node); child; child = document.NextSibling(*child))
    if (!child->IsRecycled()) operations.AddTail(child);
  PatternOf(node)->CorrectOptimList(operations);
}

std::vector<HostNode*> PatternedNodes(const HostDocument& document) {
  std::vector<HostNode*> nodes;
  document.Walk([&](HostNode& node, int) {
    if (PatternOf(node)) nodes.push_back(&node);
  });
  return nodes;
}

void Rebuild(const Options& options) {
  if (options.node)
    return ChangePattern(options, [&](HostDocument& document, HostNode& node) { RebuildOne(document, node, options); });
  ChangeDocument(options, [&](HostDocument& document) {
    std::vector<HostNode*> nodes = PatternedNodes(document);
    std::erase_if(nodes, [](HostNode* node) { return node->IsLocked() || node->IsRecycled(); });
    for (HostNode* node : nodes) RebuildOne(document, *node, options);
    return nodes;
  });
}

// ---- list

void PrintInstances(const HostDocument& document, HostNode& node, const Options& options) {
  QFPatternInfo& pattern = *PatternOf(node);
  const LengthUnit& unit = document.Units();
  const auto each = [&](auto print) {
    for (LONGLONG instance = 0; instance < pattern.GetNumPatternInstances(); ++instance) {
      FRTransf transform;
      const bool active = pattern.GetTransfForInst(instance, transform) == ePatternInstanceActive;
      const FRPosition place = pattern.GetRefPosOfObject() * transform;
      print(instance, active, JsonNumber(place.x() / unit.metres), JsonNumber(place.y() / unit.metres),
            JsonNumber(place.z() / unit.metres));
    }
  };
  if (!options.json) {
    PrintPatterns(document, options, {&node});
    each([](LONGLONG instance, bool active, const Json& x, const Json& y, const Json& z) {
      Print("  {} at {} {} {}{}\n", instance, x.dump(), y.dump(), z.dump(), active ? "" : ", skipped");
    });
    return;
  }
  JsonPrinter printer;
  printer.Add("file", options.file);
  printer.Add("units", unit.name);
  printer.Open("patterns", '[');
  printer.Open({}, '{');
  const Json report = ReportOf(node, unit);
  for (const auto& [name, value] : report.items()) printer.Add(name, value);
  printer.Open("places", '[');
  each([&](LONGLONG, bool active, const Json& x, const Json& y, const Json& z) {
    printer.Add({}, {{"active", active}, {"position", {x, y, z}}});
  });
  for (int open = 0; open < 4; ++open) printer.Close();
}

void List(const Options& options) {
  UseLibrary();
  const OpenDocument opened(options.file);
  if (options.node) return PrintInstances(*opened.document, PatternedNodeOf(*opened.document, options), options);
  PrintPatterns(*opened.document, options, PatternedNodes(*opened.document));
}

}  // namespace

void AddPatternCommands(CLI::App& group) {
  static Options options;
  group.require_subcommand(1);
  const auto add = [&](const char* name, const char* what, const char* help, bool needsNode,
                       void (*run)(const Options&)) -> CLI::App& {
    CLI::App* command = group.add_subcommand(name, what);
    command->footer(help);
    command->add_option("FILE", options.file, "The document's file")->required();
    command->add_option("NODE", options.node, "The id of a feature")->required(needsNode);
    command->add_flag("--json", options.json, "As JSON");
    command->callback([run] { run(options); });
    return *command;
  };
  CLI::App& create = add("add", "Repeat a feature as a pattern", kAddHelp, /*needsNode=*/true, Add);
  options.pattern.AddTo(create);
  create.add_flag("--force", options.force, "Replace the feature's pattern");
  add("list", "List patterns, or the instances of one", kListHelp, /*needsNode=*/false, List);
  CLI::App& skip = add("skip", "Skip instances", kSkipHelp, /*needsNode=*/true, Skip);
  skip.add_option("INSTANCES", options.instances, "Numbers and ranges, such as 1,3-4")->required();
  skip.add_flag("--activate", options.activate, "Make them active again");
  CLI::App& order = add("order", "Set an operation's order of the instances", kOrderHelp, /*needsNode=*/true, Order);
  order.add_option("--operation", options.operation, "The id of an operation of the feature")->required();
  order.add_option("--instances", options.instances, "The instances in the wanted order");
  order.add_option("--by", options.by, "How to find the order")->check(CLI::IsMember({"nearest", "reverse"}));
  order.add_flag("--clear", options.clear, "Delete the operation's order");
  add("rebuild", "Compute patterns again", kRebuildHelp, /*needsNode=*/false, Rebuild);
}

}  // namespace kestrova
