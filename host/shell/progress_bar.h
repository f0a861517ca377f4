// A progress bar on stderr for work that takes longer than half a second. It writes nothing if stderr is not a
// terminal.
//
// Create a bar for the scope of the work and report progress with the library's QFProgressCallback, which the main
// module passes on to Step. So the library's own reports show in the same bar. Main thread only.
#pragma once

#include <string>

#include "platform/types.h"

namespace kestrova {

class ProgressBar {
 public:
  // what is a literal, such as "reading nodes".
  ProgressBar(const char* what, ULONGLONG total);
  // Clears the line.
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  // Sets how much of the innermost bar's total is done; without a bar it does nothing. Always returns 1.
  static int Step(LONGLONG done);

  // The line: "[##########----------]  50% reading nodes". A total of 0 is shown as 100 %.
  static std::string Text(const char* what, ULONGLONG done, ULONGLONG total);

 private:
  void Draw(ULONGLONG done);

  const char* what_;
  ULONGLONG total_;
  LONGLONG next_ms_;  // time of the next drawing
  bool shown_ = false;
  ProgressBar* outer_;
};

}  // namespace kestrova
