// A document as people and programs read it: its tree, written node after node.
#pragma once

#include <cstdio>

namespace kestrova {

class HostDocument;

// The document in a line, then each node in one, below its owner: class, id, label, state, facts, stamps. The document
// is the active one.
void WriteTree(const HostDocument& document, std::FILE* out);

// The same as one JSON object: title, units, storage version, and the nodes in the tree's order, each with its owner's
// id. UTF-8; one node a line.
void WriteTreeJson(const HostDocument& document, std::FILE* out);

}  // namespace kestrova
