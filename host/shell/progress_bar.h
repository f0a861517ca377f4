// A progress bar on the terminal, on stderr, for what takes longer than half a second. Where stderr is no terminal
// nothing is written.
//
// Whoever does the work makes a bar for its scope and reports by the library's QFProgressCallback, which the main
// module hands to Step: what the library itself reports then shows in the same bar. On the main thread alone.
#pragma once

#include <string>

#include "platform/types.h"

namespace kestrova {

class ProgressBar {
 public:
  // what is a literal, such as "reading nodes".
  ProgressBar(const char* what, ULONGLONG total);
  // Wipes the line.
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  // Tells the innermost bar how much is done. Does nothing without one. Always 1.
  static int Step(LONGLONG done);

  // The line: "[##########----------]  50% reading nodes". Of nothing, all is done.
  static std::string Text(const char* what, ULONGLONG done, ULONGLONG total);

 private:
  void Draw(ULONGLONG done);

  const char* what_;
  ULONGLONG total_;
  LONGLONG next_ms_;  // when it may be drawn
  bool shown_ = false;
  ProgressBar* outer_;
};

}  // namespace kestrova
