// The XML schema of machine definitions, and the check of a definition by it. Both come from the reader's table of
// elements and attributes, so they know the same names.
//
// The schema is about the form: names in capitals, required attributes, numbers and words. It is stricter than the
// reader, so that an editor can complete and check while a person types. machine_check.h is about the meaning: counts,
// references, files. A definition without findings of both is read as it is written.
#pragma once

#include <string>
#include <string_view>

#include "framework/text.h"
#include "share/machine/machine_check.h"

// The name of the schema's file, in the folder that has the folders Mill, Turn and MillTurn.
inline constexpr std::string_view kMachineSchemaFile = "kestrova-apt.xsd";

// The schema as a document in the language of XML Schema 1.0, UTF-8 with LF.
KVSHARE_API std::string MachineSchema();

// Checks a definition by the schema; all findings are errors. It agrees with a validator of XML Schema on whether there
// is a fault, and gives the line and column of each. The path is in the product's form. Any thread may call.
KVSHARE_API MachineCheckResult CheckMachineFileBySchema(const CString& definitionFile);
KVSHARE_API MachineCheckResult CheckMachineTextBySchema(std::string_view definition);
