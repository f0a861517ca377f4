// The help: its context table and the names of pages. What is opened is in linux_help_test.cpp.
#include "share/interface/help_system.h"

#include <gtest/gtest.h>

#include <map>

#include "platform/paths.h"
#include "share/env/app_env.h"
#include "share/interface/spindle_status.h"
#include "tests/scratch.h"

namespace {

using Contexts = std::map<int, std::string>;

TEST(HelpSystem, ReadsTheContextTable) {
  const std::string filler(996, 'x');
  const std::pair<std::string, Contexts> rows[] = {
      {"IDH_1234,toolpath_basics.htm\n", {{1234, "toolpath_basics.htm"}}},
      {"# IDH_1,a\n\n  IDH_5,a.htm\nidh_6,b\nIDH_7\n", {}},
      {"IDH_1,a\r\nIDH_1, b,c \t\r\nIDH_-2,\nIDH_x,z", {{1, " b,c"}, {-2, ""}, {0, "z"}}},
      {"IDH_1," + filler + "IDH_2,b\n", {{1, filler.substr(0, 994)}}},  // the rest begins with "xx"
      {"IDH_1," + filler.substr(2) + "IDH_2,b\n", {{1, filler.substr(2)}, {2, "b"}}},
      {"IDH_99999999999,big\n", {{2147483647, "big"}}},
  };
  const kvtest::ScratchFolder folder;
  for (const auto& [text, expected] : rows) {
    folder.Write("KVcontext.txt", text);
    AppEnv()->SetKVHelpPath(CString(ProductPathFromSystem(folder.Path().string()).c_str()) + _T("\\"));
    QFHelpSystem::DestroyInstance();  // the start of the environment may have made one
    QFHelpSystem::Instance();
    Contexts read;
    for (const auto& [context, page] : QFHelpSystem::GetContexts()) read[context] = ToUtf8(page);
    EXPECT_EQ(read, expected) << text;
  }
  QFHelpSystem::DestroyInstance();
  CloseAppEnv();
}

TEST(HelpSystem, StartOfTheEnvironmentLoadsTheTable) {
  QFHelpSystem::DestroyInstance();
  InitShareDll();
  CloseAppEnv();
  InitAppEnv();
  EXPECT_EQ(QFHelpSystem::m_IsHlpObjectCreated, 1);
  ASSERT_TRUE(QFHelpSystem::GetContexts().contains(1234));
  CString page;
  EXPECT_EQ(QFHelpSystem::Instance()->GenerateHtmlHelpFileName(1234, page), 1);
  EXPECT_EQ(page, AppEnv()->GetKVHelpPath() + _T("\\HtmlHelp\\toolpath_basics.htm"));
  AppEnv()->SetKVHelpPath(_T("\\none\\"));
  EXPECT_EQ(QFHelpSystem::Instance()->GenerateHtmlHelpFileName(1234, page), 0);
  EXPECT_EQ(page, _T("\\none\\\\HtmlHelp\\toolpath_basics.htm"));
  EXPECT_EQ(QFHelpSystem::Instance()->GenerateHtmlHelpFileName(QFHelpFileType(6), page), 0);
  EXPECT_EQ(QFHelpSystem::Instance()->GetCompiledHelpFileName(QFHelpFileType(6)), _T("\\none\\Milling.chm"));
  CloseAppEnv();
}

TEST(SpindleStatus, DefaultsDifferAndOtherTypesAreTheFirst) {
  QFSpindleStatus status;
  EXPECT_EQ(status.GetClampState(QF_SPINDLE_FIRST), 0);
  EXPECT_EQ(status.GetClampState(QF_SPINDLE_SECOND), 1);
  EXPECT_EQ(status.GetState(QF_SPINDLE_FIRST), 0);
  EXPECT_EQ(status.GetState(QF_SPINDLE_SECOND), 1);
  EXPECT_EQ(status.GetStepLocatingMethod(QF_SPINDLE_SECOND), 1);
  status.SetCAxisAngle(QF_ENUM_SPINDLE_TYPE(2), 30);
  EXPECT_EQ(status.GetCAxisAngle(QF_SPINDLE_FIRST), 30);
  EXPECT_EQ(status.GetCAxisAngle(QF_SPINDLE_SECOND), 0);
  status.MovePart(5);
  status.MovePart(-2);
  EXPECT_EQ(status.GetPartMoveDistance(), 3);
  EXPECT_EQ(status.GetLocation(QF_SPINDLE_FIRST), 0);
}

}  // namespace
