// What the help opens: stand-ins for the desktop's opener and for the viewer of compiled help record their arguments.
#include <gtest/gtest.h>

#include <functional>

#include "platform/paths.h"
#include "share/env/app_env.h"
#include "share/interface/help_system.h"
#include "tests/interface/stand_in_programs.h"

namespace {

using enum QFHelpShown;

TEST(HelpSystem, OpensThePageThenTheCompiledFileThenTheOverview) {
  const kvtest::ScratchFolder folder;
  kvtest::StandInPrograms programs;
  programs.Add("xchm");  // looked for only once in a process
  const std::string root = folder.Path().string() + "/", pages = root + "/HtmlHelp/";
  for (const char* page : {"a.htm", "common_overview.htm"}) folder.Write(std::string("HtmlHelp/") + page, "x");
  folder.Write("edm.chm", "x");
  folder.Write("KVcontext.txt", "IDH_1,a.htm\nIDH_2,gone.htm\n");
  AppEnv()->SetKVHelpPath(ProductPathFromSystem(root).c_str());
  QFHelpSystem::DestroyInstance();  // the start of the environment may have made one
  QFHelpSystem& help = *QFHelpSystem::Instance();

  const auto show = [&](int context) { return [&help, context](auto type) { help.ShowHelp(type, context, 1); }; };
  const auto finder = [&](auto type) { help.OnHelpFinder(type); };
  const auto index = [&](auto type) { help.OnHelpIndex(type); };
  const struct {
    std::function<void(QFHelpFileType)> request;
    QFHelpFileType type;
    int opener;  // exit code of xdg-open; -1: not installed
    QFHelpShown shown;
    std::string calls;
  } rows[] = {
      {show(1), QF_HELP_EDM, 0, kPage, "xdg-open\n" + pages + "a.htm\n"},
      {show(2), QF_HELP_EDM, 0, kCompiled, "xchm\n--contextid=2\n" + root + "edm.chm\n"},
      {show(2), QF_HELP_MILLING, 0, kOverview, "xdg-open\n" + pages + "common_overview.htm\n"},
      {finder, QF_HELP_MASTER, 0, kOverview, "xdg-open\n" + pages + "common_overview.htm\n"},
      {index, QF_HELP_EDM, 0, kCompiled, "xchm\n" + root + "edm.chm\n"},
      {finder, QF_HELP_AM, 0, kNothing, ""},
      {finder, QFHelpFileType(6), 0, kNothing, ""},
      {show(1), QF_HELP_EDM, 3, kNoProgram, "xdg-open\n" + pages + "a.htm\n"},
      {show(1), QF_HELP_EDM, 4, kProgramFailed, "xdg-open\n" + pages + "a.htm\n"},
      {show(1), QF_HELP_EDM, -1, kNoProgram, ""},
  };
  for (const auto& row : rows) {
    programs.Remove("xdg-open");
    if (row.opener >= 0) programs.Add("xdg-open", row.opener);
    row.request(row.type);
    SCOPED_TRACE(&row - rows);
    EXPECT_EQ(help.GetShown(), row.shown);
    EXPECT_EQ(programs.TakeCalls(), row.calls);
  }
  QFHelpSystem::DestroyInstance();
  CloseAppEnv();
}

}  // namespace
