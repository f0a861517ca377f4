// Boxes and dialogs as windows.
#pragma once

#include <memory>

#include "platform/linux/dialog_view.h"

// Null if windows cannot be shown.
std::unique_ptr<DialogView> OpenDialogWindow();

// Enables or disables a window of the host. True if it was disabled before; false also if there is no such window.
bool EnableHostWindow(HWND window, bool enable);

// Shows the wait cursor over all windows of the application, or ends that. Does nothing without an application.
void ShowWaitCursor(bool wait);
