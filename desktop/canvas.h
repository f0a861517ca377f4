// A canvas on a QImage. Ellipses have no antialiasing.
#pragma once

#include <QImage>
#include <QPainter>
#include <QRegion>
#include <vector>

#include "platform/linux/desktop_module.h"

class ImageCanvas : public Canvas {
 public:
  ~ImageCanvas() override;

  PixelMemory Pixels() override;
  std::span<const RECT> ClipRects() override { return clip_rects_; }
  void SetClip(const std::vector<RECT>* rects) override;
  void PixelsChanged() override {}
  void DrawEllipse(const RECT& rect, const PenSettings& pen, DWORD fill, const DWORD* gaps) override;
  bool DrawText(POINT at, std::u16string_view text, const TextSettings& settings) override;
  bool MeasureText(std::u16string_view text, const LOGFONTW* font, SIZE& size) override;
  bool RenderCharacter(char16_t character, const LOGFONTW* font, CharacterBitmap& bitmap) override;

 protected:
  ImageCanvas() = default;
  // Draws on another image from now on.
  void Use(QImage image);
  const QImage& Image() const { return image_; }

 private:
  void SetPen(const PenSettings& pen);
  void UseClip();

  QImage image_;
  QPainter painter_;  // open while there is an image
  std::unique_ptr<QRegion> clip_;
  std::vector<RECT> clip_rects_;
  PenSettings pen_;
  bool has_pen_ = false;
};

// On memory of the caller's, 0xffRRGGBB.
class MemoryCanvas : public ImageCanvas {
 public:
  explicit MemoryCanvas(const PixelMemory& memory);
};
