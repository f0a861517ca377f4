// Messages answered from a file, and those that are not shown.
#include "tests/diagnostics/boxes.h"

#include <gmock/gmock.h>

#include "platform/errors.h"
#include "share/diagnostics/application_access.h"
#include "share/diagnostics/message_callback.h"
#include "share/diagnostics/system_error.h"

namespace {

using kvtest::Answers;

class Messages : public testing::Test {
 protected:
  Messages() { kvtest::UseLanguage("English"); }
  ~Messages() override { kvtest::g_alerts = -1; }
};

TEST_F(Messages, EachCaseIsAnsweredFromTheFile) {
  for (const kvtest::BoxCase& row : kvtest::BoxCases()) {
    SCOPED_TRACE(row.press + " of " + row.question);
    kvtest::g_helped = 0;
    const Answers answers(row.question.substr(0, row.question.find('|')) + ": Delete it? -> " + row.press);
    EXPECT_EQ(kvtest::Show(row), row.result);
    EXPECT_EQ(kvtest::g_helped, row.help == 42 ? 42u : 0u);
  }
}

TEST_F(Messages, EachDialogIsAnsweredFromTheFile) {
  ProductInfo product;
  product.m_ProductName = _T("X");
  kvtest::g_product = &product;
  for (const kvtest::DialogCase& row : kvtest::DialogCases()) {
    SCOPED_TRACE(row.language + ": " + row.press);
    const Answers answers(row.press.empty() ? "" : (row.message ? "X: Delete it? -> " : "X: Das W* -> ") + row.press);
    EXPECT_EQ(kvtest::Show(row), (kvtest::DialogResult{row.result, row.shown_after, row.updates_after}));
  }
  kvtest::g_product = nullptr;
}

TEST_F(Messages, SilentModeAnswersYesUnlessAlwaysShown) {
  kvtest::g_alerts = 0;
  const Answers answers("Information: Barrel -> Cancel\n");
  Outcome outcome(0, SEVERITY_INFORMATION_YES_NO_CANCEL);
  EXPECT_EQ(outcome.Display(65493), unsigned(IDYES));
  outcome.SetAlwaysShowMsg(1);
  EXPECT_EQ(outcome.Display(65493), unsigned(IDCANCEL));
  EXPECT_EQ(outcome.Display(64999), unsigned(IDYES)) << "an unknown string";
}

TEST_F(Messages, TextAndCaptionHaveTheProductsWords) {
  ProductInfo product;
  product.m_ProductName = _T("X");
  product.m_HostProductWord = _T("Y");
  kvtest::g_product = &product;
  const Answers answers("Own caption: X for Y, 3 -> OK\nInformation: Kestrova -> OK\n");
  CString text = _T("Kestrova for SolidWorks, 3");
  EXPECT_EQ(Outcome(1, SEVERITY_INFORMATION, 7).Display(text), unsigned(IDOK));
  Outcome plain(0, SEVERITY_INFORMATION, 0, Outcome::kNoHelp, nullptr, /*productSpecific=*/0);
  EXPECT_EQ(plain.Display(1), unsigned(IDOK));
  kvtest::g_product = nullptr;
  EXPECT_EQ(plain.Ok(), 1);
  EXPECT_EQ(Outcome(1).Ok(), 0);
}

TEST_F(Messages, UnexpectedBoxEndsTheRun) {
  const std::pair<std::string, std::string> rows[] = {
      {"", "there is no line for this box; to expect it, add\nInformation: Delete it. -> OK"},
      {"*: Keep* -> OK", "line 1 expects \"\\*: Keep\\*\" but the box is \"Information: Delete it.\""},
      {"# why\n* -> Yes", "line 2: nothing named \"Yes\" can be pressed; the box has \"OK\""},
      {"\nInformation", "line 2: there is no \" -> \" between the expected text and what to press"}};
  for (const auto& [file, error] : rows) {
    const Answers answers(file);
    EXPECT_EXIT(Outcome().Display(CString(_T("Delete\r\nit."))), testing::ExitedWithCode(3), error);
  }
}

TEST_F(Messages, SystemErrorIsShownOnce) {
  SetLastError(0);
  testing::internal::CaptureStdout();
  EXPECT_EQ(ShowError(), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "No errors to report\n");
  const Answers answers("Information: The disk is full. -> OK\n");
  SetLastError(DWORD(ERROR_DISK_FULL));
  EXPECT_EQ(ShowError(), 1);
}

TEST_F(Messages, CallbackGetsItsArguments) {
  EXPECT_EQ(QFMessageCallback(5), 0) << "no callback";
  static CString received;
  QFShareRegisterDocCBK(
      nullptr, nullptr, nullptr,
      [](unsigned id, char*& arguments) {
        const int count = NextMessageArgument<int>(arguments);
        const CString text = NextMessageArgument<LPCTSTR>(arguments);
        received.Format(_T("%u %d %s %g"), id, count, text, NextMessageArgument<double>(arguments));
        return 9;
      },
      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
      nullptr, nullptr);
  EXPECT_EQ(QFMessageCallback(5, -3, CString(_T("tool")), 2.5f), 9);
  EXPECT_EQ(received, _T("5 -3 tool 2.5"));
}

TEST_F(Messages, WithoutAUserTheTextGoesToStderrAndTheBoxFails) {
  SetEnvironmentVariableW(_T("DISPLAY"), nullptr);
  testing::internal::CaptureStderr();
  EXPECT_EQ(Outcome(0, SEVERITY_WARNING_YES_NO).Display(CString(_T("Delete\n it?"))), 0u);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Warning: Delete it?\n");
}

}  // namespace
