// QFDisplayInfo and QFDisplayData: what reaches the back end, in which order.
#include <gtest/gtest.h>

#include "share/settings/application_settings.h"
#include "tests/display/display_log.h"
#include "tests/geometry_print.h"
#include "tests/registered.h"

namespace {

QFAppSettings* g_settings = nullptr;

const FRTransf kUp = GetTranslateTransf({0, 0, 10});
const FRTransf kTwice = GetScaleTransf(2);

class DisplayInfo : public testing::Test {
 protected:
  DisplayInfo() {
    kvtest::Register({});
    info_.SetDisplay(new kvtest::DisplayLog(log_));
  }
  std::string TakeLog() { return std::exchange(log_, {}); }

  std::string log_;
  QFDisplayInfo info_{0, nullptr, kTwice};
};

TEST(DisplayData, TakesItsWidthFromTheSettingsAndCopiesNoContext) {
  QFAppSettings settings;
  g_settings = &settings;
  kvtest::Register({.appSettings = []() -> QFSettingsKey* { return g_settings; }});
  for (const auto& [stored, width] : std::map<int, int>{{9, 1}, {6, 1}, {5, 5}, {2, 2}, {0, 0}, {-3, -3}}) {
    settings.SetValue(_T("LineWidth"), stored);
    EXPECT_EQ(QFDisplayData().GetLineWidth(), width) << stored;
  }
  kvtest::Register({});
  QFDisplayData from, to;
  EXPECT_EQ(to.GetLineWidth(), 1) << "without settings";
  from.SetColor(1), from.SetFillColor(2), from.SetLineWidth(3), from.SetIsLineDashed(4), from.SetIsFill(5);
  from.SetOpenGLDisplay(6), from.SetIsTransparent(7), from.SetFont(new CFont);
  to.Copy(&from);
  to.Copy(nullptr);
  EXPECT_EQ((std::vector{int(to.GetColor()), int(to.GetFillColor()), to.GetLineWidth(), to.GetIsLineDashed(),
                         to.GetIsFill(), to.IsOpenGLDisplay(), to.GetIsTransparent()}),
            (std::vector{1, 2, 3, 4, 5, 6, 0}));
  EXPECT_EQ(to.GetFont(), nullptr);
}

TEST_F(DisplayInfo, StateReachesTheBackEndOnlyIfItChanges) {
  const struct {
    const char* what;
    std::function<void()> act;
    const char* log;
  } rows[] = {
      {"the same colour", [&] { info_.SetColor(0); }, ""},
      {"another colour", [&] { info_.SetColor(0xFF); }, "uninitialise\ninitialise ff 1\n"},
      {"another width", [&] { info_.SetLineWidthWithInit(3); }, "uninitialise\ninitialise ff 3\n"},
      {"the same width", [&] { info_.SetLineWidthWithInit(3); }, ""},
      {"a stored width", [&] { info_.SetLineWidth(2), info_.SetFillColor(5); }, ""},
      {"a width by call", [&] { info_.SetLineWidthOnlyByGLCall(4), info_.SetLineWidthOnlyByGLCall(4); }, "width 4\n"},
      {"highlighting", [&] { EXPECT_EQ(info_.SetDynamicHiLite(1), 1); }, ""},
      {"kept while highlighted",
       [&] { info_.SetColor(1), info_.SetLineWidthWithInit(5), info_.SetLineWidthOnlyByGLCall(5); }, ""},
      {"not kept", [&] { info_.SetTransparent(1), info_.SetTransparent(1); }, "uninitialise\ninitialise ff 4\n"},
      {"a reset", [&] { EXPECT_EQ(info_.ResetOpenGLDisplayObj(), 1); }, "uninitialise\ninitialise ff 4\n"},
      {"results", [&] { EXPECT_EQ(info_.InitialiseGraphics() * 10 + info_.UninitialiseGraphics(), 78); },
       "uninitialise\ninitialise ff 4\nuninitialise\n"},
      {"a style", [&] { info_.SetLineStyle(1); }, ""},
      {"a font", [&] { info_.SetFont(-12, 700, 1, 0, _T("Arial")); }, ""},
      {"the OpenGL flag alone", [&] { info_.SetOpenGLDisplay(1); }, ""},
      {"the GDI display", [&] { info_.SetOpenGLDisplay(0); }, "end\n"},
      {"the flag creates nothing", [&] { info_.SetOpenGLDisplay(1); }, ""},
  };
  for (const auto& row : rows) {
    row.act();
    EXPECT_EQ(TakeLog(), row.log) << row.what;
  }
  EXPECT_EQ(info_.GetColor(), 0xFFu);
  EXPECT_EQ(info_.GetDisplay()->GetDisplayType(), 1);
  EXPECT_EQ(info_.IsOpenGLDisplay(), 1);
  EXPECT_EQ(info_.GetLineStyle(), 0) << "another back end, another style";
  LOGFONTW font = {};
  EXPECT_TRUE(info_.GetDisplayData()->GetFont()->GetLogFont(&font));
  EXPECT_EQ(CString(font.lfFaceName), _T("Arial"));
  EXPECT_EQ((std::vector<int>{font.lfHeight, font.lfWeight, font.lfItalic, font.lfPitchAndFamily}),
            (std::vector{-12, 700, 1, 32}));
}

TEST_F(DisplayInfo, PositionsGoThroughBothTransforms) {
  info_.SetUseXYToModelTransf(1, kTwice);
  info_.SetUseInstTransf(1, kUp);
  CList<FRPosition> points;
  CList<FRUnitVector> normals;
  points.AddTail(FRPosition(1, 2, 3));
  normals.AddTail(FRZAxis);
  AFR_Lin_List list, *long_list = &list, *none = nullptr;
  list.append({4, 0, 0});
  double scale = 4;
  std::vector<FRPosition> vector(1);
  EXPECT_EQ(info_.DrawLine({1, 0, 0}, {0, 1, 0}) + info_.DrawArrow({1, 0, 0}, {0, 1, 0}), 2);
  EXPECT_EQ(info_.DrawEllipse({1, 1, 1}, 3, 4) + info_.DrawPlaneEllipse({1, 1, 1}, 3, 4), 2);
  EXPECT_EQ(info_.DrawTriangle(points, normals) + info_.DrawPolygon(points, normals), 2);
  EXPECT_EQ(info_.DrawPolyline(points) + info_.DrawPolyline(points, 3u) + info_.DrawPolyline(vector, 2u), 3);
  EXPECT_EQ(info_.DrawPolyline(long_list, scale) + info_.DrawPolyline(none, scale), 2);
  EXPECT_EQ(info_.DrawText({1, 0, 0}, _T("A")), 1);
  EXPECT_EQ(TakeLog(),
            "line (2 0 10) (0 2 10)\narrow (2 0 10) (0 2 10)\n"
            "ellipse (2 2 12) 3 4 2\nplane ellipse (2 2 12) 3 4\n"
            "triangle (2 4 16) normals (0 0 1)\npolygon (4 8 42) normals (0 0 1)\n"  // in place: transformed again
            "polyline (8 16 94)\nlist (16 32 198) 3\nvector (0 0 10) 2\n"
            "long polyline (2 0 10)\ntext (2 0 10) A\n");
  EXPECT_EQ(list.begin()->x(), 4) << "the long list stays";
  kvtest::ExpectNear(FRPosition(1, 0, 0) * info_.GetCombinedPreMultiplicationTransf(), {2, 0, 10}, 1e-12);
  kvtest::ExpectNear(FRPosition(1, 0, 0) * info_.GetCombinedModelToViewTransf(), {4, 0, 20}, 1e-12);
}

TEST_F(DisplayInfo, InstanceTransformsAccumulate) {
  const auto drawn = [&] {
    info_.DrawLine({}, {});
    return TakeLog().substr(5, 8);
  };
  info_.SetUseInstTransf(1, kUp);
  info_.SetUseInstTransf(1, kUp);
  EXPECT_EQ(drawn(), "(0 0 20)");
  info_.SetUseInstTransf(0, kUp);
  EXPECT_EQ(drawn(), "(0 0 0) ");
  info_.SetUseInstTransf(1, kUp);
  EXPECT_EQ(drawn(), "(0 0 30)") << "the transform outlives the flag";
  info_.SetUseInstTransf(1, info_.GetInstTransf().inverse());
  EXPECT_EQ(drawn(), "(0 0 0) ");
  info_.SetUseXYToModelTransf(1, kUp);
  info_.SetUseXYToModelTransf(1, kUp);
  EXPECT_EQ(drawn(), "(0 0 10)");
  info_.SetUseXYToModelTransf(1, FRTransf());
  EXPECT_EQ(drawn(), "(0 0 0) ");
}

TEST_F(DisplayInfo, TheScreenIsTheGDIDisplaysOne) {
  EXPECT_EQ(info_.GetScreenPoint({1.7, -1.7, 5}), CPoint(3, -3));
  EXPECT_EQ(info_.GetScreenPoint({1e30, -1e30, 0}), CPoint(2147483647, -2147483647 - 1));
  QFCamera camera;
  CRect window(0, 0, 100, 100);
  camera.SetCameraDetails({0, 0, 0}, {0, 1, 0}, FRZAxis, 1, 1, 1, 0, 100, QFeCameraPerspective, window, kUp);
  info_.SetCamera(&camera);
  EXPECT_EQ(info_.GetScreenPoint({0, 10, 0}), CPoint(50, 50));
  kvtest::ExpectNear(info_.GetWorldPointFromScreenPoint({3, 4}), {1.5, 2, 0}, 1e-12);
  EXPECT_EQ(info_.GetDC()->GetSafeHdc(), nullptr) << "no window";
}

}  // namespace
