// What a document can have wrong although all of it was read: ids, states, counts. Links between nodes are put right by
// the loader already.
#pragma once

#include "host/document/document_loader.h"

namespace kestrova {

enum class CheckMode {
  kLook,  // changes nothing
  kMend,  // puts right what is found: a new id for a node without one of its own, state active for one without a state,
          // an entry in the indexer for every node, true counts
};

// Adds what is found to the report of the document's load, with it the counts that the indexer had wrong. The document
// is the active one. After mending a second check finds nothing.
void CheckDocument(HostDocument& document, CheckMode mode, LoadReport& report);

}  // namespace kestrova
