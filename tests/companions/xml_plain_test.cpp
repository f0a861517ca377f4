// Plain XML is read without the full parser, and must be read the same. A processing instruction ahead of a text makes
// the full parser read it, one line further down.
#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>

#include "companions/xml/xml_document.h"

namespace {

constexpr int kSeed = 20;
constexpr int kTexts = 20000;

// What a document shows, with its lines counted from behind what stands ahead of the text.
struct Seen {
  const KVXMLDocument& document;
  int linesAhead;
  std::ostringstream out;

  void Place(KVXMLPlace place) { out << "@" << place.line - linesAhead << ":" << place.column << " "; }
  void Describe(KVXMLElement element) {
    out << "<" << element.Name();
    Place(document.PlaceOf(element));
    for (KVXMLAttribute at = element.FirstAttribute(); at; at = at.Next()) {
      out << at.Name();
      Place(document.PlaceOf(at));
      out << "=[" << at.Value() << "]";
      Place(document.PlaceOfValue(at));
    }
    for (KVXMLElement child = element.FirstChild(); child; child = child.NextSibling()) Describe(child);
    out << ">";
  }
};

// The elements of a text with their places, or why it is refused and where.
std::string Read(const std::string& text, const std::string& ahead) {
  KVXMLDocument document;
  KVXMLNode* root = document.LoadFromMemory(ahead + text);
  Seen seen = {document, ahead.empty() ? 0 : 1, {}};
  if (root) {
    seen.Describe(root->Element());
  } else {
    const KVXMLFailure& failure = document.LastFailure();
    seen.out << failure.reason << " " << failure.byte - ahead.size();
    seen.Place(failure.place);
  }
  return seen.out.str();
}

void ExpectSame(const std::string& text) { EXPECT_EQ(Read(text, ""), Read(text, "<?full?>\n")) << text; }

constexpr const char* kTextsByHand[] = {
    "<a/>",
    "\n<?xml version='1.0'?><!-- c -->\n<a b='1' c = \"2\">\n <d/>\r\n\t<e x='\"' x=''></e ></a>\n<!-->-->",
    "<a><b><c/></b><b/></a>",
    "<a b='1'c='2'/>",
    "<a b='1\t2\n3'/>",
    "<a b='&lt;'/>",
    "<a b='<'/>",
    "<a>t</a>",
    "<a></ab>",
    "<a/>\n<b/>",
    "<a/>x",
    "<!-- --",
    "<\xC3\xBC u='\xC3\xBC'/>",
    "<a b",
    "<a b='",
    "</a>",
    "<a ",
};

TEST(PlainXml, IsReadAsByTheFullParser) {
  for (const char* text : kTextsByHand) ExpectSame(text);
}

TEST(PlainXml, DamagedTextsAreReadAsByTheFullParser) {
  static constexpr const char* kPieces[] = {"<", ">", "/", "'", "\"", "=", " ", "\n", "&", "a", "<!--", "-->", "</a>"};
  std::mt19937 random(kSeed);
  const auto below = [&](std::size_t bound) { return std::size_t(random() % bound); };
  for (int i = 0; i < kTexts && !testing::Test::HasFailure(); ++i) {
    std::string text = kTextsByHand[below(3)];
    for (std::size_t changes = below(3); changes > 0; --changes) {
      const std::size_t at = below(text.size());
      text.replace(at, below(2), below(3) ? kPieces[below(std::size(kPieces))] : "");
      if (text.empty()) text.push_back(' ');
    }
    SCOPED_TRACE(testing::Message() << "seed " << kSeed << ", text " << i);
    ExpectSame(text);
  }
}

}  // namespace
