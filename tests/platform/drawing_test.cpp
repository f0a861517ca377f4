// Drawing on images in memory, pixel by pixel.
#include "platform/drawing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tests/folders.h"

namespace {

constexpr COLORREF kRed = 0x0000FF, kGreen = 0x00FF00, kBlue = 0xFF0000;
constexpr LONG kFar = 1 << 26;
constexpr int kWidth = 16, kHeight = 12;

class Drawing : public testing::Test {
 protected:
  void SetUp() override {
    dc_ = CreateCompatibleDC(nullptr);
    if (!dc_ && !std::filesystem::exists(kvtest::LibraryFile("libKVSHAREdesktop.so")))
      GTEST_SKIP() << "this build has KV_DESKTOP=OFF";
    ASSERT_NE(dc_, nullptr);
    void* bits = nullptr;
    bitmap_ = CreateDIBSection(dc_, &info_, DIB_RGB_COLORS, &bits, nullptr, 0);
    ASSERT_NE(bitmap_, nullptr);
    bits_ = static_cast<DWORD*>(bits);
    first_ = SelectObject(dc_, bitmap_);
    pen_ = CreatePen(PS_SOLID, 1, kRed);
    brush_ = CreateSolidBrush(kGreen);
    first_pen_ = SelectObject(dc_, pen_);
    first_brush_ = SelectObject(dc_, brush_);
  }
  void TearDown() override {
    if (!dc_) return;
    for (const HGDIOBJ former : {first_pen_, first_brush_, first_}) EXPECT_NE(SelectObject(dc_, former), nullptr);
    for (const HGDIOBJ made : {HGDIOBJ(pen_), HGDIOBJ(brush_), HGDIOBJ(bitmap_)}) EXPECT_TRUE(DeleteObject(made));
    EXPECT_TRUE(DeleteDC(dc_));
  }

  void Clear() { std::fill_n(bits_, kWidth * kHeight, 0x0000FF); }
  void Line(int x, int y, int toX, int toY) {
    MoveToEx(dc_, x, y, nullptr);
    EXPECT_TRUE(LineTo(dc_, toX, toY));
  }
  // One character a pixel, rows without the untouched pixels at their end, up to the last row that was touched.
  std::string Picture() {
    GdiFlush();
    std::string picture, blank;
    for (int y = 0; y < kHeight; ++y) {
      std::string row;
      for (int x = 0; x < kWidth; ++x) {
        const DWORD pixel = bits_[y * kWidth + x] & 0xFFFFFF;
        row += pixel == 0x0000FF   ? ' '
               : pixel == 0xFF0000 ? '#'
               : pixel == 0x00FF00 ? 'o'
               : pixel == 0xFFFFFF ? '.'
                                   : '?';
      }
      row.erase(row.find_last_not_of(' ') + 1);
      blank += row + '\n';
      if (!row.empty()) picture += std::exchange(blank, {});
    }
    return picture;
  }

  BITMAPINFO info_ = {{sizeof(BITMAPINFOHEADER), kWidth, -kHeight, 1, 32, BI_RGB, 0, 0, 0, 0, 0}, {}};
  HDC dc_ = nullptr;
  HBITMAP bitmap_ = nullptr;
  HPEN pen_ = nullptr;
  HBRUSH brush_ = nullptr;
  HGDIOBJ first_ = nullptr, first_pen_ = nullptr, first_brush_ = nullptr;
  DWORD* bits_ = nullptr;
};

TEST_F(Drawing, LinesTakeTheNearestPixelAndLeaveOutTheirEnd) {
  for (int dx = -6; dx <= 6; ++dx) {
    for (int dy = -5; dy <= 5; ++dy) {
      Clear();
      Line(7, 6, 7 + dx, 6 + dy);
      const int steps = std::max(std::abs(dx), std::abs(dy));
      std::vector<DWORD> expected(kWidth * kHeight, 0x0000FF);
      for (int i = 0; i < steps; ++i) {
        const auto at = [&](int whole) {
          return int(std::ceil(double(whole * i) / steps - 0.5));
        };  // halves to the lower
        expected[std::size_t((6 + at(dy)) * kWidth + 7 + at(dx))] = 0xFF0000;
      }
      GdiFlush();
      for (int i = 0; i < kWidth * kHeight; ++i)
        ASSERT_EQ(bits_[i] & 0xFFFFFF, expected[std::size_t(i)]) << dx << ' ' << dy << " pixel " << i;
    }
  }
}

TEST_F(Drawing, ShapesPixelByPixel) {
  const POINT star[] = {{7, 0}, {11, 11}, {1, 4}, {14, 4}, {3, 11}}, square[] = {{2, 2}, {10, 2}, {10, 6}, {2, 6}};
  const auto with_pen = [&](int style, int width, int mode, const std::function<void()>& draw) {
    const HPEN pen = CreatePen(style, width, kRed);
    SelectObject(dc_, pen);
    SetBkMode(dc_, mode);
    draw();
    SelectObject(dc_, pen_);
    EXPECT_TRUE(DeleteObject(pen));
  };
  const auto fill = [&](HRGN region) {
    EXPECT_TRUE(FillRgn(dc_, region, brush_));
    EXPECT_TRUE(DeleteObject(region));
  };
  const auto clipped = [&](HRGN region, int kind) {
    EXPECT_EQ(SelectClipRgn(dc_, region), kind);
    EXPECT_TRUE(DeleteObject(region)) << "the context has a copy";
    Line(0, 1, 16, 1), Line(0, 3, 16, 3), Line(4, 0, 4, 12), Line(7, 0, 7, 12);
    EXPECT_EQ(SelectClipRgn(dc_, nullptr), SIMPLEREGION);
  };
  const struct {
    const char* what;
    std::function<void()> draw;
    const char* picture;
  } rows[] = {
      {"dots with gaps of the background", [&] { with_pen(PS_DOT, 1, OPAQUE, [&] { Line(1, 0, 12, 0); }); },
       " ###...###..\n"},
      {"dots alone", [&] { with_pen(PS_DOT, 1, TRANSPARENT, [&] { Line(1, 0, 12, 0), Line(1, 1, 1, 9); }); },
       " ###   ###\n #\n #\n #\n\n\n\n #\n #\n"},
      {"a wide dotted pen is solid", [&] { with_pen(PS_DOT, 2, OPAQUE, [&] { Line(-9, 3, 30, 3); }); },
       "\n\n################\n################\n"},
      {"a pen of width 0", [&] { with_pen(PS_SOLID, 0, OPAQUE, [&] { Line(1, 0, 4, 0); }); }, " ###\n"},
      {"nothing", [&] { Line(3, 3, 3, 3); }, ""},
      {"an ellipse in its rectangle", [&] { Ellipse(dc_, 1, 1, 10, 7); },
       "\n   #####\n  #ooooo#\n #ooooooo#\n #ooooooo#\n  #ooooo#\n   #####\n"},
      {"edges in the other order", [&] { Ellipse(dc_, 9, 9, 1, 1); },
       "\n   ####\n  #oooo#\n #oooooo#\n #oooooo#\n #oooooo#\n #oooooo#\n  #oooo#\n   ####\n"},
      {"an ellipse without area", [&] { Ellipse(dc_, 3, 3, 3, 9); }, ""},
      {"a polygon is closed", [&] { Polygon(dc_, square, 4); },
       "\n\n  #########\n  #ooooooo#\n  #ooooooo#\n  #ooooooo#\n  #########\n"},
      {"the middle of a star is not inside", [&] { Polygon(dc_, star, 5); },
       "       #\n       #\n      #o#\n      #o#\n ##############\n  ##o#   #oo##\n    ##   #o#\n    ###  ##\n"
       "    #oo##o#\n    #o# #o#\n   ###   ###\n   #       #\n"},
      {"two corners", [&] { Polygon(dc_, square, 2); }, "\n\n  #########\n"},
      {"right and bottom do not belong to a region", [&] { fill(CreatePolygonRgn(square, 4, ALTERNATE)); },
       "\n\n  oooooooo\n  oooooooo\n  oooooooo\n  oooooooo\n"},
      {"a rectangle in any order", [&] { fill(CreateRectRgn(9, 5, 6, 3)); }, "\n\n\n      ooo\n      ooo\n"},
      {"clipped to a rectangle", [&] { clipped(CreateRectRgn(3, 2, 8, 5), SIMPLEREGION); },
       "\n\n    #  #\n   #####\n    #  #\n"},
      {"clipped to nothing", [&] { clipped(CreateRectRgn(3, 2, 3, 5), NULLREGION); }, ""},
  };
  for (const auto& row : rows) {
    Clear();
    row.draw();
    EXPECT_EQ(Picture(), row.picture) << row.what;
  }
}

TEST_F(Drawing, FarCoordinatesAreCutExactly) {
  const POINT corners[] = {{-kFar, -kFar}, {kFar, -kFar}, {kFar, kFar}, {-kFar, kFar}};
  Clear();
  Line(-kFar, 5, kFar, 5);
  Line(3, kFar, 3, -kFar);
  Line(-kFar / 2, -kFar / 2, kFar, kFar);
  for (int i = 0; i < kWidth * kHeight; ++i) {
    const int x = i % kWidth, y = i / kWidth;
    EXPECT_EQ((bits_[i] & 0xFFFFFF) == 0xFF0000, y == 5 || x == 3 || x == y) << x << ' ' << y;
  }
  EXPECT_TRUE(Polygon(dc_, corners, 4));
  const std::string row(kWidth, 'o');
  EXPECT_EQ(Picture().substr(0, row.size() + 1), row + '\n');
}

TEST_F(Drawing, TextsHaveTheirUpperLeftCornerAtThePoint) {
  LOGFONTW font = {};
  font.lfHeight = -10;
  font.lfQuality = NONANTIALIASED_QUALITY;
  const HFONT made = CreateFontIndirectW(&font);
  const HGDIOBJ first = SelectObject(dc_, made);
  SIZE size = {}, two = {};
  EXPECT_TRUE(GetTextExtentPoint32W(dc_, _T("H"), 1, &size) && GetTextExtentPoint32W(dc_, _T("HH"), 2, &two));
  EXPECT_TRUE(size.cx > 3 && size.cy >= 10 && two.cx >= 2 * size.cx - 1) << size.cx << ' ' << size.cy;
  EXPECT_EQ(SetTextColor(dc_, kRed), COLORREF(0)) << "black at first";
  EXPECT_EQ(SetBkMode(dc_, TRANSPARENT), OPAQUE);
  Clear();
  EXPECT_TRUE(TextOutW(dc_, 3, -2, _T("H"), 1));
  const std::string picture = Picture();
  EXPECT_NE(picture.find("####"), picture.npos) << picture;
  EXPECT_EQ(picture.find_first_not_of(" #\n"), picture.npos) << "one colour\n" << picture;
  EXPECT_EQ(SetBkMode(dc_, OPAQUE), TRANSPARENT);
  EXPECT_TRUE(TextOutW(dc_, 3, 1, _T("H"), 1));
  const auto pixel = [&](LONG x, LONG y) { return bits_[y * kWidth + x] & 0xFFFFFF; };
  EXPECT_EQ(pixel(3, 1), 0xFFFFFFu) << "the background begins at the point\n" << Picture();
  EXPECT_EQ(pixel(2, 1), 0x0000FFu);
  EXPECT_EQ(pixel(3 + size.cx, 1), 0x0000FFu) << "and ends with the text's width";
  EXPECT_TRUE(TextOutW(dc_, 0, 0, _T(""), 0));
  SelectObject(dc_, first);
  EXPECT_TRUE(DeleteObject(made));
}

TEST_F(Drawing, ObjectsAndPositionsComeBack) {
  POINT former = {9, 9};
  EXPECT_TRUE(MoveToEx(dc_, 3, 4, &former));
  EXPECT_EQ(former.x + former.y, 0);
  LineTo(dc_, 5, 6);
  MoveToEx(dc_, 0, 0, &former);
  EXPECT_TRUE(former.x == 5 && former.y == 6);
  EXPECT_EQ(SelectObject(dc_, pen_), pen_);
  const HDC other = CreateCompatibleDC(dc_);
  EXPECT_EQ(SelectObject(other, bitmap_), nullptr) << "it is in the first context";
  EXPECT_TRUE(DeleteDC(other));
  const HBRUSH brush = CreateSolidBrush(kBlue);
  EXPECT_TRUE(DeleteObject(brush));
  EXPECT_EQ(SelectObject(dc_, brush), nullptr) << "deleted";
  EXPECT_EQ(SelectObject(dc_, nullptr), nullptr);
}

TEST(DrawingCalls, RefuseWhatIsNoContextOrObject) {
  const POINT point = {};
  SIZE size = {};
  void* bits = nullptr;
  BITMAPINFO info = {{sizeof(BITMAPINFOHEADER), 0, -4, 1, 32, BI_RGB, 0, 0, 0, 0, 0}, {}};
  EXPECT_FALSE(MoveToEx(nullptr, 1, 1, nullptr) || LineTo(nullptr, 1, 1) || Ellipse(nullptr, 0, 0, 4, 4));
  EXPECT_FALSE(Polygon(nullptr, &point, 1) || FillRgn(nullptr, nullptr, nullptr) || SelectClipRgn(nullptr, nullptr));
  EXPECT_FALSE(TextOutW(nullptr, 0, 0, _T("A"), 1) || GetTextExtentPoint32W(nullptr, _T("A"), 1, &size));
  EXPECT_EQ(SetBkMode(nullptr, OPAQUE), 0);
  EXPECT_EQ(SetTextColor(nullptr, 0), CLR_INVALID);
  EXPECT_FALSE(DeleteObject(nullptr) || DeleteDC(nullptr) || ReleaseDC(nullptr, nullptr));
  EXPECT_EQ(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0), nullptr) << "no width";
}

}  // namespace
