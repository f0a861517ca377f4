#include "desktop/window_canvas.h"

#include <QEvent>

namespace {

QImage Transparent(const QSize& size) {
  QImage image(size.expandedTo({1, 1}), QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  return image;
}

}  // namespace

WindowCanvas::WindowCanvas(QWidget& widget) : widget_(&widget) {
  Use(Transparent(widget.size()));
  widget.installEventFilter(this);
}

WindowCanvas::~WindowCanvas() {
  if (!widget_) return;
  widget_->removeEventFilter(this);
  widget_->update();
}

PixelMemory WindowCanvas::Pixels() {
  if (widget_ && !widget_->size().isEmpty() && widget_->size() != Image().size()) {
    QImage larger = Transparent(widget_->size());
    const QImage former = Image().copy();
    QPainter(&larger).drawImage(0, 0, former);
    Use(std::move(larger));
  }
  return ImageCanvas::Pixels();
}

void WindowCanvas::PixelsChanged() {
  if (widget_) widget_->update();
}

bool WindowCanvas::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::Paint || painting_ || watched != widget_) return false;
  painting_ = true;
  watched->event(event);
  painting_ = false;
  if (widget_) QPainter(widget_).drawImage(0, 0, Image());
  return true;
}
