// The grammar of a machine definition as one table: which elements stand where, which attributes they have, of which
// kind these are and what each sets. The reader runs it; the check asks it what is known.
//
// Inside this folder only. Rows of attributes stand in the order in which the reader applies them, whatever their order
// in the file: the first two of TARGET decide what the later ones mean.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "framework/text.h"
#include "share/machine/channel.h"
#include "share/machine/machine_nodes.h"
#include "share/machine/machine_reader.h"
#include "share/machine/machine_types.h"

class KVVMMachine;

namespace kvmachine {

// A shape list while its attributes are read.
struct ListInReading {
  int num = 0;
  CM_AXIS_TYPE axis = CM_AXIS_Z;
  int channel = 0;
  int fixture = 0;
  std::string_view list;
};

// The text of an attribute whose value mostly is that of the shape before: neighbours share one text.
class RepeatedText {
 public:
  const CString& From(std::string_view utf8) {
    if (utf8_ != utf8) {
      utf8_ = utf8;
      text_ = FromUtf8(utf8);
    }
    return text_;
  }

 private:
  std::string utf8_;
  CString text_;
};

// Where the reader stands: what the table's functions work on.
struct Reading {
  Reading(KVVMMachine& filled, const CString& machineFolder) : machine(filled), folder(machineFolder) {}

  KVVMMachine& machine;
  const CString& folder;
  CQVMChannel* channel = nullptr;  // owned by the machine
  CQVMToolNode* tool = nullptr;    // owned by the channel
  std::unique_ptr<CQVMShape> shape;
  ListInReading list;
  bool fixtureMode = false;
  int fixture = 0;
  int channelsLeft = kMachineMostChannels;
  int toolsLeft = kMachineMostTools;
  int shapesLeft = kMachineMostShapes;
  int repeatsLeft = kMachineMostRepeatedIds;
  RepeatedText parent;
  RepeatedText metallic;
};

struct TextVersion {};  // read and ignored
struct Flag {
  int value;
};
struct Colour {
  int red, green, blue;
};
// The value of TYPE: a tool target, or the word that switches the target to fixture mode.
struct TargetType {
  bool fixture;
  MDTurretType target;
};
struct IdList {
  std::string_view text;
};

// What an attribute sets; the type of the second parameter is the kind of the attribute.
template <class Value>
using Set = void (*)(Reading&, Value);
using Effect =
    std::variant<Set<TextVersion>, Set<std::string_view>, Set<int>, Set<double>, Set<Flag>, Set<const FRVector&>,
                 Set<Colour>, Set<TargetType>, Set<CMDirType>, Set<CMParentType>, Set<CM_AXIS_TYPE>, Set<IdList>>;

struct Attribute {
  std::string_view name;
  Effect set;
};

struct Element {
  std::string_view name;  // compared without case
  std::span<const Attribute> attributes;
  std::span<const Element> children;
  bool (*begin)(Reading&) = nullptr;  // ahead of the attributes; false skips the element
  void (*end)(Reading&) = nullptr;    // behind the children
};

inline constexpr std::size_t kMostAttributesOfElement = 32;
inline constexpr std::string_view kFixtureType = "Fixture";
inline constexpr std::string_view kTrue = "TRUE";

// The root, whose own name does not count.
const Element& RootElement();
// The child of that name that the element knows, or null.
const Element* FindChild(const Element& parent, std::string_view name);
// The attribute of that name that the element knows, or null.
const Attribute* FindAttribute(const Element& element, std::string_view name);

// The unit vector of a direction; (0, 0, 0) for none.
FRVector UnitVectorOf(CMDirType direction);
// Walks the items of a LIST as the reader does and hands each one's text to take, num of them at most, until take gives
// false. A num above the number of items hands out the last item again and again, unless the text ends in a comma.
// repeated is true for those.
template <class Take>
void ForEachListItem(std::string_view list, int num, Take take) {
  std::string_view item;
  std::string_view rest = list;
  bool last = false;
  for (; num >= 1 && !rest.empty(); --num) {
    const bool repeated = last;
    if (!last) {
      item = rest;
      const std::size_t comma = rest.find(',');
      last = comma == std::string_view::npos || comma == 0;  // a comma that opens the text parts nothing
      if (!last) {
        item = rest.substr(0, comma);
        rest = rest.substr(comma + 1);
      }
    }
    if (!take(item, repeated)) return;
  }
}

}  // namespace kvmachine
