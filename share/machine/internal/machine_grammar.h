// The grammar of a machine definition as one table: the elements with their children and attributes, the kind of each
// attribute, and what it sets. The reader executes the table; the check uses it to look up known names.
//
// The reader applies the attributes of TARGET in the order of their rows, whatever their order in the file is, because
// the first two decide the meaning of the others. All other attributes are independent of each other.
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

// The attributes of a shape list.
struct ListAttributes {
  int num = 0;
  CM_AXIS_TYPE axis = CM_AXIS_Z;
  int channel = 0;
  int fixture = 0;
  std::string_view list;
};

// Converts the text of an attribute that usually has the same value as in the previous shape, so that consecutive
// shapes share one CString.
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

// The state of the reader, used by the functions of the table.
struct Reading {
  Reading(KVVMMachine& target, const CString& machineFolder) : machine(target), folder(machineFolder) {}

  KVVMMachine& machine;
  const CString& folder;
  CQVMChannel* channel = nullptr;  // owned by the machine
  CQVMToolNode* tool = nullptr;    // owned by the channel
  std::unique_ptr<CQVMShape> shape;
  ListAttributes list;
  bool fixtureMode = false;
  int fixture = 0;
  int channelsLeft = kMachineMostChannels;
  int toolsLeft = kMachineMostTools;
  int shapesLeft = kMachineMostShapes;
  int repeatsLeft = kMachineMostRepeatedIds;
  RepeatedText parent;
  RepeatedText metallic;
};

struct TextVersion {};  // ignored
struct Flag {
  int value;
};
struct Colour {
  int red, green, blue;
};
// The value of TYPE: a tool target, or "Fixture", which switches the target to fixture mode.
struct TargetType {
  bool fixture;
  MDTurretType target;
};
struct IdList {
  std::string_view text;
};

// The function of an attribute; the type of its second parameter is the kind of the attribute.
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
  bool (*begin)(Reading&) = nullptr;  // called before the attributes are set; false skips the element
  void (*end)(Reading&) = nullptr;    // called after the children
  bool tableOrder = false;            // attributes are applied in the order of their rows, else in file order
};

inline constexpr std::size_t kMostAttributesOfElement = 32;
inline constexpr std::string_view kFixtureType = "Fixture";
inline constexpr std::string_view kTrue = "TRUE";

// The rule of the root element, which may have any name.
const Element& RootElement();
// The rule of the child with that name; null if it is unknown.
const Element* FindChild(const Element& parent, std::string_view name);
// The row of the attribute with that name; null if it is unknown.
const Attribute* FindAttribute(const Element& element, std::string_view name);

// The unit vector of a direction; (0, 0, 0) for CM_DIR_NONE.
FRVector UnitVectorOf(CMDirType direction);
// Calls take(item, repeated) for up to num items of a LIST, until it returns false. If num is above the number of
// items, the last item is repeated with repeated true, unless the text ends with a comma.
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
      last = comma == std::string_view::npos || comma == 0;  // a comma at the start of the text separates nothing
      if (!last) {
        item = rest.substr(0, comma);
        rest = rest.substr(comma + 1);
      }
    }
    if (!take(item, repeated)) return;
  }
}

}  // namespace kvmachine
