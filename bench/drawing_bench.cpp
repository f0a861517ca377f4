// Polylines on the image of a device context, point by point as the display draws them, against one call of QPainter
// on an image of the same size.
#include <QImage>
#include <QPainter>
#include <cmath>
#include <vector>

#include "bench/ratio.h"
#include "framework/device_context.h"

namespace {

constexpr int kWidth = 1600, kHeight = 1000;

// A spiral, so that short and long segments of all directions occur.
std::vector<QPoint> Spiral(std::size_t count) {
  std::vector<QPoint> points;
  for (std::size_t i = 0; i < count; ++i) {
    const double turn = double(i) * 0.05, radius = 480.0 * double(i) / double(count);
    points.emplace_back(int(kWidth / 2 + radius * std::cos(turn)), int(kHeight / 2 + radius * std::sin(turn)));
  }
  return points;
}

}  // namespace

int main() {
  CImageDC ours;
  if (!ours.Create(kWidth, kHeight, 0xFFFFFF)) {
    std::fputs("no device context: build with KV_DESKTOP=ON\n", stderr);
    return 1;
  }
  QImage peer(kWidth, kHeight, QImage::Format_RGB32);
  peer.fill(Qt::white);
  QPainter painter(&peer);
  kvbench::Table table("Drawing");
  for (const int width : {1, 3}) {
    CPen pen(PS_SOLID, width, 0);
    CPen* const former = ours.SelectObject(&pen);
    QPen qt_pen(Qt::black, width, Qt::SolidLine, width > 1 ? Qt::RoundCap : Qt::FlatCap, Qt::RoundJoin);
    painter.setPen(qt_pen);
    for (const std::size_t size : {1'000, 10'000, 100'000, 1'000'000}) {
      if (width > 1 && size > 100'000) continue;  // minutes, for the peer too
      const std::vector<QPoint> points = Spiral(size);
      table.Pair(
          {.name = width > 1 ? "polyline of width 3" : "polyline of width 1",
           .size = size,
           .peer = "QPainter::drawPolyline",
           .goal = 1.5},
          [&] {
            ours.MoveTo(points[0].x(), points[0].y());
            for (const QPoint& point : points) ours.LineTo(point.x(), point.y());
          },
          [&] { painter.drawPolyline(points.data(), int(points.size())); });
    }
    ours.SelectObject(former);
  }
}
