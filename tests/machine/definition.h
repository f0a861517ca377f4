// Shared by the tests of this folder: a machine from the text of a definition, and its export.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "share/machine/machine.h"

namespace kvtest {

// Loads the children of a root element; fails the test if they are not XML.
inline void Load(KVVMMachine& machine, const std::string& children) {
  ASSERT_EQ(machine.LoadFromMemory(VM_MACHINE_MILL, _T("VMC"), _T("C:\\M"), "<ROOT>" + children + "</ROOT>"), 1)
      << machine.GetLoadFailure().xml.reason << "\n"
      << children;
}

// Loads a definition with one CHANNEL of that content and returns the channel.
inline CQVMChannel& LoadChannel(KVVMMachine& machine, const std::string& content) {
  Load(machine, "<CHANNELS NUM='1'><CHANNEL ID='1' NAME='Main'>" + content + "</CHANNEL></CHANNELS>");
  return *machine.GetChannel(1);
}

inline CQVMShape& LoadShape(KVVMMachine& machine, const std::string& attributes, const std::string& content = "") {
  Load(machine, "<SHAPES NUM='1'><SHAPE " + attributes + ">" + content + "</SHAPE></SHAPES>");
  return *machine.GetFirstShape();
}

// The export of a definition; empty if nothing is exported.
inline std::string ExportOf(const std::string& children) {
  KVVMMachine machine;
  Load(machine, children);
  std::string text;
  machine.ExportText(text);
  return text;
}

}  // namespace kvtest
