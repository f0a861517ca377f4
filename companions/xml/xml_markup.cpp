// Up to its first error, the parser finds the same pieces as this pass, so the depth is exact for a document that it
// accepts, and no malformed document gets deeper than counted.
#include "companions/xml/internal/xml_markup.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

#include "framework/text.h"

namespace kvxml {
namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::string_view kComment = "<!--", kCData = "<![CDATA[", kInstruction = "<?", kSection = "<![";

// The offset after the next such text, searched from `at` on; kNone if there is none.
std::size_t After(std::string_view document, std::string_view wanted, std::size_t at) {
  const std::size_t found = document.find(wanted, at);
  return found == kNone ? kNone : found + wanted.size();
}

// The bytes at which the search for the end of a tag stops.
constexpr auto kTagStops = [] {
  std::array<bool, 256> stops = {};
  for (const char stop : {'>', '"', '\'', '\0'}) stops[BYTE(stop)] = true;
  return stops;
}();

// A quoted value may contain ">".
std::size_t TagEnd(std::string_view document, std::size_t at) {
  const char* const end = document.data() + document.size();
  for (const char* to = document.data() + at;; ++to) {
    while (!kTagStops[BYTE(*to)]) ++to;
    if (*to == '>') return std::size_t(to - document.data()) + 1;
    if (to == end) break;
    const char quote = *to++;
    to = static_cast<const char*>(std::memchr(to, quote, std::size_t(end - to)));
    if (!to) break;
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

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 && !IsBlank(c); }
bool IsReferenceEnd(char c) {
  const auto byte = static_cast<unsigned char>(c);
  const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || byte >= 0x80;
  return !plain && std::string_view("#_:-.").find(c) == kNone;
}

// XML's definition of a character.
bool IsCharacter(unsigned long c) {
  if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
  return (c < 0xD800 || c > 0xDFFF) && c != 0xFFFE && c != 0xFFFF && c <= 0x10FFFF;
}

// What is wrong with the reference that the text begins with, such as "&lt;" or "&#10;"; empty if it is right.
std::string ReferenceFault(std::string_view text) {
  constexpr std::size_t kMostShown = 40;
  const auto end = std::size_t(std::find_if(text.begin() + 1, text.end(), IsReferenceEnd) - text.begin());
  constexpr std::string_view kNoReference = "& begins no reference; write &amp;";
  if (end == 1 || end == text.size() || text[end] != ';') return std::string(kNoReference);
  const std::string_view name = text.substr(1, end - 1);
  std::string shown(name.substr(0, kMostShown));
  if (name.size() > kMostShown) shown += "...";
  if (name.front() != '#') {
    constexpr std::string_view kKnown[] = {"amp", "lt", "gt", "quot", "apos"};
    const bool known = std::ranges::find(kKnown, name) != std::end(kKnown);
    return known ? "" : "the entity &" + shown + "; is not defined and is kept as written";
  }
  const bool hexadecimal = name.starts_with("#x");
  const char* const last = name.data() + name.size();
  unsigned long character = 0;
  const auto [stop, error] =
      std::from_chars(name.data() + (hexadecimal ? 2 : 1), last, character, hexadecimal ? 16 : 10);
  if (stop != last || error == std::errc::invalid_argument) return std::string(kNoReference);
  if (error == std::errc() && IsCharacter(character)) return {};
  return "the reference &" + shown + "; is no character of XML";
}

// Collects the faults of one document.
class FaultSearch {
 public:
  FaultSearch(std::string_view document, std::size_t most) : document_(document), most_(most) {}

  std::vector<Fault> Run() {
    Piece piece;
    for (Pieces pieces(document_); pieces.Next(piece);) Look(piece);
    if (const std::size_t nul = document_.find('\0'); nul != kNone)
      Add(nul, "the text from the NUL character on is ignored");
    LookAtBytes();
    std::ranges::stable_sort(faults_, {}, &Fault::byte);
    return std::move(faults_);
  }

 private:
  void Add(std::size_t byte, std::string reason) {
    if (faults_.size() < most_) faults_.push_back({byte, std::move(reason)});
  }

  void Look(const Piece& piece) {
    using Kind = Piece::Kind;
    if (piece.kind == Kind::kText || piece.kind == Kind::kCData) return LookAtText(piece);
    if (piece.kind == Kind::kOther && piece.text.starts_with(kComment)) return LookAtComment(piece);
    if (piece.kind == Kind::kEndTag && open_ > 0) --open_;
    if (piece.kind != Kind::kStartTag && piece.kind != Kind::kEmptyTag) return;
    if (piece.kind == Kind::kStartTag) ++open_;
    for (std::size_t quote = piece.text.find_first_of("\"'"); quote != kNone;) {
      const std::size_t end = piece.text.find(piece.text[quote], quote + 1);
      LookAtReferences(piece.at + quote + 1, piece.text.substr(quote + 1, end - quote - 1), "&<");
      quote = piece.text.find_first_of("\"'", end + 1);
    }
  }

  void LookAtComment(const Piece& piece) {
    const std::size_t hyphens = piece.text.find("--", kComment.size());
    if (piece.text.substr(hyphens) != "-->") Add(piece.at + hyphens, "-- is inside a comment");
  }

  void LookAtText(const Piece& piece) {
    const std::size_t mark = piece.at == 0 && piece.text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
    const auto first = std::find_if_not(piece.text.begin() + mark, piece.text.end(), IsBlank);
    if (first == piece.text.end()) return;
    if (open_ == 0) Add(piece.at + std::size_t(first - piece.text.begin()), "text outside the root element is ignored");
    if (piece.kind == Piece::Kind::kText) LookAtReferences(piece.at, piece.text, "&");
  }

  void LookAtReferences(std::size_t begin, std::string_view text, const char* wanted) {
    for (std::size_t at = text.find_first_of(wanted); at != kNone; at = text.find_first_of(wanted, at + 1)) {
      std::string reason =
          text[at] == '<' ? "< is in the value of an attribute; write &lt;" : ReferenceFault(text.substr(at));
      if (!reason.empty()) Add(begin + at, std::move(reason));
    }
  }

  // One fault of each kind in a line is enough.
  void LookAtBytes() {
    for (std::size_t at = 0; at < document_.size();) {
      const std::string_view line = document_.substr(at, document_.find('\n', at) - at);
      if (const auto control = std::ranges::find_if(line, IsControl); control != line.end())
        Add(at + std::size_t(control - line.begin()), "a control character, which XML forbids");
      if (const std::string valid = ToUtf8(FromUtf8(line)); valid != line) {
        const auto bad = std::ranges::mismatch(line, valid).in1;
        Add(at + std::size_t(bad - line.begin()), "bytes that are not UTF-8 are read as U+FFFD");
      }
      at += line.size() + 1;
    }
  }

  std::string_view document_;
  std::size_t most_;
  std::size_t open_ = 0;
  std::vector<Fault> faults_;
};

}  // namespace

bool Pieces::Next(Piece& piece) {
  if (at_ == document_.size()) return false;
  if (document_[at_] == '<') return NextMarkup(piece);
  const std::size_t end = std::min(document_.find('<', at_), document_.size());
  piece = {Piece::Kind::kText, at_, document_.substr(at_, end - at_)};
  at_ = end;
  return true;
}

bool Pieces::NextMarkup(Piece& piece) {
  at_ = std::min(document_.find('<', at_), document_.size());
  if (at_ == document_.size()) return false;
  const char first = document_.data()[at_ + 1];  // NUL at the end
  if (first == '!' || first == '?') return NextOther(piece);
  const std::size_t end = TagEnd(document_, at_);
  if (end == kNone) return false;
  piece.kind = first == '/'                ? Piece::Kind::kEndTag
               : document_[end - 2] == '/' ? Piece::Kind::kEmptyTag
                                           : Piece::Kind::kStartTag;
  piece.at = at_;
  piece.text = {document_.data() + at_, end - at_};
  at_ = end;
  return true;
}

bool Pieces::NextOther(Piece& piece) {
  const std::string_view rest = document_.substr(at_);
  std::size_t end = 0;
  piece.kind = Piece::Kind::kOther;
  if (rest.starts_with(kComment)) {
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
  piece.at = at_;
  piece.text = rest.substr(0, end - at_);
  at_ = end;
  return true;
}

std::optional<Fault> FindExcess(std::string_view document, std::size_t depth, std::size_t elements) {
  if (!HasMoreTags(document, std::min(depth, elements))) return std::nullopt;
  std::size_t open = 0;
  std::size_t count = 0;
  Piece piece;
  for (Pieces pieces(document); pieces.NextMarkup(piece);) {
    if (piece.kind == Piece::Kind::kEndTag && open > 0) --open;
    const bool start = piece.kind == Piece::Kind::kStartTag;
    if (!start && piece.kind != Piece::Kind::kEmptyTag) continue;
    if (open >= depth)
      return Fault{piece.at + 1, "more than " + std::to_string(depth) + " elements are inside each other"};
    if (++count > elements) return Fault{piece.at + 1, "there are more than " + std::to_string(elements) + " elements"};
    if (start) ++open;
  }
  return std::nullopt;
}

std::vector<Fault> FindFaults(std::string_view document, std::size_t most) { return FaultSearch(document, most).Run(); }

}  // namespace kvxml
