// Mails: stand-ins for the desktop's mail programs record their arguments.
#include <gtest/gtest.h>

#include "platform/paths.h"
#include "share/core/document_callbacks.h"
#include "share/interface/mail.h"
#include "tests/interface/stand_in_programs.h"
#include "tests/registered.h"

namespace {

int g_messages = 0;

// A main module that counts the messages and wants no boxes.
void CountMessages() {
  QFShareRegisterDocCBK(
      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
      [](short* flag) {
        ++g_messages;
        *flag = 0;
      },
      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
}

TEST(Mail, HasEmailNeedsTheOpenerAndAProgram) {
  const struct {
    bool opener, query;
    const char* program;
    int has;
  } rows[] = {
      {false, true, "mail.desktop", 0}, {true, false, "", 0}, {true, true, "", 0}, {true, true, "mail.desktop", 1}};
  for (const auto& row : rows) {
    kvtest::StandInPrograms programs;
    if (row.opener) programs.Add("xdg-email");
    if (row.query) programs.Add("xdg-mime", 0, row.program);
    CQFIMapi::m_isMailAvail = -1;
    EXPECT_EQ(CQFIMapi::HasEmail(), row.has) << row.program;
    EXPECT_EQ(CQFIMapi::m_isMailAvail, row.has);
  }
}

TEST(Mail, SendsThreeAttachmentsWithABlankForEach) {
  const kvtest::ScratchFolder folder;
  kvtest::StandInPrograms programs;
  programs.Add("xdg-email");
  std::string expected = "xdg-email\n--utf8\n--subject\nA \xC3\xA4\n--body\ntext   \n--cc\nc@example.com\n";
  CQFIMapi mail;
  for (const char* name : {"a b.txt", "c.dmp", "d"}) {
    const std::string path = folder.Write(name, "x").string();
    mail.Attach(ToUtf8(ProductPathFromSystem(path)).c_str(), *name == 'd' ? "title" : nullptr);
    expected += "--attach\n" + path + "\n";
  }
  mail.From("me@example.com");
  mail.To("SMTP:to@example.com");
  mail.Cc("c@example.com");
  mail.To("other@example.com");
  mail.Subject("A \xC3\xA4");
  mail.BodyText("text");
  EXPECT_EQ(mail.Send(0), 1);
  EXPECT_EQ(programs.TakeCalls(), expected + "to@example.com\nother@example.com\n");
  mail.To("again@example.com");
  EXPECT_EQ(mail.Send(0), 1) << "the recipients of the first mail are forgotten";
  EXPECT_EQ(programs.TakeCalls(), "xdg-email\n--utf8\n--subject\nA \xC3\xA4\n--body\ntext\nagain@example.com\n");
  EXPECT_EQ(mail.Error(), CQFIMapi::kNoError);
}

TEST(Mail, FailuresGiveNoAnswerOfSuccess) {
  const struct {
    int code;  // of xdg-email; -1: not installed
    const char *to, *file;
    int error, sent;
    int messages;
    const char* calls;
  } rows[] = {{4, "a@b", nullptr, CQFIMapi::kNoError, 0, 1, "xdg-email\n--utf8\na@b\n"},
              {0, "--attach", nullptr, CQFIMapi::kNoError, 0, 1, ""},
              {0, "a@b", "\\none\\x", CQFIMapi::kNoError, 0, 1, ""},
              {-1, "a@b", nullptr, CQFIMapi::kNoLibrary, 0, 2, ""}};
  CountMessages();
  for (const auto& row : rows) {
    g_messages = 0;
    kvtest::StandInPrograms programs;
    if (row.code >= 0) programs.Add("xdg-email", row.code);
    CQFIMapi mail;
    EXPECT_EQ(mail.Error(), row.error);
    EXPECT_EQ(mail.Error(), CQFIMapi::kNoError) << "it is cleared";
    mail.To(row.to);
    if (row.file) mail.Attach(row.file, nullptr);
    EXPECT_EQ(mail.Send(0), row.sent) << row.to;
    EXPECT_EQ(programs.TakeCalls(), row.calls);
    EXPECT_EQ(g_messages, row.messages) << row.to;
  }
  kvtest::Register({});
}

}  // namespace
