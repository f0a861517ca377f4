// The kinds and instances of patterns, as far as a node speaks of them.
#pragma once

// Which kind of pattern. All kinds but none belong to the modules.
enum QFeObjectPatternType : int {
  eObjectPatternNone = 0,
};

// What stands at one place of a pattern.
enum QFeObjectPatternInstanceStatus : int {
  ePatternInstanceNone = 0,  // there is no such instance
  ePatternInstanceActive = 1,
  ePatternInstanceNotActive = 2,  // the user has left it out
};
