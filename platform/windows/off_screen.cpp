// A context for the device context of a window that is never shown.
#include "platform/off_screen.h"

struct OffScreenContext::State {
  State() = default;
  ~State() {
    if (context) {
      wglMakeCurrent(nullptr, nullptr);
      wglDeleteContext(context);
    }
    if (dc) ReleaseDC(window, dc);
    if (window) DestroyWindow(window);
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  bool Create() {
    window = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    dc = window ? GetDC(window) : nullptr;
    if (!dc) return false;
    PIXELFORMATDESCRIPTOR format = {};
    format.nSize = sizeof format;
    format.nVersion = 1;
    format.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL;
    format.iPixelType = PFD_TYPE_RGBA;
    format.cColorBits = 32;
    format.cDepthBits = 24;
    const int number = ChoosePixelFormat(dc, &format);
    if (number == 0 || !SetPixelFormat(dc, number, &format)) return false;
    context = wglCreateContext(dc);
    return context && wglMakeCurrent(dc, context);
  }

  HWND window = nullptr;
  HDC dc = nullptr;
  HGLRC context = nullptr;
};

OffScreenContext::OffScreenContext() : m_pState(std::make_unique<State>()) {
  if (!m_pState->Create())
    m_sReason = "Windows has no driver of OpenGL (error " + std::to_string(GetLastError()) +
                "); install the driver of the graphics card";
}

OffScreenContext::~OffScreenContext() = default;

OffScreenContext::Function OffScreenContext::Find(const char* name) const {
  return IsCurrent() ? reinterpret_cast<Function>(wglGetProcAddress(name)) : nullptr;
}
