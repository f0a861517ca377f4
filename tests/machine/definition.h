// What the tests of this folder share: a machine from the text of a definition, and its export.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "share/machine/machine.h"

namespace kvtest {

// Loads the children of a root element; fails the running test if they are no XML.
inline void Load(KVVMMachine& machine, const std::string& children) {
  ASSERT_EQ(machine.LoadFromMemory(VM_MACHINE_MILL, _T("VMC"), _T("C:\\M"), "<ROOT>" + children + "</ROOT>"), 1)
      << machine.GetLoadFailure().xml.reason << "\n"
      << children;
}

// The channel of a definition that holds one CHANNEL with the given content, read into the machine.
inline CQVMChannel& LoadChannel(KVVMMachine& machine, const std::string& content) {
  Load(machine, "<CHANNELS NUM='1'><CHANNEL ID='1' NAME='Main'>" + content + "</CHANNEL></CHANNELS>");
  return *machine.GetChannel(1);
}

inline CQVMShape& LoadShape(KVVMMachine& machine, const std::string& attributes, const std::string& content = "") {
  Load(machine, "<SHAPES NUM='1'><SHAPE " + attributes + ">" + content + "</SHAPE></SHAPES>");
  return *machine.GetFirstShape();
}

// The export of a definition; empty if there is none.
inline std::string ExportOf(const std::string& children) {
  KVVMMachine machine;
  Load(machine, children);
  std::string text;
  machine.ExportText(text);
  return text;
}

}  // namespace kvtest
