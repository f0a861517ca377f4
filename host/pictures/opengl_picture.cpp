#include "host/pictures/opengl_picture.h"

#include "framework/device_context.h"
#include "host/pictures/flat_drawing.h"
#include "host/pictures/light.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "platform/opengl.h"

namespace kestrova {
namespace {

constexpr int kSamples = 4;
constexpr int kMostSampledPixels = 20'000'000;  // of the larger image; above it, there is one sample a pixel

PictureStyle StyleOf(const ViewOptions& view, bool smooth) { return {view.dark ? kOnDark : kOnWhite, smooth ? 2 : 1}; }

int SamplesOf(const ViewOptions& view, int scale) {
  const bool few = view.width * scale <= kMostSampledPixels / (view.height * scale);
  return scale > 1 && few ? kSamples : 0;
}

void SetCamera(const Camera& camera) {
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  const double near_plane = camera.near_plane, far_plane = camera.far_plane;
  const double part = camera.perspective ? near_plane : 1;
  const double x = camera.half_width * part, y = camera.half_height * part;
  camera.perspective ? glFrustum(-x, x, -y, y, near_plane, far_plane) : glOrtho(-x, x, -y, y, near_plane, far_plane);
  const FRUnitVector &r = camera.axes.right, &u = camera.axes.up, &b = camera.axes.back;
  const GLdouble turn[] = {r.x(), u.x(), b.x(), 0, r.y(), u.y(), b.y(), 0, r.z(), u.z(), b.z(), 0, 0, 0, 0, 1};
  glMatrixMode(GL_MODELVIEW);
  glLoadMatrixd(turn);
  glTranslated(-camera.eye.x(), -camera.eye.y(), -camera.eye.z());
}

// The scaling of lengths in the middle of the model to pixels, for shapes with sizes in pixels.
FRTransf ToPixels(const Camera& camera, int height) {
  const double depth = camera.perspective ? (camera.near_plane + camera.far_plane) / 2 : 1;
  return GetScaleTransf(height / (2 * camera.half_height * depth));
}

void SetLights() {
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
  GLenum name = GL_LIGHT0;
  constexpr GLfloat kNone[] = {0, 0, 0, 1};
  for (const Lamp& lamp : kLamps) {
    const GLfloat color[] = {lamp.strength, lamp.strength, lamp.strength, 1};
    const GLfloat direction[] = {lamp.direction[0], lamp.direction[1], lamp.direction[2], 0};
    glLightfv(name, GL_POSITION, direction);
    glLightfv(name, GL_DIFFUSE, color);
    glLightfv(name, GL_AMBIENT, kNone);
    glLightfv(name, GL_SPECULAR, kNone);
    glEnable(name++);
  }
  glPopMatrix();
  constexpr GLfloat kAmbient[] = {kAmbientLight, kAmbientLight, kAmbientLight, 1};
  glLightModelfv(GL_LIGHT_MODEL_AMBIENT, kAmbient);
  glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, GL_TRUE);
}

void SetSurfaces() {
  glEnable(GL_DEPTH_TEST);
  glDepthFunc(GL_LEQUAL);
  glEnable(GL_NORMALIZE);
  glEnable(GL_LIGHTING);
  glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
  glEnable(GL_COLOR_MATERIAL);
  // Surfaces lie a little deeper than the lines on them.
  glPolygonOffset(1, 2);
  glEnable(GL_POLYGON_OFFSET_FILL);
}

void FillBackground(DWORD color) {
  const auto channel = [&](int shift) { return GLfloat(color >> shift & 0xFF) / 255.0F; };
  glClearColor(channel(0), channel(8), channel(16), 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

}  // namespace

OpenGLPicture::OpenGLPicture(const ViewOptions& view, bool smooth)
    : view_(view),
      style_(StyleOf(view, smooth)),
      image_(context_, view.width * style_.scale, view.height * style_.scale, SamplesOf(view, style_.scale)) {
  if (!image_.IsReady()) throw Failure("cannot draw by OpenGL: " + image_.Reason());
}

bool OpenGLPicture::Draw(Picture& picture) {
  const std::optional<PlacedPicture> placed = PlaceAll(picture, style_, view_);
  if (!placed) return false;
  DrawModel(picture, placed->camera, placed->layout);
  DrawTexts(placed->layout);
  return true;
}

void OpenGLPicture::DrawModel(Picture& picture, const Camera& camera, const PictureLayout& layout) {
  const int scale = style_.scale;
  glViewport(0, (view_.height - layout.drawing_height) * scale, view_.width * scale, layout.drawing_height * scale);
  FillBackground(style_.colors.background);
  SetCamera(camera);
  SetLights();
  SetSurfaces();
  QFDisplayInfo display(/*useOpenGL=*/1, /*window=*/nullptr, ToPixels(camera, layout.drawing_height));
  display.SetLineWidth(display.GetLineWidth() * scale);
  display.InitialiseGraphics();
  display.BeginShadedDisplay();
  picture.Draw(display, style_);
  display.EndShadedDisplay();
  glClear(GL_DEPTH_BUFFER_BIT);
  picture.DrawOnTop(display, style_);
  display.UninitialiseGraphics();
}

void OpenGLPicture::DrawTexts(const PictureLayout& layout) {
  if (layout.rows.empty() && layout.marks.empty()) return;
  const int scale = style_.scale;
  glViewport(0, 0, view_.width * scale, view_.height * scale);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(0, view_.width, view_.height, 0, -1, 1);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glDisable(GL_DEPTH_TEST);
  QFDisplayInfo display(/*useOpenGL=*/1, /*window=*/nullptr, FRTransf());
  CImageDC characters;
  if (!characters.Create(1, 1, 0))
    PrintNote("the picture has no texts, because there are no fonts; install libKVSHAREdesktop.so and Qt 6");
  display.GetDisplayData()->SetDC(&characters);
  DrawTextsOf(layout, style_, /*textTop=*/-0.36, display);
}

Pixels OpenGLPicture::Read() {
  Pixels pixels = {view_.width * style_.scale, view_.height * style_.scale, {}};
  if (!image_.Read(pixels.rgb)) throw Failure("OpenGL did not give the picture back; try a smaller --size");
  return style_.scale > 1 ? Halved(pixels) : pixels;
}

}  // namespace kestrova
