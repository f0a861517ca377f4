#include "tests/desktop/boxes/x_server.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

namespace kvtest {

// The server writes its number to the pipe when it is ready.
XServer::XServer() {
  int ends[2];
  if (pipe(ends) != 0) return;
  process_ = fork();
  if (process_ == 0) {
    close(ends[0]);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, 2);
    const std::string number = std::to_string(ends[1]);
    execlp("Xvfb", "Xvfb", "-displayfd", number.c_str(), "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset",
           static_cast<char*>(nullptr));
    _exit(127);
  }
  close(ends[1]);
  std::string number;
  for (char byte = 0; read(ends[0], &byte, 1) == 1 && byte != '\n';) number += byte;
  close(ends[0]);
  if (number.empty()) return;
  display_ = ":" + number;
  setenv("DISPLAY", display_.c_str(), 1);
}

XServer::~XServer() {
  if (process_ <= 0) return;
  kill(process_, SIGTERM);
  waitpid(process_, nullptr, 0);
}

void UserDoes(const std::string& words) { EXPECT_EQ(std::system(("xdotool " + words).c_str()), 0) << words; }

}  // namespace kvtest
