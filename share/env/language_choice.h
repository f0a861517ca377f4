// The languages of an installation, and the choice of the user's language.
//
// A language is a folder below "lang\" in the install folder with a resource library, "KVRESu.DLL". Its number also
// selects the language of the technology database. The environment's start (InitAppEnv, share/env/app_env.h) chooses
// the language by the registry value "Language" of this release: a name counts if its folder has a resource library,
// else English is chosen; "Automatic", the default, means English if the host is set to it, else the language of the
// system, even if its folder is missing. The start then loads the resource library, and CString::LoadString finds its
// texts from then on. A change of the value takes effect at the next start.
#pragma once

#include <array>

#include "share/env/app_env.h"

struct InstallLanguage {
  LPCTSTR name;  // of the folder, in English
  // Whether GetCorrespondingDBLangName knows the name. It doesn't know Greek, kept for existing databases.
  bool isNamed;
  LPCTSTR editorCode;  // for the NC editor, which has no Turkish and no Greek
};

// Indexed by QFDatabaseLang_e.
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

// The language for the language identifier of a system; English for identifiers without a language here. Of Portuguese
// only the Brazilian form has one.
KVSHARE_API QFDatabaseLang_e GetLanguageOfSystem(WORD languageId);

// The folder relative to the install folder, such as "lang\German\"; the English one for an unknown number.
KVSHARE_API CString GetLanguageFolder(QFDatabaseLang_e language);

// Sets the argument to the name of the language folder for the host CAD: the switch "BrenmarkLanguage" if it is not
// empty, else the folder for GetSolidWorksLangName(), compared without case. For an unknown host language the argument
// stays unchanged. Reads the registry.
KVSHARE_API void GetLangAlignedToSWLang(CString& language);
