// Device contexts of a host's widgets.
#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QWidget>
#include <memory>
#include <thread>

#include "share/display/display_info.h"

namespace {

constexpr QRgb kOwn = 0xFFFFFF00, kDrawn = 0xFF0000FF;
const FRTransf kSame;

class Yellow : public QWidget {
 public:
  Yellow() { resize(40, 30); }
  void paintEvent(QPaintEvent*) override { QPainter(this).fillRect(rect(), QColor(kOwn)); }
  HWND Window() const { return reinterpret_cast<HWND>(winId()); }
  QRgb Pixel(int x, int y) { return grab().toImage().pixel(x, y); }
};

TEST(Windows, ShowADrawingAsLongAsTheirContextLives) {
  Yellow widget;
  {
    QFDisplayInfo info(0, widget.Window(), kSame);
    info.SetColor(0xFF0000);
    ASSERT_EQ(info.InitialiseGraphics(), 1);
    info.DrawLine({0, 5, 0}, {60, 5, 0});
    EXPECT_EQ(widget.Pixel(7, 5), kDrawn);
    EXPECT_EQ(widget.Pixel(7, 8), kOwn) << "the widget's own drawing is below";
    widget.resize(60, 40);
    info.DrawLine({0, 35, 0}, {60, 35, 0});
    EXPECT_EQ(widget.Pixel(55, 35), kDrawn);
    EXPECT_EQ(widget.Pixel(7, 5), kDrawn) << "the drawing stays";
  }
  EXPECT_EQ(widget.Pixel(7, 5), kOwn);
}

TEST(Windows, MayGoWhileTheirDisplayLives) {
  auto widget = std::make_unique<Yellow>();
  const HWND window = widget->Window();
  QFDisplayInfo info(0, window, kSame);
  EXPECT_EQ(info.InitialiseGraphics(), 1);
  widget.reset();
  info.DrawLine({0, 5, 0}, {60, 5, 0});
  info.DrawText({0, 5, 0}, _T("A"));
  EXPECT_EQ(info.InitialiseGraphics(), 1);
  EXPECT_EQ(GetDC(window), nullptr) << "it has gone";
}

TEST(Windows, AreReleasedByTheirOwnHandle) {
  Yellow widget, other;
  const HDC dc = GetDC(widget.Window());
  ASSERT_NE(dc, nullptr);
  EXPECT_FALSE(DeleteDC(dc));
  EXPECT_EQ(ReleaseDC(other.Window(), dc), 0);
  EXPECT_EQ(ReleaseDC(widget.Window(), dc), 1);
  EXPECT_EQ(ReleaseDC(widget.Window(), dc), 0);
  std::thread([&] { EXPECT_EQ(GetDC(other.Window()), nullptr) << "another thread"; }).join();
}

}  // namespace
