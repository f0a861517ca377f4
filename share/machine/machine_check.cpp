#include "share/machine/machine_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
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

// Walks a definition with the reader's table. It stores what is needed to check later elements against earlier ones.
class Checker {
 public:
  Checker(const KVXMLDocument& document, const CString& folder, MachineCheckResult& result)
      : document_(document), folder_(folder), findings_(result) {}

  void Run(KVXMLElement root) {
    Walk(RootElement(), root);
    CheckChannels();
    CheckShapes();
    CheckLists();
  }

 private:
  struct Declared {
    bool given = false;
    int count = 0;
    KVXMLPlace place;
  };
  struct Channel {
    int number = 1;
    KVXMLPlace place;
    int toolTargets = 0;
    int stations = 0;
    bool turret = false;
    std::set<int> positions;
    bool fixture[CQVMChannel::kFixtures] = {};
    KVXMLPlace fixturePlace[CQVMChannel::kFixtures];
  };
  struct ListedId {
    int id;
    KVXMLPlace place;
  };
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

  static std::string Where(const Element& rule) { return rule.name.empty() ? "here" : fmt::format("in {}", rule.name); }

  void CheckAttributes(const Element& rule, KVXMLElement element) {
    std::unordered_set<std::string_view> seen;
    for (KVXMLAttribute at = element.FirstAttribute(); at; at = at.Next()) {
      const KVXMLPlace place = document_.PlaceOf(at);
      if (!seen.insert(at.Name()).second) {
        findings_.Error(place, fmt::format("attribute {} occurs twice: the first one is used", Quoted(at.Name())));
      } else if (const Attribute* row = FindAttribute(rule, at.Name())) {
        CheckValue(*row, at.Value(), document_.PlaceOfValue(at), findings_);
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
    if (!Find(element, "NUM")) {
      if (declared.given) return;
      findings_.Error(document_.PlaceOf(element),
                      fmt::format("without NUM the {} count of the machine loaded before remains, or 0", what));
      return;
    }
    declared = {true, IntegerOf(element, "NUM", 0), PlaceOf(element, "NUM")};
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
    if (++channel.toolTargets > 1) {
      findings_.Warn(document_.PlaceOf(element), "a second tool target of one channel overwrites the first");
    }
    MDTurretType target = MD_TURRET_NONE;
    if (type) ReadText(type.Value(), target);
    channel.turret = target == MD_TURRET;
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
    }
    if (!channel.turret || channel.positions.empty()) return;
    if (channel.stations > 0 && *channel.positions.begin() == 1 && *channel.positions.rbegin() == channel.stations &&
        channel.positions.size() == std::size_t(channel.stations)) {
      return;
    }
    findings_.Error(channel.place, fmt::format("the turret has {} stations, but TOOL elements for {} (from {} to {})",
                                               channel.stations, channel.positions.size(), *channel.positions.begin(),
                                               *channel.positions.rbegin()));
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
    if (const KVXMLAttribute name = Find(element, "NAME")) shapeNames_.insert(name.Value());
    if (const KVXMLAttribute parent = Find(element, "PARENT"); parent && !parent.Value().empty())
      parents_.push_back(parent);
    CheckGeometry(element);
  }

  void CheckGeometry(KVXMLElement element) {
    const KVXMLAttribute path = Find(element, "PATH");
    if (!path || path.Value().empty()) {
      findings_.Error(PlaceOf(element, "PATH"), "SHAPE without a geometry file: its PATH is the machine's folder");
      return;
    }
    if (folder_.IsEmpty()) return;
    const CString file = folder_ + FromUtf8(path.Value());
    const DWORD attributes = GetFileAttributesW(file);
    const KVXMLPlace place = document_.PlaceOfValue(path);
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
      findings_.Error(place, fmt::format("geometry file {} does not exist", Quoted(path.Value())));
      return;
    }
    std::string written(path.Value());
    std::replace(written.begin(), written.end(), '\\', '/');
    const std::string found = SystemPathFromProduct(file);
    if (found.ends_with(written)) return;
    const std::string name = found.substr(found.find_last_of('/') + 1);
    findings_.Note(place, fmt::format("geometry file {} exists as {}: upper and lower case differ",
                                      Quoted(path.Value()), Quoted(name)));
  }

  void CheckShapes() {
    if (declaredShapes_.given && declaredShapes_.count != shapes_) {
      const std::string text = fmt::format("SHAPES declares {} and contains {}", declaredShapes_.count, shapes_);
      declaredShapes_.count == 0 ? findings_.Error(declaredShapes_.place, text + ": nothing is exported")
                                 : findings_.Warn(declaredShapes_.place, text);
    }
    for (const KVXMLAttribute parent : parents_) {
      if (shapeNames_.contains(parent.Value())) continue;
      findings_.Warn(document_.PlaceOfValue(parent), fmt::format("parent {} is not a shape", Quoted(parent.Value())));
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
    std::set<int> seen;
    ForEachListItem(text, num, [&](std::string_view item, bool repeated) {
      if (repeated) {
        repeats = true;
        return false;
      }
      ++taken;
      CheckItem(item, place, seen);
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

  void CheckItem(std::string_view item, KVXMLPlace place, std::set<int>& seen) {
    NumberNotes notes;
    const int id = ReadInteger(item, &notes);
    if (notes.none || notes.trailing) {
      findings_.Error(place, fmt::format("item {} of LIST is read as {}", Quoted(item), id));
    }
    if (!seen.insert(id).second) findings_.Warn(place, fmt::format("shape {} occurs twice in LIST", id));
    listed_.push_back({id, place});
  }

  void CheckLists() {
    for (const ListedId& listed : listed_) {
      if (!shapeIds_.contains(listed.id)) {
        findings_.Error(listed.place, fmt::format("LIST names shape {}, which does not exist", listed.id));
      }
    }
    if (tables_ > 0 && rows_ > 0 && rows_ < int(channels_.size())) {
      findings_.Error(channels_[std::size_t(rows_)].place, "channels after SHAPELISTS have no row in the shape table");
    }
  }

  const KVXMLDocument& document_;
  const CString& folder_;
  Findings findings_;
  Declared declaredChannels_;
  Declared declaredShapes_;
  std::vector<Channel> channels_;
  int shapes_ = 0;
  bool tooMuch_ = false;
  std::unordered_map<int, KVXMLPlace> shapeIds_;
  std::unordered_set<std::string_view> shapeNames_;
  std::vector<KVXMLAttribute> parents_;
  int tables_ = 0;
  int rows_ = 0;
  std::map<Slot, KVXMLPlace> slots_;
  std::vector<ListedId> listed_;
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
  KVXMLNode* root = document.LoadFromFile(definitionFile);
  return Check(document, root, definitionFile.Left(definitionFile.ReverseFind(_T('\\')) + 1));
}

MachineCheckResult CheckMachineText(std::string_view definition, const CString& folder) {
  KVXMLDocument document;
  KVXMLNode* root = document.LoadFromMemory(definition);
  return Check(document, root, folder);
}
