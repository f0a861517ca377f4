// Drawing by OpenGL without a window: OffScreenContext makes a context current, OffScreenImage is an image in memory
// that OpenGL draws on.
//
//   OffScreenContext context;
//   OffScreenImage image(context, 1600, 1000, /*samples=*/4);
//   if (!image.IsReady()) return image.Reason();
//   Draw();                          // OpenGL 1.1 by its own names, see platform/opengl.h
//   image.Read(rgb);
//
// Nothing throws, apart from std::bad_alloc. Use and destroy both on the thread that created them; while they exist,
// another context must not be made current on it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/types.h"

class KVSHARE_API OffScreenContext {
 public:
  // Loads the driver, makes a context with OpenGL's compatibility profile, and makes it current. Without a display it
  // is Mesa's, which draws by the processor. Reason says why there is none.
  OffScreenContext();
  // No context is current afterwards.
  ~OffScreenContext();
  OffScreenContext(const OffScreenContext&) = delete;
  OffScreenContext& operator=(const OffScreenContext&) = delete;

  bool IsCurrent() const { return m_sReason.empty(); }
  // What is missing, for the user; empty if the context is current.
  const std::string& Reason() const { return m_sReason; }
  // A function of a later OpenGL than 1.1; null if there is none.
  using Function = void (*)();
  Function Find(const char* name) const;

 private:
  struct State;

  std::unique_ptr<State> m_pState;
  std::string m_sReason;
};

class KVSHARE_API OffScreenImage {
 public:
  // Makes the image what the context draws on; it is black with the depths cleared, and the viewport is all of it.
  // width, height: at least 1. samples: of each pixel, for smooth edges; fewer if the driver has fewer. If the context
  // is not current, the image takes its reason.
  OffScreenImage(const OffScreenContext& context, int width, int height, int samples);
  // The context draws nowhere afterwards.
  ~OffScreenImage();
  OffScreenImage(const OffScreenImage&) = delete;
  OffScreenImage& operator=(const OffScreenImage&) = delete;

  bool IsReady() const { return m_sReason.empty(); }
  const std::string& Reason() const { return m_sReason; }
  // Waits for the drawing and copies the pixels: three bytes each, red, green, blue, the top row first. False if OpenGL
  // cannot do it, such as without memory.
  bool Read(std::vector<BYTE>& rgb);

 private:
  struct State;

  std::unique_ptr<State> m_pState;
  std::string m_sReason;
};
