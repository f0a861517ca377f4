// Fills a document with sample nodes: setups with features and operations, tools for the operations, some of them
// suppressed, recycled, locked or flagged. The same seed gives the same document on every system.
#pragma once

#include "platform/types.h"

namespace kestrova {

class HostDocument;

// Adds exactly `nodes` nodes. The document must be empty and the active one.
void FillWithSample(HostDocument& document, DWORD nodes, ULONGLONG seed);

}  // namespace kestrova
