// A canvas on a widget of the host. What is drawn lies over the widget's own drawing as long as the canvas lives.
#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

#include "desktop/canvas.h"

class WindowCanvas : public QObject, public ImageCanvas {
 public:
  explicit WindowCanvas(QWidget& widget);
  ~WindowCanvas() override;

  PixelMemory Pixels() override;
  void PixelsChanged() override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  const QPointer<QWidget> widget_;
  bool painting_ = false;
};
