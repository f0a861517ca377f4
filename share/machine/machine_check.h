// The check of a machine definition. The reader skips or corrects errors silently; the check reports each with its
// place in the file.
//
// It uses the same table of elements and attributes as the reader, so both know the same names. A check changes
// nothing, needs no settings, and may run on any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "companions/xml/xml_document.h"
#include "framework/text.h"

class KVVMMachine;

enum class MachineFindingGrade {
  kNote,     // the machine is read as written
  kWarning,  // read, but maybe not as intended: a skipped name, a corrected number
  kError,    // a part is lost, replaced or never exported
};

struct MachineFinding {
  MachineFindingGrade grade = MachineFindingGrade::kNote;
  KVXMLPlace place;  // of the element, attribute or value
  std::string text;  // one line of UTF-8 for the user
};

struct KVSHARE_API MachineCheckResult {
  KVXMLFailure failure;                  // unless its kind is kNone, the file could not be read; then no findings
  std::vector<MachineFinding> findings;  // sorted by place; at most kMachineMostFindings
  bool more = false;                     // true if there were more findings

  // The number of findings with that grade.
  int Count(MachineFindingGrade grade) const;
};

inline constexpr std::size_t kMachineMostFindings = 10000;

// The word for a grade: "note", "warning" or "error".
KVSHARE_API const char* TextOf(MachineFindingGrade grade);

// The first text of a loaded machine that would break a line of its export, because it contains a control character
// such as a line end; empty without one. For the user: "NAME of shape 3 contains the control character U+000A".
KVSHARE_API std::string FindForgedLine(const KVVMMachine& machine);

// Checks a definition file; the path is in the product's form. Geometry files are searched in the folder of the file.
KVSHARE_API MachineCheckResult CheckMachineFile(const CString& definitionFile);
// Checks the text of a definition. Geometry files are searched in folder, which ends with a backslash. If folder is
// empty, geometry files are not checked.
KVSHARE_API MachineCheckResult CheckMachineText(std::string_view definition, const CString& folder);
