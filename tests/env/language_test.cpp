// Which language the user gets: from the system, by name, aligned to the host.
#include <gtest/gtest.h>

#include <sstream>

#include "platform/process.h"
#include "share/env/document_callbacks.h"
#include "share/env/language_choice.h"
#include "share/env/registry_access.h"
#include "share/env/registry_keys.h"
#include "tests/registry_calls.h"

namespace {

class Language : public testing::Test {
 protected:
  void SetUp() override {
    CloseAppEnv();
    RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software"));
  }
  void TearDown() override {
    CloseAppEnv();
    SetEnvironmentVariableW(_T("LC_ALL"), nullptr);
    SetSolidWorksLangName(_T(""));
  }
  // Starts the environment for a user of that system language.
  static CKVEnvApp& Started(LPCTSTR locale) {
    CloseAppEnv();
    SetEnvironmentVariableW(_T("LC_ALL"), locale);
    return *AppEnv();
  }
  static std::string Chosen(const CKVEnvApp& env) {
    return ToUtf8(env.GetKVDefDataRelPath()) + " " + std::to_string(env.GetTechDBLang()) + " " +
           ToUtf8(env.GetLanguageForSIMCO()) + " " + ToUtf8(env.GetCIMCOEditorCmdArg());
  }
};

WORD Id(int primary, int sub) { return WORD(sub << 10 | primary); }

}  // namespace

TEST_F(Language, EveryPrimaryAndSubLanguage) {
  const std::map<int, int> any = {{5, 13}, {7, 1},  {8, 14},  {10, 3}, {12, 2}, {16, 7},
                                  {17, 4}, {18, 8}, {21, 10}, {25, 9}, {31, 11}};
  const std::map<std::pair<int, int>, int> single = {{{4, 1}, 6}, {{4, 3}, 6}, {{4, 5}, 6},
                                                     {{4, 2}, 5}, {{4, 4}, 5}, {{22, 1}, 12}};
  for (int primary = 0; primary < 1024; ++primary) {
    for (int sub = 0; sub < 64; ++sub) {
      const auto all = any.find(primary);
      const auto one = single.find({primary, sub});
      const int expected = all != any.end() ? all->second : one != single.end() ? one->second : 0;
      ASSERT_EQ(GetLanguageOfSystem(Id(primary, sub)), expected) << primary << ", " << sub;
    }
  }
}

TEST_F(Language, AutomaticFollowsTheSystemWithoutLookingForTheFolder) {
  const struct {
    LPCTSTR locale;
    const char* chosen;
  } rows[] = {
      {_T("en_US.UTF-8"), "lang\\English\\ 0 en-US /lang=en-US"},
      {_T("sv_SE.UTF-8"), "lang\\English\\ 0 en-US /lang=en-US"},
      {_T("de_AT.UTF-8"), "lang\\German\\ 1 de-DE /lang=de-DE"},
      {_T("fr_CA.UTF-8"), "lang\\French\\ 2 fr-FR /lang=fr-FR"},
      {_T("es_MX.UTF-8"), "lang\\Spanish\\ 3 es-ES /lang=es-ES"},
      {_T("ja_JP.UTF-8"), "lang\\Japanese\\ 4 ja-JP /lang=ja-JP"},
      {_T("zh_CN.UTF-8"), "lang\\Chinese\\ 5 zh-CN /lang=zh-CN"},
      {_T("zh_TW.UTF-8"), "lang\\Chinese-Traditional\\ 6 zh-CHT /lang=zh-CHT"},
      {_T("it_IT.UTF-8"), "lang\\Italian\\ 7 it-IT /lang=it-IT"},
      {_T("ko_KR.UTF-8"), "lang\\Korean\\ 8 ko-KR /lang=ko-KR"},
      {_T("ru_RU.UTF-8"), "lang\\Russian\\ 9 ru-RU /lang=ru-RU"},
      {_T("pl_PL.UTF-8"), "lang\\Polish\\ 10 pl-PL /lang=pl-PL"},
      {_T("tr_TR.UTF-8"), "lang\\Turkish\\ 11 en-US /lang=en-US"},
      {_T("pt_BR.UTF-8"), "lang\\Portuguese-Brazilian\\ 12 pt-BR /lang=pt-BR"},
      {_T("pt_PT.UTF-8"), "lang\\English\\ 0 en-US /lang=en-US"},
      {_T("cs_CZ.UTF-8"), "lang\\Czech\\ 13 cs-CZ /lang=cs-CZ"},
      {_T("el_GR.UTF-8"), "lang\\Greek\\ 14 en-US /lang=en-US"},
  };
  for (const auto& row : rows) EXPECT_EQ(Chosen(Started(row.locale)), row.chosen);

  for (const int english : {1, 0, 2}) {
    SetRegSettingDwordValue(HKEY_CURRENT_USER, kHostGeneralKey, _T("Use English language"), english);
    EXPECT_EQ(Chosen(Started(_T("de_DE.UTF-8"))).substr(0, 9), english == 1 ? "lang\\Engl" : "lang\\Germ") << english;
  }
}

// German and French lie beside the library under test, the others don't.
TEST_F(Language, ByNameOnlyWithItsResourceLibrary) {
  const struct {
    CString name;
    const char* chosen;
  } rows[] = {
      {_T("French"), "lang\\French\\ 2 fr-FR /lang=fr-FR"},
      {_T("German"), "lang\\German\\ 1 de-DE /lang=de-DE"},
      {_T("Spanish"), "lang\\English\\ 0 en-US /lang=en-US"},
      {_T("automatic"), "lang\\English\\ 0 en-US /lang=en-US"},
      {_T(""), "lang\\English\\ 0 en-US /lang=en-US"},
      {_T("..\\lang\\French"), "lang\\..\\lang\\French\\ 0 en-US /lang=en-US"},
      {CString(u'x', 300), "lang\\English\\ 0 en-US /lang=en-US"},
  };
  for (const auto& row : rows) {
    kvtest::PutText(HKEY_CURRENT_USER, kVersionKey, _T("Language"), row.name);
    EXPECT_EQ(Chosen(Started(_T("ja_JP.UTF-8"))), row.chosen) << ToUtf8(row.name);
  }
}

TEST_F(Language, NamesOfTheDatabaseLanguage) {
  const CKVEnvApp& env = *AppEnv();
  std::istringstream names(
      "English German French Spanish Japanese Chinese Chinese-Traditional Italian Korean Russian Polish Turkish "
      "Portuguese-Brazilian Czech");
  int number = 0;
  for (std::string name; names >> name;) EXPECT_EQ(env.GetCorrespondingDBLangName(name.c_str()), number++) << name;
  for (const char* other : {"Greek", "", "german", "German ", "Portuguese"})
    EXPECT_EQ(env.GetCorrespondingDBLangName(other), 0) << other;
  EXPECT_EQ(GetLanguageFolder(QF_DBLANG_GREEK), _T("lang\\Greek\\"));
  for (const int none : {15, -1}) EXPECT_EQ(GetLanguageFolder(QFDatabaseLang_e(none)), _T("lang\\English\\"));
}

TEST_F(Language, AlignedToTheHost) {
  std::istringstream rows(
      "english English GERMAN German French French japanese Japanese italian Italian polish Polish russian Russian "
      "spanish Spanish turkish Turkish czech Czech korean Korean portugese-brazilian Portuguese-Brazilian "
      "chinese Chinese-Traditional chinese-simplified Chinese portuguese-brazilian before klingon before");
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
