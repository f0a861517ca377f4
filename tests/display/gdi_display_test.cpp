// QFGDIDisplay: what it draws, against the calls of a device context that must draw the same; and its mapping.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>

#include "share/display/display_info.h"
#include "tests/folders.h"
#include "tests/registered.h"

namespace {

constexpr int kSize = 140;
constexpr COLORREF kColor = 0x332211, kFill = 0x00CC00;
const FRTransf kTwice = GetScaleTransf(2);

class GDIDisplay : public testing::Test {
 protected:
  void SetUp() override {
    kvtest::Register({});
    if (!drawn_.Create(kSize, kSize, 0xFFFFFF)) {
      ASSERT_FALSE(std::filesystem::exists(kvtest::LibraryFile("libKVSHAREdesktop.so")));
      GTEST_SKIP() << "this build has KV_DESKTOP=OFF";
    }
    ASSERT_TRUE(expected_.Create(kSize, kSize, 0xFFFFFF));
    ends_.SetCameraDetails({0, 0, 0}, {0, 1, 0}, FRZAxis, 1, 1, 1, 1, 100, QFeCameraPerspective,
                           CRect(0, 0, kSize, kSize), kTwice);
  }

  // The difference of the two images as "x y"; empty if they are the same. Both are cleared.
  std::string Difference() {
    std::string difference;
    bool blank = true;
    for (int i = 0; i < kSize * kSize; ++i) {
      const DWORD drawn = drawn_.GetPixels()[i] & 0xFFFFFF, expected = expected_.GetPixels()[i] & 0xFFFFFF;
      blank = blank && drawn == 0xFFFFFF;
      if (drawn != expected && difference.empty())
        difference = std::to_string(i % kSize) + ' ' + std::to_string(i / kSize);
    }
    for (const CImageDC* image : {&drawn_, &expected_}) std::fill_n(image->GetPixels(), kSize * kSize, 0xFFFFFF);
    return blank && difference.empty() ? "blank" : difference;
  }

  CImageDC drawn_, expected_;
  QFCamera ends_;  // looks along Y; its near plane is at 1
};

TEST_F(GDIDisplay, DrawsLikeTheseCalls) {
  using Info = QFDisplayInfo;
  CList<FRPosition> square;
  CList<FRUnitVector> none;
  AFR_Lin_List list, *points = &list;
  for (const FRPosition& corner :
       {FRPosition(5, 5, 0), FRPosition(40.9, 5, 0), FRPosition(40, 40, 0), FRPosition(5, 40, 3)})
    square.AddTail(corner), list.append(corner * GetScaleTransf(4));
  double scale = 4;
  const POINT corners[] = {{10, 10}, {81, 10}, {80, 80}, {10, 80}};
  QFCamera* const camera = &ends_;
  const auto lines = [&](CDC& dc) {
    dc.MoveTo(10, 10);
    for (int i = 1; i < 4; ++i) dc.LineTo(corners[i].x, corners[i].y);
  };
  const CRect around(80, 70, 120, 130), small(37, 37, 43, 43), seen(65, 65, 75, 75);
  const struct {
    const char* what;
    int width, dashed;
    std::function<void(Info&)> draw;
    std::function<void(CDC&)> calls;  // with the pen and brush selected
    const char* difference = "";
  } rows[] = {
      {"a line", 1, 0,
       [](Info& i) {
         i.DrawLine({1.9, 2, 7}, {30, -40.2, 0});
       },
       [](CDC& dc) { dc.MoveTo(3, 4), dc.LineTo(60, -80); }},
      {"a wide line", 3, 0,
       [](Info& i) {
         i.DrawLine({10, 10, 0}, {30, 40, 0});
       },
       [](CDC& dc) { dc.MoveTo(20, 20), dc.LineTo(60, 80); }},
      {"dashes of width 1", 1, 1,
       [](Info& i) {
         i.DrawLine({0, 5, 0}, {60, 5, 0});
       },
       [](CDC& dc) { dc.MoveTo(0, 10), dc.LineTo(120, 10); }},
      {"dashes of width 3", 3, 1,
       [](Info& i) {
         i.DrawLine({0, 5, 0}, {60, 5, 0});
       },
       [](CDC& dc) { dc.MoveTo(0, 10), dc.LineTo(120, 10); }},
      {"no lines of width 0", 0, 0,
       [&](Info& i) {
         i.DrawLine({0, 5, 0}, {60, 5, 0}), i.DrawPolyline(points, scale);
       },
       [](CDC&) {}, "blank"},
      {"an arrow and modes", 1, 0,
       [&](Info& i) {
         i.DrawArrow({0, 5, 0}, {60, 5, 0}), i.DrawPolyline(square, 3U);
       },
       [](CDC&) {}, "blank"},
      {"ellipses", 1, 0,
       [](Info& i) {
         i.DrawEllipse({50, 50, 0}, 20.9, -30), i.DrawPlaneEllipse({20, 20, 0}, 3, 3);
       },
       [&](CDC& dc) { dc.Ellipse(&around), dc.Ellipse(&small); }},
      {"a polygon", 1, 0, [&](Info& i) { i.DrawPolygon(square, none); }, [&](CDC& dc) { dc.Polygon(corners, 4); }},
      {"a triangle of four", 1, 0, [&](Info& i) { i.DrawTriangle(square, none); },
       [&](CDC& dc) { dc.Polygon(corners, 4); }},
      {"a polyline", 1, 0, [&](Info& i) { i.DrawPolyline(square); }, lines},
      {"a long list", 1, 0, [&](Info& i) { i.DrawPolyline(points, scale); }, lines},
      {"a text", 1, 0,
       [](Info& i) {
         i.DrawText({25, 25, 0}, _T("Ag"));
       },
       [](CDC& dc) { dc.SetBkMode(TRANSPARENT), dc.SetTextColor(kColor), dc.TextOut(52, 45, CString(_T("Ag"))); }},
      {"a region of lines", 1, 0,
       [&](Info& i) {
         i.SetFillRegion(1), i.DrawLine({5, 5, 0}, {40, 5, 0}), i.DrawLine({40, 5, 0}, {40, 40, 0});
         i.DrawLine({40, 40, 0}, {5, 5, 0});
         EXPECT_EQ(i.FillRegion() * 10 + i.FillRegion(), 10) << "the points are used up";
       },
       [](CDC& dc) {
         const POINT triangle[] = {{10, 10}, {80, 10}, {80, 80}, {10, 10}};
         dc.MoveTo(10, 10);
         for (int i = 1; i < 4; ++i) dc.LineTo(triangle[i].x, triangle[i].y);
         CRgn region;
         CBrush brush(kFill);
         region.CreatePolygonRgn(triangle, 3, ALTERNATE), dc.FillRgn(&region, &brush);
       }},
      {"a region without collecting", 1, 0,
       [&](Info& i) {
         i.DrawPolyline(square);
         EXPECT_EQ(i.FillRegion(), 0);
       },
       lines},
      {"a clipped line", 1, 0,
       [](Info& i) {
         const CRect rect(20, 0, 40, 20);
         EXPECT_EQ(i.ClipRegion(), 0) << "no rectangle yet";
         i.SetRectClipRegion(&rect);
         EXPECT_EQ(i.ClipRegion(), 1);
         i.DrawLine({0, 5, 0}, {60, 5, 0});
       },
       [](CDC& dc) { dc.MoveTo(20, 10), dc.LineTo(40, 10); }},
      {"through the camera", 1, 0,
       [&](Info& i) {
         i.SetCamera(camera), i.DrawLine({0, 4, 0}, {0, 4, 1}),
             i.DrawLine({0, 0.5, 0}, {0, 0.5, 1});  // the second is too near
         i.DrawPlaneEllipse({0, 4, 0}, 5, 5), i.DrawPlaneEllipse({0, 0.5, 0}, 9, 9), i.DrawPolygon(square, none);
       },
       [&](CDC& dc) {
         POINT from, to;
         EXPECT_EQ(camera->GetScreenCoordinateLine({0, 4, 0}, {0, 4, 1}, 1, from, to), 1);
         dc.MoveTo(from.x, from.y), dc.LineTo(to.x, to.y), dc.Ellipse(&seen), dc.Polygon(corners, 4);
       }},
  };
  for (const auto& row : rows) {
    {
      QFDisplayInfo info(0, nullptr, kTwice);
      ASSERT_TRUE(info.GetDC()->Attach(drawn_.GetSafeHdc()));
      info.GetDisplayData()->SetColor(kColor), info.SetFillColor(kFill), info.SetLineWidth(row.width);
      info.SetLineStyle(row.dashed);
      EXPECT_EQ(info.InitialiseGraphics(), row.width > 0) << row.what;
      row.draw(info);
      drawn_.SelectClipRgn(nullptr);
    }
    CPen pen(row.dashed ? PS_DOT : PS_SOLID, row.dashed ? 1 : row.width, kColor);
    CBrush brush(kFill);
    CPen* const first_pen = expected_.SelectObject(&pen);
    CBrush* const first_brush = expected_.SelectObject(&brush);
    row.calls(expected_);
    expected_.SelectObject(first_pen), expected_.SelectObject(first_brush);
    EXPECT_EQ(Difference(), row.difference) << row.what;
  }
}

TEST_F(GDIDisplay, LeavesTheContextAsItFoundIt) {
  CPen pen(PS_SOLID, 1, 0x0000FF);
  CPen* const first = drawn_.SelectObject(&pen);
  {
    QFDisplayInfo info(0, nullptr, kTwice);
    info.GetDC()->Attach(drawn_.GetSafeHdc());
    info.SetFont(-20, 700, 0, 0, _T("Sans"));
    EXPECT_EQ(info.InitialiseGraphics(), 1);
    EXPECT_EQ(info.GetDisplay()->InitialiseGraphics(), 0) << "done already";
    info.DrawText({}, _T("A"));
    info.SetFont(nullptr);  // while it is selected
    info.SetLineStyle(1);
    EXPECT_EQ(info.UninitialiseGraphics(), 0);
    EXPECT_EQ(drawn_.SelectObject(&pen), &pen);
    EXPECT_EQ(info.InitialiseGraphics(), 1);
  }
  EXPECT_EQ(drawn_.SelectObject(first), &pen) << "the context stays the caller's";
  QFGDIDisplay alone;
  EXPECT_EQ(alone.InitialiseGraphics() + alone.UninitialiseGraphics() + alone.FillRegion() + alone.ClipRegion(), 0);
  alone.DrawLine({}, {1, 1, 1}), alone.DrawText({}, _T("A")), alone.DrawPlaneEllipse({}, 1e300, -1e300);
}

}  // namespace
