// Changing and saving XML documents: all other bytes stay.
#include <gtest/gtest.h>

#include "companions/xml/xml_document.h"
#include "platform/paths.h"
#include "tests/scratch.h"

namespace {

using namespace std::string_view_literals;

// A document loaded with KeepWhole.
struct Whole {
  explicit Whole(std::string_view text) {
    document.KeepWhole(true);
    root = document.LoadFromMemory(text);
  }
  KVXMLDocument document;
  KVXMLNode* root;
};

TEST(XmlEdit, CommentsAndTextsAreNodesOfAWholeDocument) {
  Whole whole("<r> <!-- c --> one<a/>\n<![CDATA[<2>]]><?pi x?><b>x<i>y</i>&lt;<!--z--><![CDATA[z]]></b></r>");
  ASSERT_NE(whole.root, nullptr);
  KVXMLNodeList& list = *whole.root->GetChildNodes();
  const std::pair<LPCTSTR, LPCTSTR> expected[] = {{_T("#comment"), _T(" c ")},
                                                  {_T("#text"), _T(" one")},
                                                  {_T("a"), _T("")},
                                                  {_T("#text"), _T("<2>")},
                                                  {_T("b"), _T("x<z")}};
  ASSERT_EQ(list.GetSize(), long(std::size(expected)));
  for (long i = 0; i < list.GetSize(); ++i) {
    EXPECT_EQ(list[i]->GetNodeName(), expected[i].first) << i;
    EXPECT_EQ(list[i]->GetNodeValue(), expected[i].second) << i;
  }
  EXPECT_EQ(list[0]->GetChildNodes(), nullptr);
  EXPECT_FALSE(list[0]->Element());
  EXPECT_FALSE(list[0]->AddAttribute(_T("n"), _T("1")));
  EXPECT_EQ(whole.root->Element().FirstChild().Name(), "a") << "not on the fast lane";
  EXPECT_EQ(KVXMLNode().GetNodeValue(), _T(""));
}

TEST(XmlEdit, SavesTheChangedValueAlone) {
  constexpr std::tuple<std::string_view, LPCTSTR, std::string_view> kCases[] = {
      {"<r n='1'/>", _T("23"), "<r n='23'/>"},
      {"<r m = \"=\" n\t=\r\n \"a&amp;b\" o=''>\r\n <!-- x -->\t</r>\n\n", _T(""),
       "<r m = \"=\" n\t=\r\n \"\" o=''>\r\n <!-- x -->\t</r>\n\n"},
      {"<r n='1' n='2'/>", _T("3"), "<r n='3' n='2'/>"},
      {"\xEF\xBB\xBF<?xml version='1.0'?><!DOCTYPE r><r n='\xC3\xBC' m='\xC3\xBC'/>", _T("'\"<&\n\u00FC\U0001F600"),
       "\xEF\xBB\xBF<?xml version='1.0'?><!DOCTYPE r><r n='&#39;&#34;&#60;&#38;&#10;&#252;&#128512;' m='\xC3\xBC'/>"},
      {"<?xml version='1.0' encoding='windows-1252'?><r n='1'>\xFC\x81</r>", _T("\u00FC"),
       "<?xml version='1.0' encoding='windows-1252'?><r n='&#252;'>\xFC\x81</r>"},
      {"\xFF\xFE<\0r\0 \0n\0=\0'\0\xFC\0'\0/\0>\0"sv, _T("1"), "\xFF\xFE<\0r\0 \0n\0=\0'\0001\0'\0/\0>\0"sv},
      {"\0<\0r\0 \0n\0=\0'\0\xFC\0'\0/\0>"sv, _T("1"), "\0<\0r\0 \0n\0=\0'\0001\0'\0/\0>"sv},
  };
  for (const auto& [before, wanted, after] : kCases) {
    SCOPED_TRACE(before);
    Whole whole(before);
    ASSERT_NE(whole.root, nullptr);
    EXPECT_EQ(whole.document.SavedBytes(), before) << "nothing changed yet";
    ASSERT_TRUE(whole.root->SetAttributeValue(_T("n"), _T("another value, longer than the one before")));
    ASSERT_TRUE(whole.root->SetAttributeValue(_T("n"), wanted)) << "the second change takes the place of the first";
    CString value;
    EXPECT_TRUE(whole.root->GetAttributeValue(_T("n"), value));
    EXPECT_EQ(value, wanted);
    ASSERT_EQ(whole.document.SavedBytes(), after);
  }
}

TEST(XmlEdit, AddsBehindTheOtherAttributes) {
  constexpr std::pair<std::string_view, std::string_view> kCases[] = {
      {"<r/>", "<r x=\"1\" y=\"3\"/>"},
      {"<r\n>\n</r>", "<r x=\"1\" y=\"3\"\n>\n</r>"},
      {"<r a = '/>'  b=\"'\" ></r>", "<r a = '/>'  b=\"'\" x=\"1\" y=\"3\" ></r>"},
  };
  for (const auto& [before, after] : kCases) {
    Whole whole(before);
    ASSERT_TRUE(whole.root->AddAttribute(_T("x"), _T("1")));
    ASSERT_TRUE(whole.root->AddAttribute(_T("y"), _T("2")));
    EXPECT_FALSE(whole.root->AddAttribute(_T("x"), _T("2"))) << "it is there";
    EXPECT_TRUE(whole.root->SetAttributeValue(_T("y"), _T("3")));
    EXPECT_EQ(whole.document.SavedBytes(), after);
    EXPECT_EQ(whole.document.PlaceOf(whole.root->Element().FirstAttribute()).line, before[2] == ' ' ? 1 : 0)
        << "an added attribute stands nowhere";
  }
}

TEST(XmlEdit, RefusesWhatItCanNotDo) {
  Whole whole("<r n='1'/>");
  EXPECT_FALSE(whole.root->SetAttributeValue(_T("m"), _T("1")));
  for (LPCTSTR name : {_T(""), _T("1"), _T("a b"), _T("a='"), _T("\u00FC")})
    EXPECT_FALSE(whole.root->AddAttribute(name, _T("1"))) << ToUtf8(CString(name));
  EXPECT_EQ(whole.document.SavedBytes(), "<r n='1'/>");
  KVXMLDocument reader;
  KVXMLNode* root = reader.LoadFromMemory("<r n='1'/>");
  EXPECT_FALSE(root->SetAttributeValue(_T("n"), _T("2")));
  EXPECT_FALSE(root->AddAttribute(_T("m"), _T("2")));
  EXPECT_EQ(reader.SavedBytes(), std::nullopt) << "not loaded whole";
  Whole broken("\xFF\xFE<\0r\0/\0>\0\0\xD8"sv);
  EXPECT_EQ(broken.document.SavedBytes(), std::nullopt) << "a lone surrogate can't be given back";
  KVXMLDocument small;
  small.SetMostBytes(3);
  EXPECT_EQ(small.LoadFromMemory("<r/>"), nullptr);
  EXPECT_EQ(small.LastFailure().kind, KVXMLFailure::Kind::kTooLarge);
  EXPECT_EQ(small.LastFailure().reason, "the text is larger than 3 bytes");
}

TEST(XmlEdit, SaveReplacesTheFile) {
  const kvtest::ScratchFolder folder;
  const auto file = folder.Write("a.xml", "<r>\r\n</r>");
  const CString path(ProductPathFromSystem(file.string()).c_str());
  KVXMLDocument document;
  document.KeepWhole(true);
  KVXMLNode* root = document.LoadFromFile(path);
  ASSERT_NE(root, nullptr);
  root->AddAttribute(_T("n"), _T("1"));
  EXPECT_TRUE(document.Save(path));
  EXPECT_EQ(kvtest::ReadFile(file), "<r n=\"1\">\r\n</r>");
  EXPECT_FALSE(document.Save(path + _T("\\below")));
}

}  // namespace
