// An image is a framebuffer with renderbuffers for colour and depth. One with samples has a second framebuffer, in
// which the samples of each pixel are averaged before it is read.
#include <algorithm>

#include "platform/off_screen.h"
#include "platform/opengl.h"

#include <GL/glext.h>

namespace {

constexpr GLsizei kBytesOfPixel = 3;

// The functions for framebuffers, which OpenGL 1.1 does not have.
struct Framebuffers {
  PFNGLGENFRAMEBUFFERSPROC Gen;
  PFNGLDELETEFRAMEBUFFERSPROC Delete;
  PFNGLBINDFRAMEBUFFERPROC Bind;
  PFNGLCHECKFRAMEBUFFERSTATUSPROC Check;
  PFNGLBLITFRAMEBUFFERPROC Blit;
  PFNGLGENRENDERBUFFERSPROC GenBuffers;
  PFNGLDELETERENDERBUFFERSPROC DeleteBuffers;
  PFNGLBINDRENDERBUFFERPROC BindBuffer;
  PFNGLRENDERBUFFERSTORAGEMULTISAMPLEPROC Store;
  PFNGLFRAMEBUFFERRENDERBUFFERPROC Attach;

  explicit Framebuffers(const OffScreenContext& context) {
    const auto find = [&](auto& function, const char* name) {
      function = reinterpret_cast<std::decay_t<decltype(function)>>(context.Find(name));
      m_bComplete = m_bComplete && function;
    };
    find(Gen, "glGenFramebuffers");
    find(Delete, "glDeleteFramebuffers");
    find(Bind, "glBindFramebuffer");
    find(Check, "glCheckFramebufferStatus");
    find(Blit, "glBlitFramebuffer");
    find(GenBuffers, "glGenRenderbuffers");
    find(DeleteBuffers, "glDeleteRenderbuffers");
    find(BindBuffer, "glBindRenderbuffer");
    find(Store, "glRenderbufferStorageMultisample");
    find(Attach, "glFramebufferRenderbuffer");
  }
  bool m_bComplete = true;
};

}  // namespace

struct OffScreenImage::State {
  State(const OffScreenContext& context, int width, int height) : gl(context), m_Width(width), m_Height(height) {}
  ~State() {
    if (!gl.m_bComplete) return;
    gl.Bind(GL_FRAMEBUFFER, 0);
    gl.Delete(2, m_Frames);
    gl.DeleteBuffers(3, m_Buffers);
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  // False if the driver can't draw on such an image.
  bool Create(int samples) {
    gl.Gen(2, m_Frames);
    gl.GenBuffers(3, m_Buffers);
    if (samples > 0) {
      gl.Bind(GL_FRAMEBUFFER, m_Frames[1]);
      AddBuffer(m_Buffers[2], GL_RGBA8, 0, GL_COLOR_ATTACHMENT0);
      if (!IsComplete()) return false;
    }
    m_bSampled = samples > 0;
    gl.Bind(GL_FRAMEBUFFER, m_Frames[0]);
    AddBuffer(m_Buffers[0], GL_RGBA8, samples, GL_COLOR_ATTACHMENT0);
    AddBuffer(m_Buffers[1], GL_DEPTH_COMPONENT24, samples, GL_DEPTH_ATTACHMENT);
    return IsComplete();
  }

  void AddBuffer(GLuint buffer, GLenum format, int samples, GLenum place) const {
    gl.BindBuffer(GL_RENDERBUFFER, buffer);
    gl.Store(GL_RENDERBUFFER, samples, format, m_Width, m_Height);
    gl.Attach(GL_FRAMEBUFFER, place, GL_RENDERBUFFER, buffer);
  }
  bool IsComplete() const { return gl.Check(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE && glGetError() == GL_NO_ERROR; }

  void AverageSamples() const {
    gl.Bind(GL_READ_FRAMEBUFFER, m_Frames[0]);
    gl.Bind(GL_DRAW_FRAMEBUFFER, m_Frames[1]);
    gl.Blit(0, 0, m_Width, m_Height, 0, 0, m_Width, m_Height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    gl.Bind(GL_FRAMEBUFFER, m_Frames[1]);
  }

  const Framebuffers gl;
  const GLsizei m_Width, m_Height;
  GLuint m_Frames[2] = {};   // to draw on, to read from
  GLuint m_Buffers[3] = {};  // colour and depth of the first, colour of the second
  bool m_bSampled = false;
};

OffScreenImage::OffScreenImage(const OffScreenContext& context, int width, int height, int samples)
    : m_sReason(context.Reason()) {
  if (!m_sReason.empty()) return;
  GLint largest = 0, most = 0;
  glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &largest);
  glGetIntegerv(GL_MAX_SAMPLES, &most);
  if (width < 1 || height < 1 || std::max(width, height) > largest) {
    m_sReason = "the driver of OpenGL draws on images of 1 to " + std::to_string(largest) + " pixels a side";
    return;
  }
  m_pState = std::make_unique<State>(context, width, height);
  glGetError();  // forgets an old one
  if (!m_pState->gl.m_bComplete || !m_pState->Create(std::clamp(samples, 0, int(most)))) {
    m_sReason = "the driver of OpenGL cannot draw on an image in memory of this size";
    return;
  }
  glViewport(0, 0, width, height);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

OffScreenImage::~OffScreenImage() = default;

bool OffScreenImage::Read(std::vector<BYTE>& rgb) {
  if (!m_pState || !IsReady()) return false;
  const State& state = *m_pState;
  glGetError();
  if (state.m_bSampled) state.AverageSamples();
  const std::size_t row = std::size_t(state.m_Width) * kBytesOfPixel;
  rgb.resize(row * std::size_t(state.m_Height));
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glReadPixels(0, 0, state.m_Width, state.m_Height, GL_RGB, GL_UNSIGNED_BYTE, rgb.data());
  const bool read = glGetError() == GL_NO_ERROR;
  state.gl.Bind(GL_FRAMEBUFFER, state.m_Frames[0]);
  // OpenGL's first row is at the bottom.
  for (std::size_t top = 0, bottom = rgb.size(); top + row < bottom; top += row) {
    bottom -= row;
    std::swap_ranges(rgb.begin() + std::ptrdiff_t(top), rgb.begin() + std::ptrdiff_t(top + row),
                     rgb.begin() + std::ptrdiff_t(bottom));
  }
  return read;
}
