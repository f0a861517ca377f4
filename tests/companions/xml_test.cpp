// Reading XML documents as the product's readers use them.
#include <gtest/gtest.h>

#include <cstring>

#include "companions/xml/xml_document.h"
#include "platform/paths.h"
#include "tests/scratch.h"
#include "tests/values.h"

namespace {

using namespace std::string_view_literals;
using Kind = KVXMLFailure::Kind;

TEST(Xml, GivesElementsAttributesAndLists) {
  KVXMLDocument document;
  KVXMLNode* root = document.LoadFromMemory(
      "<!-- c --><Root a='1' A=\"&lt;&#252;&amp;\" a='2'>text<!-- c --><b/>\n<c><d/></c></Root>");
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->GetNodeName(), _T("Root"));
  CString value(_T("before"));
  EXPECT_FALSE(root->GetAttributeValue(_T("b"), value));
  EXPECT_EQ(value, _T("before"));
  EXPECT_TRUE(root->GetAttributeValue(_T("a"), value));
  EXPECT_EQ(value, _T("1")) << "the first of two";
  EXPECT_TRUE(root->GetAttributeValue(_T("A"), value));
  EXPECT_EQ(value, _T("<\u00FC&"));
  KVXMLNodeList& list = *root->GetChildNodes();
  ASSERT_EQ(list.GetSize(), 2);
  EXPECT_EQ(list[1]->GetNodeName(), _T("c"));
  EXPECT_EQ(list[2], nullptr);
  EXPECT_EQ(list[-1], nullptr);
  ASSERT_NE(list[0]->GetChildNodes(), nullptr) << "no children is an empty list";
  EXPECT_EQ(list[0]->GetChildNodes()->GetSize(), 0);
  EXPECT_EQ(root->GetChildNodes(), &list) << "built once";
  EXPECT_EQ(KVXMLNode().GetChildNodes(), nullptr);
}

TEST(Xml, ReadsTheEncodingsThatFilesHave) {
  constexpr std::pair<const char*, std::string_view> kCases[] = {
      {"UTF-8", "<r n='\xC3\xBC'/>"sv},
      {"declared western", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r n='\xFC'/>"sv},
      {"declared western, other quotes", "<?xml version='1.0' encoding='windows-1252'?><r n='\xFC'/>"sv},
      {"UTF-16LE with mark", "\xFF\xFE<\0r\0 \0n\0=\0'\0\xFC\0'\0/\0>\0"sv},
      {"UTF-16BE with mark", "\xFE\xFF\0<\0r\0 \0n\0=\0'\0\xFC\0'\0/\0>"sv},
      {"UTF-16LE", "<\0r\0 \0n\0=\0'\0\xFC\0'\0/\0>\0"sv},
      {"UTF-16BE", "\0<\0r\0 \0n\0=\0'\0\xFC\0'\0/\0>"sv},
  };
  for (const auto& [encoding, bytes] : kCases) {
    KVXMLDocument document;
    KVXMLNode* root = document.LoadFromMemory(bytes);
    ASSERT_NE(root, nullptr) << encoding << ": " << document.LastFailure().reason;
    CString value;
    EXPECT_TRUE(root->GetAttributeValue(_T("n"), value)) << encoding;
    EXPECT_EQ(value, _T("\u00FC")) << encoding;
  }
}

TEST(Xml, TellsWhereAndWhyAFileIsMalformed) {
  // Line, column, byte and reason.
  constexpr std::pair<std::string_view, const char*> kCases[] = {
      {"", "1|1|0|there is no root element"},
      {"<a>\n  <b>\n</a>", "3|3|12|start-end tags mismatch"},
      {"<a/>\n<b/>", "2|2|6|a second root element follows the first"},
      {"<a b=1/>", "1|6|5|error parsing element attribute"},
  };
  const kvtest::ScratchFolder folder;
  const CString file(ProductPathFromSystem((folder.Path() / "broken.xml").string()).c_str());
  for (const auto& [text, wanted] : kCases) {
    folder.Write("broken.xml", std::string(text));
    for (const bool places : {true, false}) {
      for (const bool fromFile : {true, false}) {
        SCOPED_TRACE(testing::Message() << text << " places " << places << " file " << fromFile);
        KVXMLDocument document;
        document.KeepPlaces(places);
        EXPECT_EQ(fromFile ? document.LoadFromFile(file) : document.LoadFromMemory(text), nullptr);
        const KVXMLFailure& failure = document.LastFailure();
        EXPECT_EQ(failure.kind, Kind::kMalformed);
        EXPECT_EQ(kvtest::Values(failure.place.line, failure.place.column, failure.byte, failure.reason), wanted);
      }
    }
  }
}

TEST(Xml, TellsMissingFromUnreadable) {
  const kvtest::ScratchFolder folder;
  folder.Write("good.xml", "<a/>");
  const auto path = [&](const char* name) {
    return CString(ProductPathFromSystem((folder.Path() / name).string()).c_str());
  };
  KVXMLDocument document;
  EXPECT_EQ(document.LoadFromFile(path("none.xml")), nullptr);
  EXPECT_EQ(document.LastFailure().kind, Kind::kMissing);
  EXPECT_EQ(document.LoadFromFile(path(".")), nullptr);
  EXPECT_EQ(document.LastFailure().kind, Kind::kUnreadable);
  EXPECT_NE(document.LoadFromFile(path("GOOD.XML")), nullptr);
  EXPECT_EQ(document.LastFailure().kind, Kind::kNone);
}

// Attributes without gaps, with gaps, on several lines, shortened by the parser, and none.
TEST(Xml, AttributesReadInARowAreThoseOfTheHandles) {
  using Rows = std::vector<std::pair<std::string_view, std::string_view>>;
  const std::pair<const char*, Rows> kCases[] = {
      {"<r/>", {}},
      {"<r a=\"1\" bc='23' d=\"\"/>", {{"a", "1"}, {"bc", "23"}, {"d", ""}}},
      {"<r  a =\"1\"  bc= '23'\n\t d = \"\" e='' />", {{"a", "1"}, {"bc", "23"}, {"d", ""}, {"e", ""}}},
      {"<r a='x&amp;' b='&lt;y' c='&amp;' d='z'/>", {{"a", "x&"}, {"b", "<y"}, {"c", "&"}, {"d", "z"}}},
      {"<r a='1\r\n2' b='3\n4'></r>", {{"a", "1 2"}, {"b", "3 4"}}},
  };
  for (const auto& [text, expected] : kCases) {
    KVXMLDocument document;
    KVXMLNode* root = document.LoadFromMemory(text);
    ASSERT_NE(root, nullptr) << text;
    Rows read, handles;
    std::string_view name, value;
    for (KVXMLAttributeReader reader(root->Element()); reader.Next(name, value);) read.emplace_back(name, value);
    for (KVXMLAttribute at = root->Element().FirstAttribute(); at; at = at.Next())
      handles.emplace_back(at.Name(), at.Value());
    EXPECT_EQ(read, expected) << text;
    EXPECT_EQ(handles, expected) << text;
  }
  std::string_view name, value;
  EXPECT_FALSE(KVXMLAttributeReader(KVXMLElement()).Next(name, value));
}

TEST(Xml, ListsWhatXmlForbids) {
  const std::pair<std::string_view, std::string> kCases[] = {
      {"<?xml version='1.0' encoding='utf-8'?><!DOCTYPE a [<!ENTITY x '&y;'>]><!-- & --><a "
       "b='&#10;&lt;'>\xC3\xBC</a>\n",
       ""},
      {"x<a/>\ny", "1:1 text outside the root element is ignored\n2:1 text outside the root element is ignored\n"},
      {"\xEF\xBB\xBF<a b='&c;' d='e&f'>&#x;</a>",
       "1:10 the entity &c; is not defined and is kept as written\n1:19 & begins no reference; write &amp;\n"
       "1:23 & begins no reference; write &amp;\n"},
      {"<a b='&#0;&#xD800;&#99999999999999999999;'/>",
       "1:7 the reference &#0; is no character of XML\n1:11 the reference &#xD800; is no character of XML\n"
       "1:19 the reference &#99999999999999999999; is no character of XML\n"},
      {"<!----><!-- a-b --><a><!-- a--b --><!-- a ---></a>",
       "1:29 -- is inside a comment\n1:43 -- is inside a comment\n"},
      {"<a b='<'/>", "1:7 < is in the value of an attribute; write &lt;\n"},
      {"<a b='\xFF'/>", "1:7 bytes that are not UTF-8 are read as U+FFFD\n"},
      {"<a b='\x1B'/>", "1:7 a control character, which XML forbids\n"},
      {"<?xml version='1.0' encoding='shift_jis'?><a/>",
       "1:31 the file declares the encoding shift_jis and is read as UTF-8\n"},
      {"\xFF\xFE<\0a\0/\0>\0\n\0\0"sv, "2:1 bytes that are not UTF-16 are read as U+FFFD\n"},
      {"<a>", ""},
  };
  for (const auto& [text, expected] : kCases) {
    KVXMLDocument document;
    document.KeepFaults(true);
    EXPECT_EQ(document.LoadFromMemory(text) == nullptr, text == "<a>") << text << document.LastFailure().reason;
    std::string faults;
    for (const KVXMLFault& fault : document.Faults())
      faults += std::to_string(fault.place.line) + ":" + std::to_string(fault.place.column) + " " + fault.reason + "\n";
    EXPECT_EQ(faults, expected) << text;
  }
}

TEST(Xml, GivesPlaces) {
  KVXMLDocument document;
  const KVXMLElement root = document.LoadFromMemory("<a>\n <b x='&amp;1'\n  y='2'/></a>")->Element();
  const KVXMLElement b = root.FirstChild();
  const auto place = [](KVXMLPlace at) { return std::pair(at.line, at.column); };
  EXPECT_EQ(place(document.PlaceOf(root)), std::pair(1, 2));
  EXPECT_EQ(place(document.PlaceOf(b)), std::pair(2, 3));
  EXPECT_EQ(place(document.PlaceOfValue(b.FirstAttribute())), std::pair(2, 8));
  EXPECT_EQ(place(document.PlaceOf(b.FirstAttribute().Next())), std::pair(3, 3));
  EXPECT_EQ(place(document.PlaceOf(KVXMLElement())), std::pair(0, 0));
  document.KeepPlaces(false);
  EXPECT_EQ(place(document.PlaceOf(document.LoadFromMemory("<a/>")->Element())), std::pair(0, 0)) << "not kept";
}

TEST(Xml, DepthAndElementsAreLimited) {
  // Everything at the start and in <a> looks like markup that opens or closes elements, and does not.
  const std::string start = "<?x '<a>?><!DOCTYPE a [<!ENTITY e '>'><![ ' ]]><!-- ' -->]><!-- \"</a><a> -->\n";
  const auto nested = [&](std::size_t depth) {
    std::string text = start;
    for (std::size_t i = 0; i < depth; ++i) text += "<a b='</a>' c=\"'/>\"><b/><![CDATA[</a>]]>";
    for (std::size_t i = 0; i < depth; ++i) text += "</a>";
    return text;
  };
  KVXMLDocument document;
  std::size_t depth = 1;  // with <b/>
  for (KVXMLElement a = document.LoadFromMemory(nested(kXMLMostDepth - 1))->Element(); a.FirstChild(); ++depth)
    a = a.FirstChild().NextSibling() ? a.FirstChild().NextSibling() : a.FirstChild();
  EXPECT_EQ(depth, kXMLMostDepth);
  EXPECT_EQ(document.LoadFromMemory(nested(kXMLMostDepth)), nullptr);
  EXPECT_EQ(document.LastFailure().reason, "more than 10000 elements are inside each other");
  EXPECT_EQ(document.LastFailure().place.line, 2);
  EXPECT_EQ(document.LastFailure().byte, nested(kXMLMostDepth).find("</a></a>") - std::strlen("b/><![CDATA[</a>]]>"));
  std::string wide = "<a>";
  for (std::size_t i = 0; i < kXMLMostElements; ++i) wide += "<b/>";
  EXPECT_EQ(document.LoadFromMemory(wide), nullptr);
  EXPECT_EQ(document.LastFailure().reason, "there are more than 8000000 elements");
  EXPECT_EQ(document.LastFailure().byte, wide.size() - 3);
}

}  // namespace
