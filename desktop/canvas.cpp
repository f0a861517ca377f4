#include "desktop/canvas.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "desktop/fonts.h"

namespace {

// Beyond it a text's place is not computed.
constexpr int kFarthestText = 1 << 20;
// From the platform's coordinates, which are those of the pixels' centres, to Qt's. A little less than a half, so that
// an edge half-way between two pixels covers the left and the upper one.
constexpr double kCentre = 0.5 - 1.0 / 64;

QString TextOf(std::u16string_view text) { return QString::fromUtf16(text.data(), qsizetype(text.size())); }

QColor ColorOf(DWORD pixel) { return QColor::fromRgb(pixel); }

bool SamePen(const PenSettings& a, const PenSettings& b) {
  return a.width == b.width && a.dotted == b.dotted && a.pixel == b.pixel;
}

}  // namespace

ImageCanvas::~ImageCanvas() {
  if (painter_.isActive()) painter_.end();
}

MemoryCanvas::MemoryCanvas(const PixelMemory& memory) {
  Use(QImage(reinterpret_cast<uchar*>(memory.first), memory.width, memory.height,
             memory.stride * qsizetype(sizeof(DWORD)), QImage::Format_RGB32));
}

void ImageCanvas::Use(QImage image) {
  if (painter_.isActive()) painter_.end();
  image_ = std::move(image);
  has_pen_ = false;
  if (!image_.isNull()) painter_.begin(&image_);
  UseClip();
}

PixelMemory ImageCanvas::Pixels() {
  // The bits are not asked for through bits(), which would copy an image that a painter draws on.
  return {reinterpret_cast<DWORD*>(const_cast<uchar*>(image_.constBits())), image_.width(), image_.height(),
          std::ptrdiff_t(image_.bytesPerLine()) / std::ptrdiff_t(sizeof(DWORD))};
}

// ---- clipping

void ImageCanvas::UseClip() {
  const QRegion allowed = clip_ ? *clip_ & image_.rect() : QRegion(image_.rect());
  clip_rects_.clear();
  for (const QRect& rect : allowed)
    clip_rects_.push_back({rect.left(), rect.top(), rect.left() + rect.width(), rect.top() + rect.height()});
  if (clip_ && painter_.isActive()) painter_.setClipRegion(allowed);
  if (!clip_ && painter_.isActive()) painter_.setClipping(false);
}

void ImageCanvas::SetClip(const std::vector<RECT>* rects) {
  clip_ = rects ? std::make_unique<QRegion>() : nullptr;
  if (rects && !rects->empty()) {
    std::vector<QRect> parts;
    for (const RECT& rect : *rects)
      parts.emplace_back(QPoint(rect.left, rect.top), QPoint(rect.right - 1, rect.bottom - 1));
    clip_->setRects(parts.data(), int(parts.size()));
  }
  UseClip();
}

// ---- ellipses

void ImageCanvas::SetPen(const PenSettings& settings) {
  if (has_pen_ && SamePen(settings, pen_)) return;
  QPen pen(ColorOf(settings.pixel), settings.width, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin);
  if (settings.width <= 1) pen.setCosmetic(true);
  if (settings.dotted) pen.setDashPattern({3, 3});
  painter_.setPen(pen);
  pen_ = settings;
  has_pen_ = true;
}

void ImageCanvas::DrawEllipse(const RECT& rect, const PenSettings& pen, DWORD fill, const DWORD* gaps) {
  const double width = double(rect.right) - rect.left - 1, height = double(rect.bottom) - rect.top - 1;
  const bool wide = pen.width > 1;
  const QRectF middle(rect.left + (wide ? kCentre : 0), rect.top + (wide ? kCentre : 0), width, height);
  painter_.setBrush(ColorOf(fill));
  if (pen.dotted && gaps) {
    SetPen({1, false, *gaps});
    painter_.drawEllipse(middle);
  }
  SetPen(pen);
  painter_.drawEllipse(middle);
  painter_.setBrush(Qt::NoBrush);
  PixelsChanged();
}

// ---- text

bool ImageCanvas::DrawText(POINT at, std::u16string_view text, const TextSettings& settings) {
  const std::optional<QFont> font = FontFor(settings.font);
  if (!font) return false;
  if (std::abs(double(at.x)) > kFarthestText || std::abs(double(at.y)) > kFarthestText) return true;
  const QString characters = TextOf(text);
  const QFontMetrics metrics(*font);
  painter_.save();
  painter_.translate(at.x, at.y);
  if (settings.font && settings.font->lfEscapement != 0) painter_.rotate(-settings.font->lfEscapement / 10.0);
  if (settings.background)
    painter_.fillRect(0, 0, metrics.horizontalAdvance(characters), metrics.height(), ColorOf(*settings.background));
  painter_.setFont(*font);
  painter_.setPen(ColorOf(settings.pixel));
  painter_.drawText(0, metrics.ascent(), characters);
  painter_.restore();
  PixelsChanged();
  return true;
}

bool ImageCanvas::MeasureText(std::u16string_view text, const LOGFONTW* description, SIZE& size) {
  const std::optional<QFont> font = FontFor(description);
  if (!font) return false;
  const QFontMetrics metrics(*font);
  size = {metrics.horizontalAdvance(TextOf(text)), metrics.height()};
  return true;
}

bool ImageCanvas::RenderCharacter(char16_t character, const LOGFONTW* description, CharacterBitmap& bitmap) {
  std::optional<QFont> font = FontFor(description);
  if (!font) return false;
  font->setStyleStrategy(QFont::NoAntialias);
  bitmap = {};
  const QChar letter(character);
  if (letter.category() == QChar::Other_Control) return true;
  const QFontMetrics metrics(*font);
  bitmap.advance = metrics.horizontalAdvance(letter);
  const QRect box = metrics.boundingRect(letter).adjusted(-1, -1, 1, 1);
  if (box.width() <= 2 || box.height() <= 2) return true;
  QImage image(box.size(), QImage::Format_ARGB32_Premultiplied);
  if (image.isNull()) return false;
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setFont(*font);
  painter.setPen(Qt::black);
  painter.drawText(-box.left(), -box.top(), QString(letter));
  painter.end();
  bitmap.width = box.width();
  bitmap.height = box.height();
  bitmap.originX = -box.left();
  bitmap.originY = box.bottom() + 1;
  const std::size_t row_bytes = (std::size_t(box.width()) + 7) / 8;
  bitmap.bits.assign(row_bytes * std::size_t(box.height()), 0);
  for (int y = 0; y < box.height(); ++y)
    for (int x = 0; x < box.width(); ++x)
      if (qAlpha(image.pixel(x, y)) > 127)
        bitmap.bits[row_bytes * std::size_t(box.height() - 1 - y) + std::size_t(x / 8)] |= BYTE(0x80 >> x % 8);
  return true;
}
