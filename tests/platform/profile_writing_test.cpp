// Profile files: the exact bytes that a write leaves.
#include <map>
#include <random>

#include "tests/platform/profile_support.h"

namespace {

using namespace std::string_literals;
using kvtest::Utf16;
using ProfileWriting = kvtest::ProfileTest;

using ProfileChanges = kvtest::ProfileTest;

TEST_F(ProfileChanges, OneLineChangesInAFileOfPlainLines) {
  ExpectChanges({
      {"a new file", "", _T("A"), _T("k"), _T("1"), "[A]\r\nk=1\r\n"},
      {"names keep their case", "[Mill]\r\nFeed=1\r\n", _T("MILL"), _T("FEED"), _T("2"), "[Mill]\r\nFeed=2\r\n"},
      {"the first of several keys", "[A]\r\nk=1\r\nk=2\r\n[a]\r\nk=3\r\n", _T("a"), _T("K"), _T("9"),
       "[A]\r\nk=9\r\nk=2\r\n[a]\r\nk=3\r\n"},
      {"new key at the end of its section", "[A]\r\nk=1\r\n[B]\r\nm=2\r\n", _T("A"), _T("l"), _T("3"),
       "[A]\r\nk=1\r\nl=3\r\n[B]\r\nm=2\r\n"},
      {"new section at the end", "[A]\r\nk=1\r\n", _T("B"), _T("l"), _T("2"), "[A]\r\nk=1\r\n[B]\r\nl=2\r\n"},
      {"after a line without an end", "[A]\r\nk=1", _T("A"), _T("l"), _T("2"), "[A]\r\nk=1\r\nl=2\r\n"},
      {"UTF-16 stays so", "\xFF\xFE" + Utf16(_T("[A]\r\nk=1\r\nl=2\r\n")), _T("a"), _T("K"), _T("€"),
       "\xFF\xFE" + Utf16(_T("[A]\r\nk=€\r\nl=2\r\n"))},
      // Removing.
      {"a key with its line", "[A]\r\nk=1\r\nl=2\r\n", _T("a"), _T("K"), nullptr, "[A]\r\nl=2\r\n"},
      {"the last key leaves the header", "[A]\r\nk=1\r\n", _T("A"), _T("k"), nullptr, "[A]\r\n"},
      {"a section with all in it", "[A]\r\nk=1\r\n[B]\r\nm=2\r\n[a]\r\n", _T("a"), nullptr, nullptr,
       "[B]\r\nm=2\r\n[a]\r\n"},
      {"a null key wins over a value", "[A]\r\nk=1\r\n", _T("A"), nullptr, _T("1"), ""},
  });
}

TEST_F(ProfileChanges, BlanksCommentsAndOtherLineEndsStay) {
  ExpectChanges({
      {"a changed line has no blanks and CR LF", "; c\n\n [A] x\n  k  =  ' 1 ' ; t\n\tl = 2 \n", _T("A"), _T("k"),
       _T("3"), "; c\n\n [A] x\nk=3\r\n\tl = 2 \n"},
      {"before the blank lines that part sections", "[A]\nk=1\n;c\n \t\n\n[B]\n", _T("A"), _T("l"), _T("3"),
       "[A]\nk=1\n;c\nl=3\r\n \t\n\n[B]\n"},
      {"new section at the end", "[A]\rk=1\r\r", _T("B"), _T("l"), _T("2"), "[A]\rk=1\r\r[B]\r\nl=2\r\n"},
      {"after a line without an end", "[A]\nk=1", _T("A"), _T("l"), _T("2"), "[A]\nk=1\r\nl=2\r\n"},
      {"UTF-16", "\xFF\xFE" + Utf16(_T("[Ä]\n k =1\nl=2")), _T("ä"), _T("K"), _T("€"),
       "\xFF\xFE" + Utf16(_T("[Ä]\nk=€\r\nl=2"))},
      // Removing.
      {"a key with its line", "[A]\r\n ;c\r\n k = 1\r\nl=2\r\n", _T("a"), _T("K"), nullptr, "[A]\r\n ;c\r\nl=2\r\n"},
      {"a section with all in it", "x\n[A]\nk=1\n;c\n\n[B]\nm=2\n[a]\n", _T("a"), nullptr, nullptr,
       "x\n[B]\nm=2\n[a]\n"},
  });
}

class ProfileSections : public ProfileWriting {
 protected:
  // Rows: what, the bytes before, the list that is written, the bytes after.
  void ExpectLists(std::initializer_list<std::tuple<const char*, std::string, LPCWSTR, std::string>> rows) {
    for (const auto& [what, bytes, list, wanted] : rows) {
      SCOPED_TRACE(what);
      Put(bytes);
      EXPECT_TRUE(WritePrivateProfileSectionW(_T("A"), list, Path()));
      EXPECT_EQ(Bytes(), wanted);
    }
  }
};

TEST_F(ProfileSections, AreReplacedAsAWhole) {
  ExpectLists({{"new", "[B]\r\n", _T("k=1\0l=2\0"), "[B]\r\n[A]\r\nk=1\r\nl=2\r\n"},
               {"keys and odd lines go", "[a]\r\nk=1\r\nodd\r\nl=2\r\n[B]\r\nm=3\r\n", _T("n=4\0"),
                "[a]\r\nn=4\r\n[B]\r\nm=3\r\n"},
               {"an empty list leaves the header", "[A]\r\nk=1\r\n[B]\r\n", _T("\0"), "[A]\r\n[B]\r\n"},
               {"null removes it", "[A]\r\nk=1\r\n[B]\r\n", nullptr, "[B]\r\n"}});
}

TEST_F(ProfileSections, KeepCommentsBlankLinesAndLineEnds) {
  ExpectLists({{"keys and odd lines go, comments stay", "[a] x\n;c\nk=1\nodd\n\n ;d\nl=2\n\n[B]\nm=3\n", _T("n=4\0"),
                "[a] x\n;c\n\n ;d\nn=4\r\n\n[B]\nm=3\n"},
               {"after a comment without an end", "[A]\n;c", _T("k=1\0"), "[A]\n;c\r\nk=1\r\n"}});
}

TEST_F(ProfileWriting, MakesTheFileOnlyForAValue) {
  EXPECT_TRUE(WritePrivateProfileStringW(_T("A"), _T("k"), nullptr, Path()));
  EXPECT_TRUE(WritePrivateProfileStringW(_T("A"), nullptr, nullptr, Path()));
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
  EXPECT_TRUE(WritePrivateProfileStringW(_T("A"), _T("k"), _T("1"), Path()));
  EXPECT_EQ(Bytes(), "[A]\r\nk=1\r\n");
  const auto entries = std::filesystem::directory_iterator(folder.Path());
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 1) << "nothing is left beside it";
}

TEST_F(ProfileWriting, RefusalsTellWhyAndLeaveTheFile) {
  Put("[A]\nk=1\n");
  EXPECT_EQ(StatusOf(WritePrivateProfileStringW(nullptr, _T("k"), _T("v"), Path())), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(StatusOf(WritePrivateProfileStringW(_T("A"), _T("k"), _T("v"), _T(""))), ERROR_ACCESS_DENIED);
  const std::pair<const char*, LONG> rows[] = {{"none/f.ini", ERROR_PATH_NOT_FOUND}, {".", ERROR_ACCESS_DENIED}};
  for (const auto& [name, status] : rows) {
    SCOPED_TRACE(name);
    const Text at = ProductPathFromSystem((folder.Path() / name).string());
    EXPECT_EQ(StatusOf(WritePrivateProfileStringW(_T("A"), _T("k"), _T("v"), at.c_str())), status);
    EXPECT_EQ(Number(at), -1);
  }
  EXPECT_EQ(Bytes(), "[A]\nk=1\n");
}

TEST_F(ProfileSections, NeedAName) { EXPECT_FALSE(WritePrivateProfileSectionW(nullptr, _T("k=v\0"), Path())); }

// A model of a profile, changed at random in step with the file: every value is there at each step.
TEST_F(ProfileWriting, RandomWritesAgreeWithAModel) {
  std::mt19937 random(kvtest::PrintedSeed());
  std::map<Text, std::map<Text, Text>> model;
  const Text names[] = {_T("a"), _T("Ä b"), _T("ccc"), _T("d;"), _T("#e"), _T("S"), _T("ſ"), _T("\U0001D11E")};
  for (int step = 0; step < 400; ++step) {
    if (step % 100 == 0) {
      Put("\xFF\xFE" + Utf16(_T("; c")));
      model.clear();
    }
    const Text& section = names[random() % std::size(names)];
    const Text& key = names[random() % std::size(names)];
    const Text value = names[random() % std::size(names)] + TCHAR(_T('0') + step % 10);
    const unsigned what = random() % 20;
    ASSERT_TRUE(WritePrivateProfileStringW(section.c_str(), what == 0 ? nullptr : key.c_str(),
                                           what < 5 ? nullptr : value.c_str(), Path()));
    if (what == 0)
      model.erase(section);
    else if (what < 5 && model.contains(section))
      model[section].erase(key);
    else if (what >= 5)
      model[section][key] = value;
    for (const auto& s : names) {
      for (const auto& k : names) {
        const bool there = model.contains(s) && model[s].contains(k);
        ASSERT_EQ(Value(s.c_str(), k.c_str()), there ? model[s][k] : _T("(none)")) << "step " << step;
      }
    }
    ASSERT_TRUE(Bytes().starts_with("\xFF\xFE;"));
  }
}

}  // namespace
