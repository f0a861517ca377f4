// Colours of a machine's shapes by what carries them in the shape lists.
#pragma once

#include <map>

#include "host/pictures/picture.h"

class CQVMShape;
class KVVMMachine;

namespace kestrova {

// 0x00BBGGRR of the definition's red, green and blue, each cut to 0 to 255.
DWORD OwnColor(const CQVMShape& shape);

class ShapeListColors {
 public:
  explicit ShapeListColors(KVVMMachine& machine);

  // The colour of the first list that has the shape; its own, and a row of the legend for all such shapes, without one.
  DWORD ColorOf(const CQVMShape& shape);
  // A row for each colour that ColorOf has returned: tools, fixtures, the rest.
  std::vector<LegendRow> Legend() const;

 private:
  struct Group {
    LegendRow row;
    bool used = false;
  };

  void Add(const LegendRow& row, const int* ids, int count);

  std::vector<Group> groups_;
  std::map<int, std::size_t> group_of_;  // by the shape's ID
  Group fixed_;
};

}  // namespace kestrova
