// RecordedMessageBoxes answers the library's message boxes while no user is there: it records the text and answers no.
#pragma once

#include <string>

#include "framework/application.h"

namespace kestrova {

class RecordedMessageBoxes : public CWinApp {
 public:
  int DoMessageBox(LPCTSTR text, UINT) override {
    last_ = ToUtf8(CString(text).SpanExcluding(_T("\n")));
    return IDCANCEL;
  }
  // The first line of the last box; empty if there was no box.
  const std::string& Last() const { return last_; }

 private:
  std::string last_;
};

}  // namespace kestrova
