// The short way through XML that programs and careful authors write: elements, attributes without entities, comments
// and blanks. Nothing is copied and the text stays as it is; whatever is not plain, be it valid or not, is left to the
// full parser, which then sees the text untouched.
#pragma once

#include <string_view>

#include "companions/xml/xml_tree.h"

namespace kvxml {

// Fills the tree and gives true if the text, UTF-8, is one well-formed element in plain form; otherwise false, and the
// tree is empty. A NUL must stand behind the text, which is shorter than 4 GiB. Depth costs no stack.
bool ReadPlain(std::string_view text, KVXMLTree& tree);

}  // namespace kvxml
