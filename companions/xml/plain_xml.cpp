#include "companions/xml/plain_xml.h"

#include <array>
#include <cstddef>
#include <cstring>

namespace kvxml {
namespace {

enum Class : unsigned char { kBlank = 1, kOpensName = 2, kName = 4, kValue = 8 };

// The kinds of bytes. The NUL behind the text is of none, so that it ends every run. A line break or tab in a value
// would have to become a blank and an entity its character: both are the full parser's, as is a value with a quote.
constexpr std::array<unsigned char, 256> kClasses = [] {
  std::array<unsigned char, 256> classes = {};
  for (std::size_t c = 1; c < classes.size(); ++c) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    const bool digit = (c >= '0' && c <= '9') || c == '-' || c == '.';
    const bool blank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
    if (blank) classes[c] |= kBlank;
    if (letter) classes[c] |= kOpensName | kName;
    if (digit) classes[c] |= kName;
    if (c >= ' ' && c != '&' && c != '<' && c != '"' && c != '\'') classes[c] |= kValue;
  }
  return classes;
}();

bool Is(char c, Class wanted) { return kClasses[static_cast<unsigned char>(c)] & wanted; }

// A definition has an element in about so many bytes, and an attribute.
constexpr std::size_t kBytesPerElement = 40;
constexpr std::size_t kBytesPerAttribute = 18;

class PlainReader {
 public:
  PlainReader(std::string_view text, KVXMLTree& tree)
      : begin_(text.data()), at_(begin_), end_(begin_ + text.size()), tree_(tree) {}

  bool Read() {
    if (Opens("<?xml ") && !SkipBehind("?>")) return false;
    for (;;) {
      SkipBlanks();
      if (at_ == end_) return open_ == KVXMLTree::kNone && !tree_.elements.empty();
      if (*at_ != '<' || !ReadMarkup()) return false;
    }
  }

 private:
  bool ReadMarkup() {
    if (at_[1] == '/') return ReadEndTag();
    if (at_[1] == '!') return ReadComment();
    return ReadStartTag();
  }

  bool ReadStartTag() {
    if (open_ == KVXMLTree::kNone && !tree_.elements.empty()) return false;  // a second root
    ++at_;
    const auto first = std::uint32_t(tree_.attributes.size());
    const auto index = std::uint32_t(tree_.elements.size());
    KVXMLTree::Element& element = tree_.elements.emplace_back();
    if (!ReadName(element.name)) return false;
    for (bool blank = SkipBlanks(); *at_ != '>' && *at_ != '/'; blank = SkipBlanks()) {
      if (!blank || !ReadAttribute()) return false;
    }
    element.parent = open_;
    element.attributes = first;
    element.attributesEnd = std::uint32_t(tree_.attributes.size());
    element.end = index + 1;
    if (*at_++ == '>') {
      open_ = index;
      return true;
    }
    return *at_++ == '>';
  }

  bool ReadEndTag() {
    if (open_ == KVXMLTree::kNone) return false;
    KVXMLTree::Element& element = tree_.elements[open_];
    const std::string_view name(begin_ + element.name.begin, element.name.size);
    at_ += 2;
    if (!Opens(name)) return false;
    at_ += name.size();
    SkipBlanks();
    element.end = std::uint32_t(tree_.elements.size());
    open_ = element.parent;
    return *at_++ == '>';
  }

  bool ReadAttribute() {
    KVXMLTree::Attribute attribute;
    if (!ReadName(attribute.name)) return false;
    SkipBlanks();
    if (*at_++ != '=') return false;
    SkipBlanks();
    const char quote = *at_++;
    if (quote != '"' && quote != '\'') return false;
    const char* const value = at_;
    while (Is(*at_, kValue)) ++at_;
    if (*at_ != quote) return false;
    attribute.value = PieceFrom(value);
    ++at_;
    tree_.attributes.push_back(attribute);
    return true;
  }

  bool ReadName(KVXMLTree::Piece& name) {
    const char* const start = at_;
    if (!Is(*at_, kOpensName)) return false;
    while (Is(*at_, kName)) ++at_;
    name = PieceFrom(start);
    return true;
  }

  bool ReadComment() {
    if (!Opens("<!--")) return false;
    at_ += 4;
    return SkipBehind("-->");
  }

  bool SkipBehind(std::string_view close) {
    const std::string_view rest(at_, std::size_t(end_ - at_));
    const std::size_t found = rest.find(close);
    if (found == rest.npos || std::memchr(at_, 0, found)) return false;
    at_ += found + close.size();
    return true;
  }

  bool SkipBlanks() {
    const char* const start = at_;
    while (Is(*at_, kBlank)) ++at_;
    return at_ != start;
  }

  bool Opens(std::string_view wanted) const {
    return std::size_t(end_ - at_) >= wanted.size() && std::memcmp(at_, wanted.data(), wanted.size()) == 0;
  }

  KVXMLTree::Piece PieceFrom(const char* start) const {
    return {std::uint32_t(start - begin_), std::uint32_t(at_ - start)};
  }

  const char* const begin_;
  const char* at_;
  const char* const end_;
  KVXMLTree& tree_;
  std::uint32_t open_ = KVXMLTree::kNone;  // the innermost element that is not closed yet
};

}  // namespace

bool ReadPlain(std::string_view text, KVXMLTree& tree) {
  tree.Clear();
  tree.text = text.data();
  tree.elements.reserve(text.size() / kBytesPerElement);
  tree.attributes.reserve(text.size() / kBytesPerAttribute);
  if (PlainReader(text, tree).Read()) return true;
  tree.Clear();
  return false;
}

}  // namespace kvxml
