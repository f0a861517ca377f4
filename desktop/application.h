// Qt's application object, which fonts and windows need.
#pragma once

#include <functional>

// True if the process has one; makes one if there is no application object at all. The new one uses Qt's own platform
// without a display. A host that uses Qt makes its application before it draws.
bool HasGuiApplication();

// True if windows can be shown: the host has a QApplication, or an X server is reachable. In the second case a thread
// of this module runs the QApplication until the process ends. Not after HasGuiApplication has made one without a
// display.
bool CanShowWindows();

// Runs the work on the thread of the QApplication and waits for its end.
void RunOnGuiThread(const std::function<void()>& work);
