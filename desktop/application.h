// Qt's application object, which fonts and windows need.
#pragma once

// True if the process has one; makes one if there is no application object at all. The new one uses Qt's own platform
// without a display. A host that uses Qt makes its application before it draws.
bool HasGuiApplication();
