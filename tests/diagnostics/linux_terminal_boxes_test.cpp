// Messages as questions on a pseudo-terminal.
#include <pty.h>

#include "tests/child_process.h"
#include "tests/diagnostics/boxes.h"

namespace {

struct Answered {
  int code;
  std::string screen;
};

// Runs the body in a child with a terminal of its own, on which `typed` is typed; the code is the body's result.
Answered OnTerminal(const std::string& typed, const std::function<int()>& body) {
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    for (LPCTSTR name : {_T("DISPLAY"), _T("KV_ANSWERS")}) SetEnvironmentVariableW(name, nullptr);
    SetEnvironmentVariableW(_T("TERM"), _T("dumb"));
    _exit([&]() noexcept { return body() & 0xFF; }());
  }
  EXPECT_EQ(write(terminal, typed.data(), typed.size()), ssize_t(typed.size()));
  std::string screen;
  char block[512];
  for (ssize_t got; (got = read(terminal, block, sizeof block)) > 0;) screen.append(block, std::size_t(got));
  close(terminal);
  std::erase(screen, '\r');
  return {kvtest::ExitCode(child), screen};
}

TEST(TerminalBoxes, EachCaseIsAnsweredByLetters) {
  kvtest::UseLanguage("English");
  std::vector<kvtest::BoxCase> former;
  for (const kvtest::BoxCase& row : kvtest::BoxCases()) {
    SCOPED_TRACE(row.typed + " to " + row.question);
    // The focus of a box may come from an earlier one that was not relabelled.
    const int focus = former.empty() ? 0 : former.back().labels.empty() ? former.back().focus : 0;
    const Answered answered = OnTerminal(row.typed, [&] {
      if (focus) Outcome().SetMessageBoxButtonFocus(focus);
      const unsigned result = kvtest::Show(row);
      return row.help == 42 && kvtest::g_helped != 42 ? 99 : int(result);
    });
    EXPECT_EQ(answered.code, int(row.result & 0xFF));
    const std::size_t bar = row.question.find('|');
    if (bar != std::string::npos) {
      EXPECT_NE(answered.screen.find(row.question.substr(0, bar) + "\nDelete\nit?\n"), std::string::npos)
          << answered.screen;
      EXPECT_NE(answered.screen.find(row.question.substr(bar + 1) + ": "), std::string::npos) << answered.screen;
    }
    former = {row};
  }
}

TEST(TerminalBoxes, EachDialogIsAnsweredByLetters) {
  for (const kvtest::DialogCase& row : kvtest::DialogCases()) {
    SCOPED_TRACE(row.language + ": " + row.typed);
    if (row.typed.ends_with('#')) continue;  // a terminal has no close button
    const Answered answered = OnTerminal(row.typed, [&] {
      SetEnvironmentVariableW(_T("LC_ALL"), row.language == "German" ? _T("de_DE") : _T("C"));
      const kvtest::DialogResult result = kvtest::Show(row);
      return result.result | result.shown << 2 | result.updates << 3;
    });
    EXPECT_EQ(answered.code, row.result | row.shown_after << 2 | row.updates_after << 3);
    EXPECT_NE(answered.screen.find(row.question), std::string::npos) << answered.screen;
  }
}

TEST(TerminalBoxes, EndOfInputFailsAndTextsCannotControlTheTerminal) {
  kvtest::UseLanguage("German");
  const Answered answered = OnTerminal("\x04", [] {
    SetEnvironmentVariableW(_T("LC_ALL"), _T("de_DE"));
    return int(Outcome(0, SEVERITY_WARNING_YES_NO).Display(CString(_T("L\u00F6schen?\x1b[2J"))));
  });
  EXPECT_EQ(answered.code, 0);
  EXPECT_NE(answered.screen.find("Warnung\nLöschen? [2J\n[J]a  [N]ein  Enter = Ja: "), std::string::npos)
      << answered.screen;
}

}  // namespace
