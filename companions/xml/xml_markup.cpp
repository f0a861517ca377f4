// Up to its first error, the parser finds the same pieces as this pass, so the depth is exact for a document that it
// accepts, and no malformed document gets deeper than counted.
#include "companions/xml/internal/xml_markup.h"

#include <algorithm>

namespace kvxml {
namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::string_view kComment = "<!--", kCData = "<![CDATA[", kInstruction = "<?", kSection = "<![";

// The offset after the next such text, searched from `at` on; kNone if there is none.
std::size_t After(std::string_view document, std::string_view wanted, std::size_t at) {
  const std::size_t found = document.find(wanted, at);
  return found == kNone ? kNone : found + wanted.size();
}

// A quoted value may contain ">".
std::size_t TagEnd(std::string_view document, std::size_t at) {
  const char* const end = document.data() + document.size();
  for (const char* to = document.data() + at; to != end; ++to) {
    while (to != end && *to != '>' && *to != '"' && *to != '\'') ++to;
    if (to == end) break;
    if (*to == '>') return std::size_t(to - document.data()) + 1;
    for (const char quote = *to++; to != end && *to != quote;) ++to;  // values are short
    if (to == end) break;
  }
  return kNone;
}

// Whether there are more than that many "<".
bool HasMoreTags(std::string_view document, std::size_t count) {
  std::size_t at = document.find('<');
  for (; at != kNone && count > 0; --count) at = document.find('<', at + 1);
  return at != kNone;
}

// A section of a document type may contain further sections.
std::size_t SectionEnd(std::string_view document, std::size_t at) {
  for (std::size_t depth = 0; at < document.size();) {
    const std::string_view rest = document.substr(at);
    if (rest.starts_with(kSection)) {
      ++depth;
      at += kSection.size();
    } else if (rest.starts_with("]]>")) {
      at += 3;
      if (--depth == 0) return at;
    } else {
      ++at;
    }
  }
  return kNone;
}

// A document type has declarations, which are inside each other or in brackets.
std::size_t DocumentTypeEnd(std::string_view document, std::size_t at) {
  std::size_t depth = 0;
  while (at < document.size()) {
    const std::string_view rest = document.substr(at);
    const char c = rest.front();
    if (c == '>') {
      ++at;
      if (--depth == 0) return at;
    } else if (c == '"' || c == '\'') {
      at = After(document, {&c, 1}, at + 1);
    } else if (rest.starts_with(kComment)) {
      at = After(document, "-->", at + kComment.size());
    } else if (rest.starts_with(kInstruction)) {
      at = After(document, "?>", at + kInstruction.size());
    } else if (rest.starts_with(kSection)) {
      at = SectionEnd(document, at);
    } else {
      if (rest.starts_with("<!")) ++depth;
      ++at;
    }
  }
  return kNone;
}

}  // namespace

bool Pieces::Next(Piece& piece) {
  const std::string_view rest = document_.substr(at_);
  if (rest.empty()) return false;
  std::size_t end = 0;
  piece = {Piece::Kind::kOther, at_, {}};
  if (rest.front() != '<') {
    piece.kind = Piece::Kind::kText;
    end = std::min(document_.find('<', at_), document_.size());
  } else if (rest.size() < 2 || (rest[1] != '!' && rest[1] != '?')) {
    end = TagEnd(document_, at_);
    if (end == kNone) return false;
    piece.kind = rest[1] == '/'              ? Piece::Kind::kEndTag
                 : document_[end - 2] == '/' ? Piece::Kind::kEmptyTag
                                             : Piece::Kind::kStartTag;
  } else if (rest.starts_with(kComment)) {
    end = After(document_, "-->", at_ + kComment.size());
  } else if (rest.starts_with(kCData)) {
    piece.kind = Piece::Kind::kCData;
    end = After(document_, "]]>", at_ + kCData.size());
  } else if (rest.starts_with(kInstruction)) {
    end = After(document_, "?>", at_ + kInstruction.size());
  } else {
    end = DocumentTypeEnd(document_, at_);
  }
  if (end == kNone) return false;
  piece.text = document_.substr(at_, end - at_);
  at_ = end;
  return true;
}

std::size_t FindDeeper(std::string_view document, std::size_t depth) {
  if (!HasMoreTags(document, depth)) return kNone;
  std::size_t open = 0;
  Piece piece;
  for (Pieces pieces(document); pieces.Next(piece);) {
    const bool start = piece.kind == Piece::Kind::kStartTag;
    if (open >= depth && (start || piece.kind == Piece::Kind::kEmptyTag)) return piece.at + 1;
    if (start) ++open;
    if (piece.kind == Piece::Kind::kEndTag && open > 0) --open;
  }
  return kNone;
}

}  // namespace kvxml
