// What is wrong with the registry's files, in the words of a command.
#pragma once

#include "platform/registry.h"

namespace kestrova {

// Throw Failure if a hive's file is damaged anywhere. A command that writes what it has read calls one of them first:
// damage can hide rows. CheckWhole, for one hive, also throws NotFound if there is no file.
void CheckWhole(HKEY hive);
void CheckWholeRegistry();

// Reports what the library met since the last call, while it read and saved settings and went on with defaults. Damage
// throws Failure. Another reason for which stored values could not be read is a line on stderr, or throws Failure if
// the command needs them all; so is, for the user's hive, a reason for which nothing could be saved.
enum class Needs {
  kNoReport,  // the command looks for such faults itself
  kDefaultsSuffice,
  kAllStoredValues,
};
void ReportRegistry(Needs needs);

}  // namespace kestrova
