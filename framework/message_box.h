// Plain message boxes: the library has no windows and asks the user through this interface.
//
// The main module sets an implementation. Without one, the text is printed to stderr as one line and the answer is
// false, so that no program waits for a user who is not there. Main thread only.
#pragma once

#include "framework/text.h"

class KVSHARE_API MessageBoxes {
 public:
  virtual ~MessageBoxes();
  // Shows a text, which may have several lines, with an OK button, and waits. Returns true for OK, and false if the
  // user wants to see no more such messages.
  virtual bool Show(const CString& text, const CString& caption) = 0;
};

// Sets the implementation and returns the earlier one, or null. It stays the caller's and is used until the next call;
// null means no implementation.
KVSHARE_API MessageBoxes* SetMessageBoxes(MessageBoxes* boxes);

// The caption of every box. The caller may change it.
KVSHARE_API CString& MessageBoxCaption();

// Shows a text in a box and returns its answer.
KVSHARE_API bool ShowMessageBox(const CString& text);
