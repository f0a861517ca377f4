// RecordedMessageBoxes answers the library's message boxes while no user is there: it records the text and answers no.
#pragma once

#include <string>

#include "framework/message_box.h"

namespace kestrova {

class RecordedMessageBoxes : public MessageBoxes {
 public:
  RecordedMessageBoxes() : previous_(SetMessageBoxes(this)) {}
  ~RecordedMessageBoxes() override { SetMessageBoxes(previous_); }
  RecordedMessageBoxes(const RecordedMessageBoxes&) = delete;
  RecordedMessageBoxes& operator=(const RecordedMessageBoxes&) = delete;

  bool Show(const CString& text, const CString&) override {
    last_ = ToUtf8(text.SpanExcluding(_T("\n")));
    return false;
  }
  // The first line of the last box; empty if there was no box.
  const std::string& Last() const { return last_; }

 private:
  std::string last_;
  MessageBoxes* previous_;
};

}  // namespace kestrova
