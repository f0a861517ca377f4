// AFR_Lin_List, the linked list of positions that represents a polyline. The list owns its positions. A position keeps
// its address until the list is destroyed.
#pragma once

#include <list>

#include "companions/geometry/vectors.h"

class KVSHARE_API AFR_Lin_List {
 public:
  using iterator = std::list<FRPosition>::iterator;
  using const_iterator = std::list<FRPosition>::const_iterator;

  iterator begin() { return points_.begin(); }
  iterator end() { return points_.end(); }
  const_iterator begin() const { return points_.begin(); }
  const_iterator end() const { return points_.end(); }
  // Appends a copy of the position.
  void append(const FRPosition& position) { points_.push_back(position); }

 private:
  std::list<FRPosition> points_;
};
