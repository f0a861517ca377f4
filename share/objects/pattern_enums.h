// The enumerations of patterns that a node uses.
#pragma once

// The type of a pattern. Modules define all types but "none".
enum QFeObjectPatternType : int {
  eObjectPatternNone = 0,
};

// The status of one instance of a pattern.
enum QFeObjectPatternInstanceStatus : int {
  ePatternInstanceNone = 0,  // no such instance
  ePatternInstanceActive = 1,
  ePatternInstanceNotActive = 2,  // excluded by the user
};
