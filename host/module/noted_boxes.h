// While it lives, what the library has to say to a person, who isn't there, is taken down, and every question is
// answered with no.
#pragma once

#include <string>

#include "framework/message_box.h"

namespace kestrova {

class NotedBoxes : public MessageBoxes {
 public:
  NotedBoxes() : former_(SetMessageBoxes(this)) {}
  ~NotedBoxes() override { SetMessageBoxes(former_); }
  NotedBoxes(const NotedBoxes&) = delete;
  NotedBoxes& operator=(const NotedBoxes&) = delete;

  bool Show(const CString& text, const CString&) override {
    said_ = ToUtf8(text.SpanExcluding(_T("\n")));
    return false;
  }
  // The first line of the last box; empty if there was none.
  const std::string& Said() const { return said_; }

 private:
  std::string said_;
  MessageBoxes* former_;
};

}  // namespace kestrova
