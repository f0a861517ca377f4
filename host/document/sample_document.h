// A document to try things with: setups with their features and operations, tools that the operations use, and among
// them suppressed, recycled, locked and flagged nodes. The same seed gives the same document, on every system.
#pragma once

#include "platform/types.h"

namespace kestrova {

class HostDocument;

// Adopts exactly so many nodes into the document, which is the active one and empty.
void FillWithSample(HostDocument& document, DWORD nodes, ULONGLONG seed);

}  // namespace kestrova
