// A context of EGL without a surface. The library is loaded at the first context: few programs draw, and it may be
// missing.
#include "platform/off_screen.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <dlfcn.h>

#include <cstdio>

namespace {

// The calls that are used, from the library.
struct Egl {
  decltype(&eglGetProcAddress) GetProcAddress = nullptr;
  decltype(&eglGetDisplay) GetDisplay = nullptr;
  decltype(&eglInitialize) Initialize = nullptr;
  decltype(&eglBindAPI) BindAPI = nullptr;
  decltype(&eglChooseConfig) ChooseConfig = nullptr;
  decltype(&eglCreateContext) CreateContext = nullptr;
  decltype(&eglDestroyContext) DestroyContext = nullptr;
  decltype(&eglMakeCurrent) MakeCurrent = nullptr;
  decltype(&eglGetError) GetError = nullptr;
  bool loaded = false;

  Egl() {
    void* const library = dlopen("libEGL.so.1", RTLD_NOW | RTLD_LOCAL);
    if (!library) return;
    loaded = true;
    const auto find = [&](auto& function, const char* name) {
      function = reinterpret_cast<std::decay_t<decltype(function)>>(dlsym(library, name));
      loaded = loaded && function;
    };
    find(GetProcAddress, "eglGetProcAddress");
    find(GetDisplay, "eglGetDisplay");
    find(Initialize, "eglInitialize");
    find(BindAPI, "eglBindAPI");
    find(ChooseConfig, "eglChooseConfig");
    find(CreateContext, "eglCreateContext");
    find(DestroyContext, "eglDestroyContext");
    find(MakeCurrent, "eglMakeCurrent");
    find(GetError, "eglGetError");
  }
};

// Loaded once and never unloaded: the drivers register functions for the end of the process.
const Egl& TheEgl() {
  static const Egl egl;
  return egl;
}

// A display that needs no window system; otherwise the default one. It stays initialised, and a second initialisation
// does nothing.
EGLDisplay OpenDisplay(const Egl& egl) {
  const auto platform =
      reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(egl.GetProcAddress("eglGetPlatformDisplayEXT"));
  EGLDisplay display =
      platform ? platform(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr) : EGL_NO_DISPLAY;
  if (display != EGL_NO_DISPLAY && egl.Initialize(display, nullptr, nullptr)) return display;
  display = egl.GetDisplay(EGL_DEFAULT_DISPLAY);
  return display != EGL_NO_DISPLAY && egl.Initialize(display, nullptr, nullptr) ? display : EGL_NO_DISPLAY;
}

std::string NoDriver(const Egl& egl) {
  char number[16];
  std::snprintf(number, sizeof number, "0x%X", unsigned(egl.GetError()));
  return std::string("EGL has no driver that draws without a window (EGL error ") + number +
         "); install Mesa's, package libgl1-mesa-dri";
}

}  // namespace

struct OffScreenContext::State {
  EGLDisplay display = EGL_NO_DISPLAY;
  EGLContext context = EGL_NO_CONTEXT;
};

OffScreenContext::OffScreenContext() : m_pState(std::make_unique<State>()) {
  const Egl& egl = TheEgl();
  if (!egl.loaded) {
    m_sReason = "libEGL.so.1 cannot be loaded; install the package libegl1";
    return;
  }
  m_pState->display = OpenDisplay(egl);
  constexpr EGLint kWanted[] = {EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
  EGLConfig config = nullptr;
  EGLint configs = 0;
  if (m_pState->display != EGL_NO_DISPLAY && egl.BindAPI(EGL_OPENGL_API) &&
      egl.ChooseConfig(m_pState->display, kWanted, &config, 1, &configs) && configs > 0)
    m_pState->context = egl.CreateContext(m_pState->display, config, EGL_NO_CONTEXT, nullptr);
  if (m_pState->context == EGL_NO_CONTEXT ||
      !egl.MakeCurrent(m_pState->display, EGL_NO_SURFACE, EGL_NO_SURFACE, m_pState->context))
    m_sReason = NoDriver(egl);
}

OffScreenContext::~OffScreenContext() {
  if (m_pState->context == EGL_NO_CONTEXT) return;
  TheEgl().MakeCurrent(m_pState->display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
  TheEgl().DestroyContext(m_pState->display, m_pState->context);
}

OffScreenContext::Function OffScreenContext::Find(const char* name) const {
  return IsCurrent() ? TheEgl().GetProcAddress(name) : nullptr;
}
