// Plain message boxes: how the library, which has no windows, tells a person something and waits for the answer.
//
// Whoever has a person in front, the main module, sets an implementation. Without one the text goes to stderr as one
// line, and the answer is no, so that nobody waits for someone who isn't there. Main thread only.
#pragma once

#include "framework/text.h"

class KVSHARE_API MessageBoxes {
 public:
  virtual ~MessageBoxes();
  // Shows a text, which may have several lines, with an OK button, and waits. True for OK; false if the person wants no
  // more of it.
  virtual bool Show(const CString& text, const CString& caption) = 0;
};

// Sets the implementation, which stays the caller's and is used until the next call; null for none. Gives the former.
KVSHARE_API MessageBoxes* SetMessageBoxes(MessageBoxes* boxes);

// The caption of every box, which may be changed.
KVSHARE_API CString& MessageBoxCaption();

// Shows a text in a box: its answer.
KVSHARE_API bool ShowMessageBox(const CString& text);
