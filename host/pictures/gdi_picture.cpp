#include "host/pictures/gdi_picture.h"

#include "framework/device_context.h"
#include "host/pictures/flat_drawing.h"
#include "host/shell/failure.h"

namespace kestrova {
namespace {

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

// Draws on an image that is larger than the picture. Ellipses have sizes in pixels of the picture.
class LargeDisplay : public QFGDIDisplay {
 public:
  LargeDisplay(HDC image, const FRTransf& toImage, int scale) : QFGDIDisplay(nullptr, toImage), scale_(scale) {
    GetDC()->Attach(image);
  }

  void DrawEllipse(const FRPosition& centre, double a, double b, const FRTransf& camera) override {
    QFGDIDisplay::DrawEllipse(centre, a * scale_, b * scale_, camera);
  }

 private:
  const int scale_;
};

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

Pixels DrawByGdi(Picture& picture, const ViewOptions& view, bool smooth) {
  const int scale = smooth ? 2 : 1;
  const PictureStyle style = {view.dark ? kOnDark : kOnWhite, scale};
  const std::optional<PlacedPicture> placed = PlaceAll(picture, style, view);
  if (!placed) return {};
  CImageDC image;
  if (!image.Create(view.width * scale, view.height * scale, style.colors.background))
    throw Failure("cannot draw by gdi: there are no device contexts; install libKVSHAREdesktop.so and Qt 6");
  const PictureLayout& layout = placed->layout;
  {
    const FRTransf to_image = ToScreen(placed->camera, view.width * scale, layout.drawing_height * scale);
    QFDisplayInfo display(/*useOpenGL=*/0, /*window=*/nullptr, to_image);
    display.SetDisplay(new LargeDisplay(image.GetSafeHdc(), to_image, scale));
    display.SetLineWidth(display.GetLineWidth() * scale);
    display.InitialiseGraphics();
    picture.Draw(display, style);
    picture.DrawOnTop(display, style);
    display.UninitialiseGraphics();
  }
  QFDisplayInfo display(/*useOpenGL=*/0, /*window=*/nullptr, GetScaleTransf(scale));
  display.GetDC()->Attach(image.GetSafeHdc());
  DrawTextsOf(layout, style, /*textTop=*/0.57, display);
  const Pixels pixels = PixelsOf(image);
  return smooth ? Halved(pixels) : pixels;
}

}  // namespace kestrova
