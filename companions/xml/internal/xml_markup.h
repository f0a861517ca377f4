// One pass over a document's text that needs no tree: where markup begins and ends, how deep elements are, and what XML
// forbids although the parser accepts it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kvxml {

// A piece of a document: one markup, or the text between two of them.
struct Piece {
  enum class Kind { kText, kStartTag, kEmptyTag, kEndTag, kCData, kOther };

  Kind kind = Kind::kText;
  std::size_t at = 0;     // offset in the document
  std::string_view text;  // with < and >
};

class Pieces {
 public:
  // The document ends at the first NUL, as it does for the parser. There is a NUL after it.
  explicit Pieces(std::string_view document) : document_(document.substr(0, document.find('\0'))) {}
  // Returns false at the end and at markup without an end, which the parser refuses.
  bool Next(Piece& piece);
  // The same for the next markup; texts are skipped.
  bool NextMarkup(Piece& piece);

 private:
  bool NextOther(Piece& piece);  // markup that is no tag

  std::string_view document_;
  std::size_t at_ = 0;
};

// Something that XML forbids and the parser accepts, at an offset in the document.
struct Fault {
  std::size_t byte = 0;
  std::string reason;
};

// The first element that is inside more than `depth` others, itself counted, or that follows `elements` others. Neither
// is above the other limit.
std::optional<Fault> FindExcess(std::string_view document, std::size_t depth, std::size_t elements);

// Finds text outside the root element, references to unknown entities and to what is no character, "<" in values, "--"
// in comments, control characters and bytes that are not UTF-8. Returns at most that many, by offset.
std::vector<Fault> FindFaults(std::string_view document, std::size_t most);

}  // namespace kvxml
