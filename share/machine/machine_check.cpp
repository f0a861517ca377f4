#include "share/machine/machine_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include "platform/files.h"
#include "share/machine/internal/check_findings.h"
#include "share/machine/internal/machine_grammar.h"
#include "share/machine/internal/machine_numbers.h"
#include "share/machine/machine.h"
#include "share/machine/shape_table.h"

namespace {

using namespace kvmachine;

// Whether a path below a folder leads out of it.
bool LeavesFolder(std::string_view path) {
  if (path.starts_with('/') || path.starts_with('\\') || (path.size() > 1 && path[1] == ':')) return true;
  int depth = 0;
  while (!path.empty() && depth >= 0) {
    const std::size_t end = std::min(path.find_first_of("/\\"), path.size());
    const std::string_view part = path.substr(0, end);
    if (part == "..") {
      --depth;
    } else if (!part.empty() && part != ".") {
      ++depth;
    }
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return depth < 0;
}

// Walks a definition with the reader's table. It stores what is needed to check later elements against earlier ones.
class Checker {
 public:
  Checker(const KVXMLDocument& document, const CString& folder, MachineCheckResult& result)
      : document_(document), folder_(folder), findings_(result) {}

  void Run(KVXMLElement root) {
    for (const KVXMLFault& fault : document_.Faults()) findings_.Error(fault.place, fault.reason);
    CheckRootName(root);
    Walk(RootElement(), root);
    CheckDeclared(declaredChannels_, "CHANNELS", document_.PlaceOf(root));
    CheckDeclared(declaredShapes_, "SHAPES", document_.PlaceOf(root));
    CheckChannels();
    CheckShapes();
    CheckParents();
    CheckLists();
    NoteWhatIsNotExported();
  }

 private:
  struct Declared {
    bool seen = false;   // there is an element
    bool given = false;  // it has a NUM
    int count = 0;
    KVXMLPlace place;
  };
  struct Channel {
    int number = 1;
    KVXMLPlace place;
    int toolTargets = 0;
    int stations = 0;
    MDTurretType target = MD_TURRET_NONE;
    std::set<int> positions;
    bool fixture[CQVMChannel::kFixtures] = {};
    KVXMLPlace fixturePlace[CQVMChannel::kFixtures];
  };
  // A shape with a parent.
  struct Child {
    std::string_view name;
    KVXMLAttribute parent;
  };
  // The IDs of a LIST, in listedIds_ from first to the first of the next list.
  struct List {
    KVXMLPlace place;
    std::size_t first;
  };
  struct NotExported {
    KVXMLPlace place;  // of the first one
    int count = 0;
  };
  // One value of MIN, MAX or HOME.
  struct Limit {
    bool given = false;
    double value = 0;
    KVXMLPlace place;
  };
  static constexpr std::size_t kNoChild = std::size_t(-1);
  using Slot = std::tuple<int, int, int, int>;  // row, axis, target, fixture index

  // ---- the walk

  void Walk(const Element& rule, KVXMLElement element) {
    if (IsTooMuch(rule, element)) return;
    CheckAttributes(rule, element);
    Enter(rule, element);
    for (KVXMLElement child = element.FirstChild(); child; child = child.NextSibling()) {
      if (const Element* known = FindChild(rule, child.Name())) {
        Walk(*known, child);
      } else {
        findings_.Warn(document_.PlaceOf(child),
                       fmt::format("element {} is not known {} and is skipped", Quoted(child.Name()), Where(rule)));
      }
    }
    Leave(rule);
  }

  // The reader accepts any name.
  void CheckRootName(KVXMLElement root) {
    constexpr std::string_view kName = "KESTROVAAPT";
    const auto same = [](char a, char b) { return (a >= 'a' && a <= 'z' ? char(a - 'a' + 'A') : a) == b; };
    if (std::ranges::equal(root.Name(), kName, same)) return;
    findings_.Warn(document_.PlaceOf(root),
                   fmt::format("the root element is {} and not {}", Quoted(root.Name()), kName));
  }

  static std::string Where(const Element& rule) { return rule.name.empty() ? "here" : fmt::format("in {}", rule.name); }

  void CheckAttributes(const Element& rule, KVXMLElement element) {
    std::unordered_set<std::string_view> seen;
    for (KVXMLAttribute at = element.FirstAttribute(); at; at = at.Next()) {
      const KVXMLPlace place = document_.PlaceOf(at);
      if (!seen.insert(at.Name()).second) {
        findings_.Error(place, fmt::format("attribute {} occurs twice: the first one is used", Quoted(at.Name())));
      } else if (const Attribute* row = FindAttribute(rule, at.Name())) {
        const bool exported = !IsNotExported(rule, at.Name());
        CheckValue(*row, at.Value(), exported, document_.PlaceOfValue(at), findings_);
        if (!exported) CountNotExported(rule, at);
      } else if (!rule.name.empty()) {
        findings_.Warn(place, fmt::format("attribute {} is not known in {} and is skipped{}", Quoted(at.Name()),
                                          rule.name, HintFor(rule, at.Name())));
      }
    }
  }

  // Attribute names compare with case, unlike element names.
  static std::string HintFor(const Element& rule, std::string_view name) {
    std::string upper(name);
    for (char& c : upper) c = c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c;
    return FindAttribute(rule, upper) ? fmt::format(": write {}", upper) : "";
  }

  // Attributes that the export file has no key for.
  static bool IsNotExported(const Element& rule, std::string_view name) {
    if (rule.name == "TOOL") return name == "NAME" || name == "VECTOR_Z";
    if (rule.name == "TARGET") return name.starts_with("BASE_") && name.ends_with("_4TH_AXIS");
    return rule.name == "DISPLAY" && name == "METALLIC";
  }

  void CountNotExported(const Element& rule, KVXMLAttribute at) {
    NotExported& entry = notExported_[{rule.name, at.Name()}];
    if (++entry.count == 1) entry.place = document_.PlaceOf(at);
  }

  void NoteWhatIsNotExported() {
    for (const auto& [names, entry] : notExported_) {
      findings_.Note(entry.place, fmt::format("{} of {} is not part of the export ({} {})", names.second, names.first,
                                              entry.count, entry.count == 1 ? "time" : "times"));
    }
  }

  static KVXMLAttribute Find(KVXMLElement element, std::string_view name) {
    KVXMLAttribute at = element.FirstAttribute();
    while (at && name != at.Name()) at = at.Next();
    return at;
  }

  static int IntegerOf(KVXMLElement element, std::string_view name, int absent) {
    const KVXMLAttribute at = Find(element, name);
    return at ? ReadInteger(at.Value()) : absent;
  }

  KVXMLPlace PlaceOf(KVXMLElement element, std::string_view name) const {
    const KVXMLAttribute at = Find(element, name);
    return at ? document_.PlaceOfValue(at) : document_.PlaceOf(element);
  }

  void EnterChannels(KVXMLElement element) { Declare(element, declaredChannels_, "channel"); }
  void EnterShapes(KVXMLElement element) { Declare(element, declaredShapes_, "shape"); }
  void EnterToolList(KVXMLElement element) { EnterList(element, CM_TARGET_TOOL); }
  void EnterFixtureList(KVXMLElement element) { EnterList(element, CM_TARGET_FIXTURE); }

  void Enter(const Element& rule, KVXMLElement element) {
    static constexpr std::pair<std::string_view, void (Checker::*)(KVXMLElement)> kRules[] = {
        {"CHANNELS", &Checker::EnterChannels},
        {"CHANNEL", &Checker::EnterChannel},
        {"TARGET", &Checker::EnterTarget},
        {"TOOL", &Checker::EnterTool},
        {"SHAPES", &Checker::EnterShapes},
        {"SHAPE", &Checker::EnterShape},
        {"SHAPELISTS", &Checker::EnterLists},
        {"TOOLSHAPELIST", &Checker::EnterToolList},
        {"FIXTURESHAPELIST", &Checker::EnterFixtureList},
    };
    for (const auto& [name, enter] : kRules) {
      if (name == rule.name) (this->*enter)(element);
    }
  }

  // Whether the reader skips the element because of its limits. Adds one finding at the first such element.
  bool IsTooMuch(const Element& rule, KVXMLElement element) {
    const bool channel = rule.name == "CHANNEL" && channels_.size() >= std::size_t(kMachineMostChannels);
    const bool shape = rule.name == "SHAPE" && shapes_ >= kMachineMostShapes;
    if ((channel || shape) && !tooMuch_) {
      findings_.Error(document_.PlaceOf(element),
                      fmt::format("too many {} elements: from here on they are skipped", rule.name));
    }
    tooMuch_ = tooMuch_ || channel || shape;
    return channel || shape;
  }

  void Leave(const Element& rule) {
    if (rule.name == "CHANNEL") LeaveChannel();
  }

  void Declare(KVXMLElement element, Declared& declared, const char* what) {
    declared.seen = true;
    if (!Find(element, "NUM")) {
      if (declared.given) return;
      findings_.Error(document_.PlaceOf(element),
                      fmt::format("without NUM the {} count of the machine loaded before remains, or 0", what));
      return;
    }
    declared = {true, true, IntegerOf(element, "NUM", 0), PlaceOf(element, "NUM")};
  }

  // ---- channels

  void EnterChannel(KVXMLElement element) {
    Channel& channel = channels_.emplace_back();
    channel.number = IntegerOf(element, "ID", 1);
    channel.place = PlaceOf(element, "ID");
  }

  void EnterTarget(KVXMLElement element) {
    Channel& channel = channels_.back();
    const KVXMLAttribute type = Find(element, "TYPE");
    const bool fixture = type && type.Value() == kFixtureType;
    if (!type) findings_.Error(document_.PlaceOf(element), "TARGET without TYPE sets no tool target");
    WarnOfOtherSide(element, fixture);
    if (fixture) return EnterFixture(element);
    if (const KVXMLAttribute fourth = Find(element, "ROT_4TH_ABOUT"))
      CountNotExported({.name = "a tool target", .attributes = {}, .children = {}}, fourth);
    if (++channel.toolTargets > 1) {
      findings_.Warn(document_.PlaceOf(element), "a second tool target of one channel overwrites the first");
    }
    if (type) ReadText(type.Value(), channel.target);
    if (channel.target == MD_TURRET_RAIL || channel.target == MD_TURRET_OTHER) {
      findings_.Warn(
          PlaceOf(element, "TYPE"),
          fmt::format("the export writes no line end after the target {}: the next record continues its line",
                      TextOf(channel.target)));
    }
    channel.stations = IntegerOf(element, "STATIONS", channel.stations);
  }

  void EnterFixture(KVXMLElement element) {
    Channel& channel = channels_.back();
    if (!Find(element, "ID")) {
      findings_.Error(document_.PlaceOf(element),
                      "a fixture without ID sets values of fixture 1 but does not enable it");
      return;
    }
    const int id = IntegerOf(element, "ID", 0);
    if (id < 1 || id > CQVMChannel::kFixtures) {
      findings_.Error(PlaceOf(element, "ID"), fmt::format("fixture {} is out of range: the IDs are 1 and 2", id));
      return;
    }
    if (channel.fixture[id - 1]) {
      findings_.Warn(document_.PlaceOf(element), fmt::format("fixture {} of this channel is defined twice", id));
    }
    channel.fixture[id - 1] = true;
    channel.fixturePlace[id - 1] = document_.PlaceOf(element);
  }

  // In the table of TARGET, the rows XOFF to BASE_Z_5TH_AXIS are for fixtures and the rows after them for tool targets.
  void WarnOfOtherSide(KVXMLElement element, bool fixture) {
    static const Element& rule = *FindChild(*FindChild(*FindChild(RootElement(), "CHANNELS"), "CHANNEL"), "TARGET");
    const Attribute* const first = FindAttribute(rule, "XOFF");
    const Attribute* const last = FindAttribute(rule, "BASE_Z_5TH_AXIS");
    for (KVXMLAttribute at = element.FirstAttribute(); at; at = at.Next()) {
      const Attribute* row = FindAttribute(rule, at.Name());
      if (!fixture && row && row >= first && row <= last) {
        findings_.Warn(document_.PlaceOf(at), fmt::format("{} of a tool target is set on fixture 1", at.Name()));
      } else if (fixture && row && row > last) {
        findings_.Warn(document_.PlaceOf(at), fmt::format("{} of a fixture is set on the tool target", at.Name()));
      }
    }
  }

  void EnterTool(KVXMLElement element) {
    if (!Find(element, "POS")) findings_.Warn(document_.PlaceOf(element), "TOOL without POS is at station 1");
    const int position = IntegerOf(element, "POS", 1);
    if (!channels_.back().positions.insert(position).second) {
      findings_.Error(PlaceOf(element, "POS"),
                      fmt::format("station {} has a TOOL already; the first one is used", position));
    }
  }

  void LeaveChannel() {
    const Channel& channel = channels_.back();
    if (channel.fixture[1] && !channel.fixture[0]) {
      findings_.Error(channel.fixturePlace[1], "fixture 2 without fixture 1 is never exported");
    } else if (channel.target == MD_TURRET_NONE && !channel.fixture[0]) {
      findings_.Error(channel.place, "a channel without a tool target and a fixture is never exported");
    }
    if (channel.positions.empty()) return;
    if (channel.target != MD_TURRET) {
      findings_.Warn(channel.place, "TOOL elements of a channel without a turret are not exported");
      return;
    }
    stations_ += std::max(channel.stations, 0);
    if (stations_ > KVVMMachine::kMostStationLines) {
      findings_.Error(channel.place,
                      fmt::format("stations after the first {} are not exported", KVVMMachine::kMostStationLines));
    }
    if (channel.stations > 0 && *channel.positions.begin() == 1 && *channel.positions.rbegin() == channel.stations &&
        channel.positions.size() == std::size_t(channel.stations)) {
      return;
    }
    findings_.Error(channel.place, fmt::format("the turret has {} stations, but TOOL elements for {} (from {} to {})",
                                               channel.stations, channel.positions.size(), *channel.positions.begin(),
                                               *channel.positions.rbegin()));
  }

  // Without one of the two counts, there is no export.
  void CheckDeclared(const Declared& declared, const char* element, KVXMLPlace root) {
    if (!declared.given && !declared.seen) {
      findings_.Error(root, fmt::format("there is no {}: nothing is exported", element));
    } else if (declared.given && declared.count == 0) {
      findings_.Error(declared.place, fmt::format("{} declares 0: nothing is exported", element));
    }
  }

  void CheckChannels() {
    if (!declaredChannels_.given) return;
    const int count = declaredChannels_.count;
    if (std::size_t(std::max(count, 0)) != channels_.size()) {
      findings_.Error(declaredChannels_.place,
                      fmt::format("CHANNELS declares {} and contains {}", count, channels_.size()));
    }
    if (count == 1) return;  // the first channel is used, whatever its number is
    std::map<int, KVXMLPlace> numbers;
    for (const Channel& channel : channels_) {
      if (channel.number < 0 || channel.number > count) {
        findings_.Error(channel.place, fmt::format("channel {} is never exported: its number is outside 0 to {}",
                                                   channel.number, count));
      }
      const auto [first, isNew] = numbers.emplace(channel.number, channel.place);
      if (isNew) continue;
      findings_.Error(channel.place, fmt::format("channel {} is never found: line {} has that number already",
                                                 channel.number, first->second.line));
    }
  }

  // ---- shapes

  void EnterShape(KVXMLElement element) {
    ++shapes_;
    if (!Find(element, "ID")) findings_.Error(document_.PlaceOf(element), "SHAPE without ID gets ID 0");
    const int id = IntegerOf(element, "ID", 0);
    const auto [first, isNew] = shapeIds_.emplace(id, document_.PlaceOf(element));
    if (!isNew) {
      findings_.Error(
          PlaceOf(element, "ID"),
          fmt::format("shape ID {} is used in line {} already; only that shape is found", id, first->second.line));
    }
    const KVXMLAttribute parent = Find(element, "PARENT");
    const bool hangs = parent && !parent.Value().empty();
    if (const KVXMLAttribute name = Find(element, "NAME"); name && !name.Value().empty()) {
      if (!shapeNames_.emplace(name.Value(), hangs ? children_.size() : kNoChild).second)
        findings_.Warn(document_.PlaceOfValue(name),
                       fmt::format("another shape has the name {}", Quoted(name.Value())));
    }
    if (hangs) children_.push_back({Find(element, "NAME").Value(), parent});
    CheckGeometry(element);
    CheckLimits(element);
  }

  void CheckLimits(KVXMLElement shape) {
    static const Element& rule = *FindChild(*FindChild(RootElement(), "SHAPES"), "SHAPE");
    constexpr std::string_view kAxes[] = {"X", "Y", "Z", "A", "B", "C"};
    constexpr std::string_view kElements[] = {"MIN", "MAX", "HOME"};
    Limit limits[std::size(kElements)][std::size(kAxes)];
    for (KVXMLElement child = shape.FirstChild(); child; child = child.NextSibling()) {
      const Element* known = FindChild(rule, child.Name());
      for (std::size_t e = 0; known && e < std::size(kElements); ++e) {
        for (std::size_t axis = 0; known->name == kElements[e] && axis < std::size(kAxes); ++axis) {
          if (const KVXMLAttribute at = Find(child, kAxes[axis]))
            limits[e][axis] = {true, ReadReal(at.Value()), document_.PlaceOfValue(at)};
        }
      }
    }
    for (std::size_t axis = 0; axis < std::size(kAxes); ++axis)
      CheckLimitsOf(kAxes[axis], limits[0][axis], limits[1][axis], limits[2][axis]);
  }

  void CheckLimitsOf(std::string_view axis, const Limit& least, const Limit& most, const Limit& home) {
    if (least.value > most.value) {
      findings_.Error(least.given ? least.place : most.place,
                      fmt::format("MIN {} is {}, above MAX {}, which is {}", axis, least.value, axis, most.value));
    } else if (least.given && most.given && home.given && (home.value < least.value || home.value > most.value)) {
      findings_.Warn(home.place,
                     fmt::format("HOME {} is {}, outside of {} to {}", axis, home.value, least.value, most.value));
    }
  }

  void CheckGeometry(KVXMLElement element) {
    const KVXMLAttribute path = Find(element, "PATH");
    if (!path || path.Value().empty()) {
      findings_.Error(PlaceOf(element, "PATH"), "SHAPE without a geometry file: its PATH is the machine's folder");
      return;
    }
    const KVXMLPlace place = document_.PlaceOfValue(path);
    if (LeavesFolder(path.Value())) {
      findings_.Error(place, fmt::format("geometry file {} is outside the machine's folder", Quoted(path.Value())));
      return;
    }
    if (folder_.IsEmpty()) return;
    const CString file = folder_ + FromUtf8(path.Value());
    const DWORD attributes = GetFileAttributesW(file);
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
      findings_.Error(place, fmt::format("geometry file {} does not exist", Quoted(path.Value())));
      return;
    }
    std::string written(path.Value());
    std::replace(written.begin(), written.end(), '\\', '/');
    std::string found = SystemPathFromProduct(file);
    CheckLinks(found, path.Value(), place);
    std::replace(found.begin(), found.end(), '\\', '/');
    if (found.ends_with(written)) return;
    const std::string name = found.substr(found.find_last_of('/') + 1);
    findings_.Note(place, fmt::format("geometry file {} exists as {}: upper and lower case differ",
                                      Quoted(path.Value()), Quoted(name)));
  }

  // A path without ".." leaves the folder by a symbolic link to a file or folder.
  void CheckLinks(const std::string& found, std::string_view written, KVXMLPlace place) {
    namespace fs = std::filesystem;
    std::error_code error;
    if (realFolder_.empty()) realFolder_ = fs::canonical(SystemPathFromProduct(folder_), error);
    const fs::path real = fs::canonical(found, error);
    if (error || std::ranges::mismatch(realFolder_, real).in1 == realFolder_.end()) return;
    findings_.Warn(place, fmt::format("geometry file {} is outside the machine's folder, by a symbolic link: {}",
                                      Quoted(written), Quoted(real.string())));
  }

  void CheckShapes() {
    if (declaredShapes_.given && declaredShapes_.count != shapes_) {
      findings_.Warn(declaredShapes_.place,
                     fmt::format("SHAPES declares {} and contains {}", declaredShapes_.count, shapes_));
    }
    for (const Child& child : children_) {
      if (shapeNames_.contains(child.parent.Value())) continue;
      findings_.Error(document_.PlaceOfValue(child.parent),
                      fmt::format("parent {} is not a shape", Quoted(child.parent.Value())));
    }
  }

  // Finds shapes that are their own parent, directly or through others. A name means its first shape.
  void CheckParents() {
    std::vector<std::size_t> walks(children_.size(), 0);  // by child: the walk that came there first; 0: none
    for (std::size_t start = 0; start < children_.size(); ++start) {
      std::size_t at = start;
      while (at != kNoChild && walks[at] == 0) {
        walks[at] = start + 1;
        const auto parent = shapeNames_.find(children_[at].parent.Value());
        at = parent == shapeNames_.end() ? kNoChild : parent->second;
      }
      if (at == kNoChild || walks[at] != start + 1) continue;
      findings_.Error(
          document_.PlaceOfValue(children_[at].parent),
          fmt::format("shape {} is its own parent, directly or through other shapes", Quoted(children_[at].name)));
    }
  }

  // ---- shape lists

  void EnterLists(KVXMLElement element) {
    const KVXMLPlace place = document_.PlaceOf(element);
    rows_ = int(channels_.size());
    if (rows_ == 0) findings_.Error(place, "SHAPELISTS before CHANNELS: all its lists are ignored");
    if (++tables_ > 1) findings_.Warn(place, "another SHAPELISTS replaces the lists above");
    slots_.clear();
  }

  void EnterList(KVXMLElement element, CM_TARGET_TYPE target) {
    const KVXMLPlace place = document_.PlaceOf(element);
    if (!CheckItems(element) || rows_ == 0) return;
    const int channel = IntegerOf(element, "CHANNEL", 0);
    if (channel < 0 || channel > rows_) {
      findings_.Error(PlaceOf(element, "CHANNEL"),
                      fmt::format("channel {} is outside the table of {} rows: the list is ignored", channel, rows_));
      return;
    }
    int fixture = 0;
    if (target == CM_TARGET_FIXTURE && Find(element, "ID")) {
      const int id = IntegerOf(element, "ID", 0);
      if (id < 1 || id > KVVMShapeRefMngr::kFixtures) {
        findings_.Error(PlaceOf(element, "ID"), fmt::format("fixture {} is out of range: the list is ignored", id));
        return;
      }
      if (id > CQVMChannel::kFixtures) {
        findings_.Warn(PlaceOf(element, "ID"), fmt::format("no channel has a fixture {}", id));
      }
      fixture = id - 1;
    }
    CM_AXIS_TYPE axis = CM_AXIS_Z;
    if (const KVXMLAttribute at = Find(element, "AXIS")) ReadText(at.Value(), axis);
    const int row = channel == rows_ ? rows_ - 1 : channel;
    const auto [former, isNew] = slots_.emplace(Slot(row, axis, target, fixture), place);
    if (isNew) return;
    findings_.Error(place, fmt::format("replaces the list of line {}: both are for row {}, axis {}",
                                       former->second.line, row, TextOf(axis)));
    former->second = place;
  }

  // Checks LIST and NUM. Returns false if the list stores nothing.
  bool CheckItems(KVXMLElement element) {
    const KVXMLAttribute list = Find(element, "LIST");
    const int num = IntegerOf(element, "NUM", 0);
    if (!list || list.Value().empty() || num < 1) {
      findings_.Error(document_.PlaceOf(element), "the list stores nothing: it needs a LIST and a NUM of 1 or more");
      return false;
    }
    const std::string_view text = list.Value();
    const KVXMLPlace place = document_.PlaceOfValue(list);
    int taken = 0;
    bool repeats = false;
    lists_.push_back({place, listedIds_.size()});
    ForEachListItem(text, num, [&](std::string_view item, bool repeated) {
      if (repeated) {
        repeats = true;
        return false;
      }
      ++taken;
      CheckItem(item, place);
      return true;
    });
    const auto items = int(std::count(text.begin(), text.end(), ',')) + (text.back() == ',' ? 0 : 1);
    if (repeats) {
      findings_.Error(PlaceOf(element, "NUM"),
                      fmt::format("NUM is {} and LIST has {}: the last one is repeated", num, taken));
    } else if (num != items) {
      findings_.Error(PlaceOf(element, "NUM"),
                      fmt::format("NUM is {} and LIST has {}: {} are used", num, items, taken));
    }
    return true;
  }

  void CheckItem(std::string_view item, KVXMLPlace place) {
    NumberNotes notes;
    const int id = ReadInteger(item, &notes);
    if (notes.none || notes.trailing) {
      findings_.Error(place, fmt::format("item {} of LIST is read as {}", Quoted(item), id));
    }
    listedIds_.push_back(id);
  }

  void CheckLists() {
    lists_.push_back({{}, listedIds_.size()});
    for (auto list = lists_.begin(); list + 1 != lists_.end(); ++list) {
      const auto first = listedIds_.begin() + std::ptrdiff_t(list->first);
      const auto end = listedIds_.begin() + std::ptrdiff_t((list + 1)->first);
      std::sort(first, end);
      for (auto id = first; id != end; ++id) {
        const bool again = id != first && *(id - 1) == *id;
        if (again && (id - 1 == first || *(id - 2) != *id))
          findings_.Warn(list->place, fmt::format("shape {} occurs twice in LIST", *id));
        if (!again && !shapeIds_.contains(*id))
          findings_.Error(list->place, fmt::format("LIST names shape {}, which does not exist", *id));
      }
    }
    if (listedIds_.size() > std::size_t(KVVMMachine::kMostListedIds)) {
      findings_.Error(lists_.front().place,
                      fmt::format("shape lists after {} IDs are not exported", KVVMMachine::kMostListedIds));
    }
    if (tables_ > 0 && rows_ > 0 && rows_ < int(channels_.size())) {
      findings_.Error(channels_[std::size_t(rows_)].place, "channels after SHAPELISTS have no row in the shape table");
    }
  }

  const KVXMLDocument& document_;
  const CString& folder_;
  std::filesystem::path realFolder_;  // folder_ without symbolic links; empty before it is needed
  Findings findings_;
  Declared declaredChannels_;
  Declared declaredShapes_;
  std::vector<Channel> channels_;
  int shapes_ = 0;
  bool tooMuch_ = false;
  std::unordered_map<int, KVXMLPlace> shapeIds_;
  std::unordered_map<std::string_view, std::size_t> shapeNames_;  // the index in children_, or kNoChild
  std::vector<Child> children_;
  int tables_ = 0;
  int rows_ = 0;
  std::map<Slot, KVXMLPlace> slots_;
  std::vector<List> lists_;
  std::vector<int> listedIds_;
  LONGLONG stations_ = 0;
  std::map<std::pair<std::string_view, std::string_view>, NotExported> notExported_;  // by element and attribute
};

MachineCheckResult Check(KVXMLDocument& document, KVXMLNode* root, const CString& folder) {
  MachineCheckResult result;
  if (!root) {
    result.failure = document.LastFailure();
    return result;
  }
  Checker(document, folder, result).Run(root->Element());
  std::ranges::stable_sort(result.findings, {}, [](const MachineFinding& finding) {
    return std::pair(finding.place.line, finding.place.column);
  });
  return result;
}

}  // namespace

int MachineCheckResult::Count(MachineFindingGrade grade) const {
  return int(std::ranges::count(findings, grade, &MachineFinding::grade));
}

const char* TextOf(MachineFindingGrade grade) {
  switch (grade) {
    case MachineFindingGrade::kNote: return "note";
    case MachineFindingGrade::kWarning: return "warning";
    case MachineFindingGrade::kError: break;
  }
  return "error";
}

std::string FindForgedLine(const KVVMMachine& machine) {
  const auto findingOf = [](const char* what, int number, const char* attribute, const CString& text) {
    const std::string control = ControlIn(text.View());
    return control.empty()
               ? std::string()
               : fmt::format("{} of {} {} contains the control character {}", attribute, what, number, control);
  };
  for (POSITION at = machine.GetChannels().GetHeadPosition(); at;) {
    const auto& channel = static_cast<const CQVMChannel&>(*machine.GetChannels().GetNext(at));
    if (std::string found = findingOf("channel", channel.GetChannelNum(), "NAME", channel.GetName()); !found.empty())
      return found;
  }
  for (POSITION at = machine.GetShapes().GetHeadPosition(); at;) {
    const auto& shape = static_cast<const CQVMShape&>(*machine.GetShapes().GetNext(at));
    const std::pair<const char*, const CString&> texts[] = {
        {"NAME", shape.GetName()}, {"PARENT", shape.GetParentName()}, {"PATH", shape.m_strPath}};
    for (const auto& [attribute, text] : texts) {
      if (std::string found = findingOf("shape", shape.GetID(), attribute, text); !found.empty()) return found;
    }
  }
  return {};
}

MachineCheckResult CheckMachineFile(const CString& definitionFile) {
  KVXMLDocument document;
  document.KeepFaults(true);
  KVXMLNode* root = document.LoadFromFile(definitionFile);
  return Check(document, root, definitionFile.Left(definitionFile.ReverseFind(_T('\\')) + 1));
}

MachineCheckResult CheckMachineText(std::string_view definition, const CString& folder) {
  KVXMLDocument document;
  document.KeepFaults(true);
  KVXMLNode* root = document.LoadFromMemory(definition);
  return Check(document, root, folder);
}
