// Draws a picture by OpenGL on an image in memory. Lines and edges are smooth: the image is drawn with twice the width
// and height, several samples a pixel, and then made smaller.
#pragma once

#include "host/pictures/picture_layout.h"
#include "host/pictures/pixels.h"
#include "platform/off_screen.h"

namespace kestrova {

class OpenGLPicture {
 public:
  // Throws Failure if there is no OpenGL. Not smooth: each pixel is drawn once, for comparisons.
  explicit OpenGLPicture(const ViewOptions& view, bool smooth = true);
  OpenGLPicture(const OpenGLPicture&) = delete;
  OpenGLPicture& operator=(const OpenGLPicture&) = delete;

  // Draws the picture with its legend and names. False if it has nothing to draw.
  bool Draw(Picture& picture);
  Pixels Read();

 private:
  void DrawModel(Picture& picture, const Camera& camera, const PictureLayout& layout);
  void DrawTexts(const PictureLayout& layout);

  const ViewOptions view_;
  const PictureStyle style_;
  const OffScreenContext context_;
  OffScreenImage image_;
};

}  // namespace kestrova
