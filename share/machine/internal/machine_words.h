// What people read about the elements and attributes of a machine definition: the annotations of the XML schema and the
// tables of the guide.
#pragma once

#include <limits>
#include <string_view>

namespace kvmachine {

struct ElementWords {
  std::string_view element;
  std::string_view meaning;  // one sentence or more
};

// The range of an integer, both ends included.
struct IntegerRange {
  int least = std::numeric_limits<int>::min();
  int most = std::numeric_limits<int>::max();

  bool IsWhole() const { return least == IntegerRange().least && most == IntegerRange().most; }
};

enum class Unit { kNone, kLength, kAngle };

struct AttributeWords {
  std::string_view element;
  std::string_view attribute;
  std::string_view meaning;
  std::string_view absent;  // the value that the model has without the attribute; empty: an empty text
  Unit unit = Unit::kNone;
  bool required = false;  // the schema requires it, because without it something is lost
  IntegerRange range = {};
};

// The words of an element or attribute; null if it has none. The root element has the name kRootName.
inline constexpr std::string_view kRootName = "KESTROVAAPT";
const ElementWords* WordsOf(std::string_view element);
const AttributeWords* WordsOf(std::string_view element, std::string_view attribute);

}  // namespace kvmachine
