// The choice of a presentation for a box or dialog.
#pragma once

#include "platform/linux/dialog_view.h"

// True if the process uses Qt, so that it may have windows.
bool IsQtLoaded();

// Null if the user cannot be asked; the text then goes to stderr.
std::unique_ptr<DialogView> OpenView(const DialogState& state);

// Both null if they do not apply.
std::unique_ptr<DialogView> OpenAnswers(const DialogState& state);
std::unique_ptr<DialogView> OpenTerminal();
