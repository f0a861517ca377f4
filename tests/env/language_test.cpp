// The language for the user: from the system, by name, aligned to the host.
#include <sstream>

#include "platform/process.h"
#include "share/env/language_choice.h"
#include "tests/env/clean_environment.h"

namespace {

class Language : public kvtest::CleanEnvironment {
 protected:
  void TearDown() override {
    CleanEnvironment::TearDown();
    SetEnvironmentVariableW(_T("LC_ALL"), nullptr);
    SetSolidWorksLangName(_T(""));
  }
  // Starts the environment for a user of that system language; gives the folder, number and editor's code chosen.
  static std::string Chosen(LPCTSTR locale) {
    CloseAppEnv();
    SetEnvironmentVariableW(_T("LC_ALL"), locale);
    const CKVEnvApp& env = *AppEnv();
    EXPECT_EQ(env.GetCIMCOEditorCmdArg(), _T("/lang=") + env.GetLanguageForSIMCO());
    return ToUtf8(env.GetKVDefDataRelPath()) + " " + std::to_string(env.GetTechDBLang()) + " " +
           ToUtf8(env.GetLanguageForSIMCO());
  }
};

}  // namespace

TEST_F(Language, EveryPrimaryAndSubLanguageHasItsNumber) {
  const std::map<int, int> any = {{5, 13}, {7, 1},  {8, 14},  {10, 3}, {12, 2}, {16, 7},
                                  {17, 4}, {18, 8}, {21, 10}, {25, 9}, {31, 11}};
  const std::map<std::pair<int, int>, int> single = {{{4, 1}, 6}, {{4, 3}, 6}, {{4, 5}, 6},
                                                     {{4, 2}, 5}, {{4, 4}, 5}, {{22, 1}, 12}};
  for (int primary = 0; primary < 1024; ++primary) {
    for (int sub = 0; sub < 64; ++sub) {
      const auto all = any.find(primary);
      const auto one = single.find({primary, sub});
      const int expected = all != any.end() ? all->second : one != single.end() ? one->second : 0;
      ASSERT_EQ(GetLanguageOfSystem(WORD(sub << 10 | primary)), expected) << primary << ", " << sub;
    }
  }
}

TEST_F(Language, AutomaticFollowsTheSystemEvenWithoutTheFolder) {
  EXPECT_EQ(Chosen(_T("pt_PT.UTF-8")), "lang\\English\\ 0 en-US");
  EXPECT_EQ(Chosen(_T("ja_JP.UTF-8")), "lang\\Japanese\\ 4 ja-JP");
  EXPECT_EQ(Chosen(_T("zh_TW.UTF-8")), "lang\\Chinese-Traditional\\ 6 zh-CHT");
  EXPECT_EQ(Chosen(_T("el_GR.UTF-8")), "lang\\Greek\\ 14 en-US");
  for (const int english : {1, 0, 2}) {
    SetRegSettingDwordValue(HKEY_CURRENT_USER, kHostGeneralKey, _T("Use English language"), english);
    EXPECT_EQ(Chosen(_T("de_AT.UTF-8")), english == 1 ? "lang\\English\\ 0 en-US" : "lang\\German\\ 1 de-DE");
  }
}

// The library under test has the folders of German and French, and no others.
TEST_F(Language, NameCountsOnlyWithItsResourceLibrary) {
  const std::pair<CString, const char*> rows[] = {{_T("French"), "lang\\French\\ 2 fr-FR"},
                                                  {_T("Spanish"), "lang\\English\\ 0 en-US"},
                                                  {_T(""), "lang\\English\\ 0 en-US"},
                                                  {_T("..\\lang\\French"), "lang\\..\\lang\\French\\ 0 en-US"},
                                                  {CString(_T('x'), 300), "lang\\English\\ 0 en-US"}};
  for (const auto& [name, chosen] : rows) {
    kvtest::PutText(HKEY_CURRENT_USER, kVersionKey, _T("Language"), name);
    EXPECT_EQ(Chosen(_T("ja_JP.UTF-8")), chosen) << ToUtf8(name);
  }
}

TEST_F(Language, DatabaseLanguageIsFoundByItsExactName) {
  const CKVEnvApp& env = *AppEnv();
  std::istringstream names(
      "English German French Spanish Japanese Chinese Chinese-Traditional Italian Korean Russian Polish Turkish "
      "Portuguese-Brazilian Czech");
  int number = 0;
  for (std::string name; names >> name;) EXPECT_EQ(env.GetCorrespondingDBLangName(name.c_str()), number++) << name;
  for (const char* other : {"Greek", "german"}) EXPECT_EQ(env.GetCorrespondingDBLangName(other), 0) << other;
  for (const int unknown : {15, -1}) EXPECT_EQ(GetLanguageFolder(QFDatabaseLang_e(unknown)), _T("lang\\English\\"));
}

TEST_F(Language, AlignsToTheSwitchOrTheHost) {
  std::istringstream rows(
      "english English GERMAN German French French japanese Japanese italian Italian polish Polish russian Russian "
      "spanish Spanish turkish Turkish czech Czech korean Korean portugese-brazilian Portuguese-Brazilian "
      "chinese Chinese-Traditional chinese-simplified Chinese portuguese-brazilian before");
  for (std::string host, wanted; rows >> host >> wanted;) {
    SetSolidWorksLangName(host.c_str());
    CString language(_T("before"));
    GetLangAlignedToSWLang(language);
    EXPECT_EQ(ToUtf8(language), wanted);
  }
  kvtest::PutText(HKEY_CURRENT_USER, kVersionDebugKey, _T("BrenmarkLanguage"), _T("Martian"));
  CString language;
  GetLangAlignedToSWLang(language);
  EXPECT_EQ(language, _T("Martian"));
}
