// A virtual X server for the process, and a user who presses its keys and clicks its mouse.
#pragma once

#include <sys/types.h>

#include <string>

namespace kvtest {

// Sets DISPLAY. Running() is false if Xvfb cannot be started.
class XServer {
 public:
  XServer();
  ~XServer();
  XServer(const XServer&) = delete;
  XServer& operator=(const XServer&) = delete;
  bool Running() const { return !display_.empty(); }

 private:
  pid_t process_ = -1;
  std::string display_;
};

// Calls xdotool with these words, and waits.
void UserDoes(const std::string& words);

}  // namespace kvtest
