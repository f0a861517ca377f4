// The choice of a presentation for a box or dialog.
#pragma once

#include "platform/linux/dialog_view.h"

// Null if the user cannot be asked; the text then goes to stderr.
std::unique_ptr<DialogView> OpenView(const DialogState& state);

// True if the desktop module may be able to show windows: the process uses Qt, or has the name of an X server.
bool HasDesktop();

// Both null if they do not apply.
std::unique_ptr<DialogView> OpenAnswers(const DialogState& state);
std::unique_ptr<DialogView> OpenTerminal();
