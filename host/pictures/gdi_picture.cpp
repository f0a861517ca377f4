#include "host/pictures/gdi_picture.h"

#include "framework/device_context.h"
#include "host/pictures/flat_drawing.h"
#include "host/shell/failure.h"

namespace kestrova {
namespace {

constexpr int kScale = 2;

// From the model to pixels of the image, y down.
FRTransf ToScreen(const Camera& camera, double width, double height) {
  const double x = width / (2 * camera.half_width), y = -height / (2 * camera.half_height);
  const FRUnitVector &right = camera.axes.right, &up = camera.axes.up, &back = camera.axes.back;
  const FRMatrix affine({right.x() * x, up.x() * y, back.x()}, {right.y() * x, up.y() * y, back.y()},
                        {right.z() * x, up.z() * y, back.z()});
  const FRVector eye = camera.eye - FRPosition();
  return FRTransf(affine, {width / 2 - eye % right * x, height / 2 - eye % up * y, 0}, /*scale=*/1, /*rotate_flag=*/1,
                  /*reflect_flag=*/1, /*shear_flag=*/1);
}

// 0x00RRGGBB.
Pixels PixelsOf(const CImageDC& image) {
  Pixels pixels = {image.GetWidth(), image.GetHeight(), {}};
  const std::size_t count = std::size_t(pixels.width) * std::size_t(pixels.height);
  pixels.rgb.reserve(3 * count);
  const DWORD* const all = image.GetPixels();
  for (std::size_t i = 0; i < count; ++i)
    for (const int shift : {16, 8, 0}) pixels.rgb.push_back(BYTE(all[i] >> shift & 0xFF));
  return pixels;
}

}  // namespace

Pixels DrawByGdi(Picture& picture, const ViewOptions& view) {
  const PictureStyle style = {view.dark ? kOnDark : kOnWhite, kScale};
  const Standing standing = picture.Stands();
  const Extent extent = ExtentOf(picture, style, AxesOf(view.name, standing));
  if (extent.IsEmpty()) return {};
  const std::vector<LegendRow> rows = picture.Legend();
  const std::vector<PictureMark> marks = picture.Marks();
  PictureLayout layout = PlaceLegend(view, rows);
  const Camera camera = CameraFor(view, standing, extent, view.width, layout.drawing_height, kPictureMargin);
  PlaceMarks(view, camera, marks, layout);
  CImageDC image;
  if (!image.Create(view.width * kScale, view.height * kScale, style.colors.background))
    throw Failure("cannot draw by gdi: there are no device contexts; install libKVSHAREdesktop.so and Qt 6");
  {
    QFDisplayInfo display(/*useOpenGL=*/0, /*window=*/nullptr,
                          ToScreen(camera, view.width * kScale, layout.drawing_height * kScale));
    display.GetDC()->Attach(image.GetSafeHdc());
    display.SetLineWidth(display.GetLineWidth() * kScale);
    display.InitialiseGraphics();
    picture.Draw(display, style);
    picture.DrawOnTop(display, style);
    display.UninitialiseGraphics();
  }
  QFDisplayInfo display(/*useOpenGL=*/0, /*window=*/nullptr, GetScaleTransf(kScale));
  display.GetDC()->Attach(image.GetSafeHdc());
  DrawTextsOf(layout, style, {.text_top = 0.57, .point = 0.5}, display);
  return Halved(PixelsOf(image));
}

}  // namespace kestrova
