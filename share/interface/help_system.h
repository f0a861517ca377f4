// QFHelpSystem: opens the help of a context number or of an area of the product.
//
// Help is in the help folder, CKVEnvApp::GetKVHelpPath(): pages in its folder HtmlHelp, the file KVcontext.txt, which
// maps context numbers to pages, and one compiled help file for each area. A page is opened in the user's program for
// it. If there is no page, the compiled file is opened in the system's viewer for such files; if that is not possible
// either, the area's overview page; if there is none, nothing happens.
//
// The map is read when the object is made: by the environment's start if InitShareDll was called before, else at the
// first Instance(). A file that can't be read leaves the map empty. A new start of the environment reads it again.
//
// Each line of KVcontext.txt that begins with "IDH_" is a context: IDH_1234,toolpath_basics.htm. Blanks around the line
// don't count, but a line with blanks before "IDH_" is no context; a later line replaces an earlier one with the same
// number. A line is cut after 1000 characters, and its rest is another line.
//
// User-interface thread only, without a lock.
#pragma once

#include <map>

#include "framework/text.h"

// The areas of the help. Any other value has the compiled file of milling and no overview page.
enum QFHelpFileType : int {
  QF_HELP_MASTER = 0,
  QF_HELP_MILLING = 1,
  QF_HELP_TURNING = 2,
  QF_HELP_EDM = 3,
  QF_HELP_MULTIAXIS = 4,
  QF_HELP_API = 5,
  QF_HELP_TBM = 7,
  QF_HELP_AM = 8,
  QF_HELP_SHOPFLOOR = 9,
};

// What a request for help opened.
enum class QFHelpShown {
  kNothing,       // there is no page, and no compiled file that could be opened
  kPage,          // the page of the context
  kOverview,      // the overview page of the area
  kCompiled,      // the compiled file of the area
  kNoProgram,     // there is a page, but no program to open it
  kProgramFailed  // there is a page, and the program to open it failed
};

class KVSHARE_API QFHelpSystem {
 public:
  // The one object. The first call makes it and reads the map.
  static QFHelpSystem* Instance();
  static void DestroyInstance();

  static QFHelpSystem* m_pHlpInstance;
  static int m_IsHlpObjectCreated;

  QFHelpSystem(const QFHelpSystem&) = delete;
  QFHelpSystem& operator=(const QFHelpSystem&) = delete;

  // Each returns 1, also if nothing could be opened; GetShown has what was. flags has no effect. The context is cut to
  // an int to find its page.
  int ShowHelp(QFHelpFileType type, ULONGLONG context, UINT flags);
  // The area's overview page, or the contents or the index of its compiled file.
  int OnHelpFinder(QFHelpFileType type);
  int OnHelpIndex(QFHelpFileType type);

  // Sets out to the path of the context's or the area's page. 1 if the file exists; 0 if it does not; 0 with out
  // unchanged if there is no such context, or the area has no overview page.
  int GenerateHtmlHelpFileName(int context, CString& out) const;
  int GenerateHtmlHelpFileName(QFHelpFileType type, CString& out) const;
  // The path of the area's compiled file, which may be missing.
  CString GetCompiledHelpFileName(QFHelpFileType type) const;

  // The map from context numbers to the names of pages.
  static const std::map<int, CString>& GetContexts() { return m_Contexts; }
  // What the last request opened, and its path; kNothing before the first one.
  QFHelpShown GetShown() const { return m_Shown; }
  const CString& GetShownFile() const { return m_ShownFile; }

 private:
  friend class HelpContextLoader;

  QFHelpSystem();
  ~QFHelpSystem() = default;

  static void ReadContexts(const CString& folder);
  void OpenPage(const CString& page, QFHelpShown kind);
  void OpenCompiled(QFHelpFileType type, UINT command, ULONGLONG context);
  int OpenOverviewOr(QFHelpFileType type, UINT command);

  static std::map<int, CString> m_Contexts;
  QFHelpShown m_Shown = QFHelpShown::kNothing;
  CString m_ShownFile;
};

// Makes the environment's start load the help. InitShareDll calls it; another call changes nothing.
void RegisterHelpContexts();
