// Answers to boxes and dialogs in a file, for tests and unattended use. On Linux the variable KV_ANSWERS names the
// file; each process reads it when its first box comes.
//
// A line for each box, in their order: the box's caption, ": ", its text, " -> ", and what to press.
//
//   # the tool is in use, so it stays
//   Warning: The tool is used by 3 operations. Delete it? -> No
//   *: File * could not be found* -> Cancel
//   Kestrova: Units differ* -> Do not show this message again, OK
//
// Caption and text have one blank for each run of blanks and line ends, as the line on stderr has for a box that cannot
// appear. A "*" stands for any text. A name to press is a button's or check box's label without its "&", the English
// label of a standard button (OK, Cancel, Abort, Retry, Ignore, Yes, No, Help), "#" and the control's number, or
// "close" for the window's close button; letter case does not count. Several names are pressed in their order. Lines
// that are empty or begin with "#" do not count. The file is UTF-8.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

struct BoxAnswer {
  int line = 0;  // in the file, from 1
  std::string expected;
  std::vector<std::string> presses;  // at least one
};

struct BoxAnswers {
  std::vector<BoxAnswer> answers;
  int error_line = 0;
  std::string error;  // of the line; empty without a fault
};

// Parses the file's text. After the first fault, `answers` has the lines before it.
KVSHARE_API BoxAnswers ParseBoxAnswers(std::string_view text);

// Whether a text fits the expected one, in which a "*" stands for any text.
bool FitsPattern(std::string_view pattern, std::string_view text);
