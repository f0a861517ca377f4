// The check of a machine definition: what the forgiving reader passes over in silence, each with its place in the file.
//
// It reads the same table of elements and attributes as the reader, so that the two can't disagree on what is known. A
// check changes nothing, needs no settings, and may run on any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "companions/xml/xml_document.h"
#include "framework/text.h"

enum class MachineFindingGrade {
  kNote,     // worth knowing; the machine is read as written
  kWarning,  // read, but perhaps not as meant: skipped words, repaired numbers
  kError,    // something written is lost, replaced or never exported
};

struct MachineFinding {
  MachineFindingGrade grade = MachineFindingGrade::kNote;
  KVXMLPlace place;  // of the element, attribute or value
  std::string text;  // one line of UTF-8 for a human reader
};

struct KVSHARE_API MachineCheckResult {
  KVXMLFailure failure;                  // not kNone: the file could not be read, and there are no findings
  std::vector<MachineFinding> findings;  // in the order of their places; at most kMachineMostFindings
  bool more = false;                     // there were more

  // The number of findings of a grade.
  int Count(MachineFindingGrade grade) const;
};

inline constexpr std::size_t kMachineMostFindings = 10000;

// The word for a grade: "note", "warning" or "error".
KVSHARE_API const char* TextOf(MachineFindingGrade grade);

// Checks a definition file, named in the product's form. The geometry files that it names are looked for in its folder.
KVSHARE_API MachineCheckResult CheckMachineFile(const CString& definitionFile);
// Checks the text of a definition. Geometry files are looked for in folder, which ends in a backslash; with an empty
// one they are not looked for.
KVSHARE_API MachineCheckResult CheckMachineText(std::string_view definition, const CString& folder);
