// Checks a loaded document for wrong ids, states and counts. The loader has repaired the links between nodes already.
#pragma once

#include "host/document/document_loader.h"

namespace kestrova {

enum class CheckMode {
  kReport,  // changes nothing
  // Also repairs: a new id for a missing or repeated one, the state active for an invalid one, an entry in the indexer
  // for every node, correct counts.
  kRepair,
};

// Appends the faults to the report of the document's load, which also has the indexer's stored counts. The document
// must be the active one. After kRepair a second check finds nothing.
void CheckDocument(HostDocument& document, CheckMode mode, LoadReport& report);

}  // namespace kestrova
