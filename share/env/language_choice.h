// The languages of an installation, and which of them the user gets.
//
// A language is a folder below "lang\" in the install folder, with its resource library in it; its number also names
// the language of the technology database. The choice itself is made when the environment starts (share/env/app_env.h).
#pragma once

#include <array>

#include "share/env/app_env.h"

struct InstallLanguage {
  LPCTSTR name;  // of the folder, in English
  // Whether GetCorrespondingDBLangName knows the name. Greek it does not: that is required.
  bool isNamed;
  LPCTSTR editorCode;  // for the NC editor, which has neither Turkish nor Greek
};

// By QFDatabaseLang_e.
inline constexpr std::array<InstallLanguage, 15> kInstallLanguages = {{
    {_T("English"), true, _T("en-US")},
    {_T("German"), true, _T("de-DE")},
    {_T("French"), true, _T("fr-FR")},
    {_T("Spanish"), true, _T("es-ES")},
    {_T("Japanese"), true, _T("ja-JP")},
    {_T("Chinese"), true, _T("zh-CN")},
    {_T("Chinese-Traditional"), true, _T("zh-CHT")},
    {_T("Italian"), true, _T("it-IT")},
    {_T("Korean"), true, _T("ko-KR")},
    {_T("Russian"), true, _T("ru-RU")},
    {_T("Polish"), true, _T("pl-PL")},
    {_T("Turkish"), true, _T("en-US")},
    {_T("Portuguese-Brazilian"), true, _T("pt-BR")},
    {_T("Czech"), true, _T("cs-CZ")},
    {_T("Greek"), false, _T("en-US")},
}};

// The language for a user whose system has that language identifier; English if there is none for it. Portuguese counts
// in its Brazilian form only.
KVSHARE_API QFDatabaseLang_e GetLanguageOfSystem(WORD languageId);

// The folder below the install folder, such as "lang\German\"; the English one for a number that is no language.
KVSHARE_API CString GetLanguageFolder(QFDatabaseLang_e language);

// Puts the name of the language folder that fits the host CAD into the argument: what the switch "BrenmarkLanguage"
// says, else the host's own language (GetSolidWorksLangName), in any case. A host in a language that there is none for
// leaves the argument as it was. Costs a registry read.
KVSHARE_API void GetLangAlignedToSWLang(CString& language);
