// Writes the tree of a document for users and for programs.
#pragma once

#include <cstdio>

namespace kestrova {

class HostDocument;

// Writes one line for the document and one for each node, below its owner: class, id, label, state, facts, stamps. The
// document must be the active one.
void WriteTree(const HostDocument& document, std::FILE* out);

// Writes the same as one JSON object in UTF-8: title, units, storage version, and the nodes in the tree's order, one
// per line, each with its owner's id and its facts as fields.
void WriteTreeJson(const HostDocument& document, std::FILE* out);

}  // namespace kestrova
