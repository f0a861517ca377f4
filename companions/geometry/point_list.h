// AFR_Lin_List, the linked list of positions in which a polyline is handed over. The list owns its positions; positions
// stay where they are in memory until the list dies.
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
  // Puts the position at the end.
  void append(const FRPosition& position) { points_.push_back(position); }

 private:
  std::list<FRPosition> points_;
};
