// QFOpenGLDisplay and its display lists: the calls of OpenGL and GLU in their order, with their arguments.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <set>

#include "share/core/registry_keys.h"
#include "share/display/display_info.h"
#include "share/display/opengl_display.h"
#include "share/settings/application_settings.h"
#include "tests/display/gl_log.h"
#include "tests/registered.h"

namespace {

using kvtest::GL;

constexpr unsigned kLighting = 0x0B50, kClipPlane2 = 0x3002;

QFAppSettings* g_settings = nullptr;

class OpenGL : public testing::Test {
 protected:
  OpenGL() {
    GL() = {};
    g_settings = &settings_;
    kvtest::Register({.appSettings = []() -> QFSettingsKey* { return g_settings; }});
    settings_.SetValue(_T("UseHardwareRendering"), 2);
  }
  ~OpenGL() override { kvtest::Register({}); }

  QFAppSettings settings_;
  QFDisplayData data_;
};

using Display = QFOpenGLDisplay;

TEST_F(OpenGL, PrimitivesCallByCall) {
  CList<FRPosition> points, four, one;
  CList<FRUnitVector> normals, none;
  AFR_Lin_List list, *points_list = &list, *no_list = nullptr;
  std::vector<FRPosition> vector = {{2, 0, 0}, {4, 0, 0}, {6, 0, 0}};
  for (const FRPosition& point : vector) points.AddTail(point / 2), list.append(point);
  four.AddTail(&points);
  four.AddTail(FRPosition(4, 0, 0));
  one.AddTail(FRPosition(1, 0, 0));
  normals.AddTail(FRZAxis);
  normals.AddTail(FRXAxis);
  double scale = 2;
  QFDisplayTransforms moved;
  moved.m_bUseInstTransf = moved.m_bUseXYToModelTransf = 1;
  moved.m_InstTransf = GetTranslateTransf({0, 0, 5});
  moved.m_XYToModelTransf = GetScaleTransf(2);
  const std::string strip = "V 1 0 0; V 2 0 0; V 3 0 0; End; ", back = "V 3 0 0; V 2 0 0; V 1 0 0; End; ";
  const std::string lit = "N 0 0 1; V 1 0 0; N 1 0 0; V 2 0 0; V 3 0 0; End; ";
  const std::string ball =
      "Material 0.125 0.25 0.375 1; Push; Translate 1 2 3; NewQuadric; Normals 100000; "
      "Orientation 100020; ";
  // "<" stands for switching the host's lighting off, ">" for switching it on again.
  const struct {
    const char* what;
    std::function<void(Display&)> draw;
    std::string log;
  } rows[] = {
      {"line",
       [](Display& d) {
         d.DrawLine({1, 2, 3}, {4, 5, 6});
       },
       "<Begin 1; V 1 2 3; V 4 5 6; End; >"},
      {"arrow",
       [](Display& d) {
         d.DrawArrow({}, {0, 3, 0});
       },
       "<Begin 1; V 0 0 0; V 0 3 0; End; Push; NewQuadric; Translate 0 3 0; Rotate 90 -1 0 0; Cylinder 0.5 0 1 20 5; "
       "Pop; >"},
      {"arrow back",
       [](Display& d) {
         d.DrawArrow({}, {0, 0, -3});
       },
       "<Begin 1; V 0 0 0; V 0 0 -3; End; Push; NewQuadric; Translate 0 0 -3; Rotate 180 1 0 0; "
       "Cylinder 0.5 0 1 20 5; Pop; >"},
      {"ellipse",
       [](Display& d) {
         d.DrawEllipse({1, 2, 3}, 2, 6, GetScaleTransf(4));
       },
       ball + "Sphere 1.5 20 20; Pop; DeleteQuadric; "},
      {"ellipse without a scale",
       [](Display& d) {
         d.DrawEllipse({1, 2, 3}, 7, 6, GetScaleTransf(0));
       },
       ball + "Sphere 3.5 20 20; Pop; DeleteQuadric; "},
      {"ellipse below 0",
       [](Display& d) {
         d.DrawEllipse({1, 2, 3}, -2, -6, GetScaleTransf(4));
       },
       ball + "Sphere -1 20 20; Pop; DeleteQuadric; "},
      {"plane ellipse",
       [](Display& d) {
         d.DrawPlaneEllipse({1, 2, 3}, 4, 9);
       },
       "<+POINT_SMOOTH; PointSize 4; Begin 0; V 1 2 3; End; >"},
      {"triangle", [&](Display& d) { d.DrawTriangle(points, none); }, "<Begin 4; " + strip + "Begin 4; " + back + ">"},
      {"lit triangle", [&](Display& d) { d.DrawTriangle(points, normals); }, "Begin 4; " + lit},
      {"polygon", [&](Display& d) { d.DrawPolygon(points, none); }, "<Begin 9; " + strip + "Begin 9; " + back + ">"},
      {"lit polygon", [&](Display& d) { d.DrawPolygon(points, normals); }, "Begin 9; " + lit},
      {"four corners", [&](Display& d) { d.DrawPolygon(four, none), d.DrawTriangle(four, normals); }, ""},
      {"polyline", [&](Display& d) { d.DrawPolyline(points); }, "<Begin 3; " + strip + ">"},
      {"loop", [&](Display& d) { d.DrawPolyline(points, 2u); }, "<Begin 2; " + strip + ">"},
      {"points", [&](Display& d) { d.DrawPolyline(vector, 0u); }, "<Begin 0; V 2 0 0; V 4 0 0; V 6 0 0; End; >"},
      {"one point", [&](Display& d) { d.DrawPolyline(one), d.DrawPolyline(one, 0u); }, ""},
      {"no list", [&](Display& d) { d.DrawPolyline(no_list, scale, moved); }, ""},
      {"list", [&](Display& d) { d.DrawPolyline(points_list, scale, moved); },
       "<Begin 1; V 2 0 5; V 4 0 5; V 4 0 5; V 6 0 5; End; >"},
      {"reserved", [&](Display& d) { static_cast<QFBaseDisplay&>(d).DrawPolyline(points_list, scale, moved, 1); }, ""},
      {"two texts",
       [](Display& d) {
         d.DrawText({1, 2, 3}, _T("Ab")), d.DrawText({}, CString());
       },
       "<RasterPos 1 2 3; ListBase 1000; CallLists 2 65; ><RasterPos 0 0 0; CallLists 0 0; >"},
      {"width", [](Display& d) { d.SetLineWidthOnlyByGLCall(4); }, "LineWidth 4; "},
      {"style", [](Display& d) { d.SetLineStyle(1), d.SetLineStyle(1), d.SetLineStyle(0); },
       "LineStipple 1 255; +LINE_STIPPLE; -LINE_STIPPLE; "},
      {"no regions", [](Display& d) { d.SetFillRegion(d.FillRegion() + d.ClipRegion()); }, ""},
  };
  for (const bool lights : {false, true}) {
    for (const auto& row : rows) {
      GL() = {};
      if (lights) GL().enabled = {kLighting};
      Display display;
      display.SetDisplayData(&data_);
      display.InitialiseGraphics();
      std::copy_n(kvtest::FakeGL().color, 4, GL().color);
      GL().TakeLog();
      row.draw(display);
      std::string expected;
      for (const char c : row.log)
        expected += c == '<'   ? (lights ? "-LIGHTING; " : "")
                    : c == '>' ? (lights ? "+LIGHTING; " : "")
                               : std::string(1, c);
      EXPECT_EQ(GL().TakeLog(), expected) << row.what;
    }
  }
}

TEST_F(OpenGL, StateIsTakenAndGivenBack) {
  const std::string host = "Color 0.125 0.25 0.375; ";
  const struct {
    const char* what;
    std::set<unsigned> enabled;
    bool depthWrites, dashed, transparent;
    std::string on, off;
  } rows[] = {
      {"plain", {}, true, false, false, "Material 0.2 0.4 1 1; -LINE_STIPPLE; LineWidth 3; ", "DepthMask 1; "},
      {"lit and clipped, no depth writes",
       {kLighting, kClipPlane2},
       false,
       false,
       false,
       "Material 0.2 0.4 1 1; -CLIP_PLANE2; -LINE_STIPPLE; LineWidth 3; ",
       "+LIGHTING; +CLIP_PLANE2; "},
      {"dashed",
       {},
       true,
       true,
       false,
       "Material 0.2 0.4 1 1; LineStipple 1 255; +LINE_STIPPLE; LineWidth 3; ",
       "DepthMask 1; -LINE_STIPPLE; "},
      {"transparent",
       {},
       true,
       false,
       true,
       "Color 0.2 0.4 1 0.5; Material 0.2 0.4 1 0.5; -LINE_STIPPLE; LineWidth 3; BlendFunc 770 771; +BLEND; "
       "DepthMask 0; ",
       "Color 0.125 0.25 0.375 0.5; DepthMask 1; "},
      {"transparent, no depth writes",
       {},
       false,
       false,
       true,
       "Color 0.2 0.4 1 0.5; Material 0.2 0.4 1 0.5; -LINE_STIPPLE; LineWidth 3; BlendFunc 770 771; +BLEND; "
       "DepthMask 0; ",
       "Color 0.125 0.25 0.375 0.5; DepthMask 0; "},
  };
  for (const auto& row : rows) {
    GL() = {};
    GL().enabled = row.enabled;
    GL().depthWrites = row.depthWrites;
    Display display;
    EXPECT_EQ(display.InitialiseGraphics() + display.UninitialiseGraphics(), 2) << "without data";
    display.SetDisplayData(&data_);
    data_.SetColor(0xFF6633);
    data_.SetLineWidth(3);
    data_.SetIsTransparent(row.transparent);
    display.SetLineStyle(row.dashed);
    GL().TakeLog();
    EXPECT_EQ(display.InitialiseGraphics() + display.InitialiseGraphics(), 2);
    EXPECT_EQ(GL().TakeLog(), "Color 0.2 0.4 1; " + row.on) << row.what;
    data_.SetIsTransparent(!row.transparent);  // does not change what has to be undone
    EXPECT_EQ(display.UninitialiseGraphics() + display.UninitialiseGraphics(), 2);
    EXPECT_EQ(GL().TakeLog(), (row.transparent ? "DepthMask 1; -BLEND; " : "") + host + row.off) << row.what;
    EXPECT_EQ(GL().enabled, row.enabled) << row.what;
    EXPECT_EQ(GL().depthWrites, row.depthWrites) << row.what;
  }
}

TEST_F(OpenGL, DepthIsClearedOncePerModeAndBeforeAnEarlyReturn) {
  CList<FRPosition> none;
  for (const int mode : {1, 2}) {
    settings_.SetValue(_T("UseHardwareRendering"), mode);
    const std::string cleared = mode == 1 ? "ClearDepth; " : "";
    Display display;
    display.DrawPolyline(none), display.DrawPolyline(none);
    EXPECT_EQ(GL().TakeLog(), cleared);
    display.BeginShadedDisplay();
    display.DrawPolyline(none);
    EXPECT_EQ(GL().TakeLog(), "");
    display.EndShadedDisplay();
    display.DrawPolyline(none), display.DrawPolyline(none);
    EXPECT_EQ(GL().TakeLog(), cleared);
  }
  kvtest::Register({});
  Display display;
  display.BeginShadedDisplay(), display.EndShadedDisplay(), display.DrawPolyline(none);
  EXPECT_EQ(GL().TakeLog(), "ClearDepth; ") << "without settings";
}

TEST_F(OpenGL, FirstTextMakesTheListsOfItsFont) {
  CImageDC image;
  if (!image.Create(1, 1, 0)) GTEST_SKIP() << "KV_DESKTOP=OFF";
  Display display;
  const auto set_font = [&](int height) {
    data_.SetFont(new CFont);
    data_.GetFont()->CreateFont(height, 0, 0, 0, 400, 0, 0, 0, 0, 0, 0, 0, 0, _T("DejaVu Sans"));
  };
  set_font(-12);
  data_.SetDC(&image);
  display.SetDisplayData(&data_);
  display.DrawText({}, _T("I"));
  const std::string log = GL().TakeLog();
  const auto at = [&](const std::string& part) { return log.find(part); };
  const std::size_t letter = at("NewList 1073; Bitmap "), last = at("NewList 1254; "),
                    end = at("PopStore; ListBase 1000; ");
  EXPECT_TRUE(at("PushStore; NewList 1000; Bitmap 0 0 0 0 0 0; EndList; ") < letter && letter < last && last < end)
      << log;
  EXPECT_NE(log.find("CallLists 1 73; ", end), log.npos);
  const std::string bitmap = log.substr(letter, log.find("EndList", letter) - letter);
  EXPECT_GE(std::count(bitmap.begin(), bitmap.end(), '#'), 9) << "the letter's stroke\n" << bitmap;
  set_font(-40);
  display.DrawText({}, _T("I"));
  EXPECT_EQ(GL().TakeLog().find("NewList"), std::string::npos) << "all texts have the first one's font";
}

TEST_F(OpenGL, TextsAreSwitchedOffByTheRegistry) {
  QFSettingsKey key(_T("Debug"), kProductDebugKey);
  key.AddValue(_T("OpenGLDrawText"), 0);
  ASSERT_EQ(key.SaveValuesToRegistry(), 1);
  Display().DrawText({}, _T("A"));
  EXPECT_EQ(GL().TakeLog(), "");
  key.SetValue(_T("OpenGLDrawText"), 1);
  ASSERT_EQ(key.SaveValuesToRegistry(), 1);
  Display().DrawText({}, _T("A"));
  EXPECT_EQ(GL().TakeLog(), "RasterPos 0 0 0; ListBase 1000; CallLists 1 65; ");
}

TEST_F(OpenGL, ListsHoldAsManyPrimitivesAsTheyAreSaidTo) {
  for (const auto& [count, lists] : std::map<LONGLONG, int>{{0, 1}, {249, 1}, {250, 2}, {499, 2}, {500, 3}}) {
    GL().TakeLog();
    QFOpenGlDisplayList list;
    EXPECT_EQ(list.Initialise(count), 1);
    EXPECT_EQ(GL().TakeLog(), fmt::format("GenLists {}; ", lists));
  }
  Display display;
  const auto draw = [&](int count) {
    for (int i = 0; i < count; ++i) display.DrawPolyline(CList<FRPosition>());
    return GL().TakeLog();
  };
  draw(1);
  GL().TakeLog();
  const std::unique_ptr<QFDisplayList> list(display.GenerateDisplayList(250));
  QFOpenGlDisplayList other;
  EXPECT_EQ(GL().TakeLog(), "GenLists 2; ");
  EXPECT_EQ(display.BeginDisplayList(nullptr) + display.EndDisplayList(nullptr), 0);
  for (int i = 0; i < 2; ++i) {  // the second time into the same lists
    EXPECT_EQ(display.BeginDisplayList(list.get()), 1);
    EXPECT_EQ(display.BeginDisplayList(&other) + display.EndDisplayList(&other), 0) << "the first one stays open";
    EXPECT_EQ(GL().TakeLog(), "NewList 7; ");
    EXPECT_EQ(draw(250), "");
    EXPECT_EQ(draw(1), "EndList; NewList 8; ");
    EXPECT_EQ(draw(250), "");
    EXPECT_EQ(draw(1), "EndList; ") << "the next ones are drawn directly";
    EXPECT_EQ(draw(1), "");
    EXPECT_EQ(display.EndDisplayList(list.get()) + display.EndDisplayList(list.get()), 1);
    EXPECT_EQ(GL().TakeLog(), "EndList; ");
  }
  EXPECT_EQ(display.RenderDisplayList(list.get(), {1, 2, 3}), 1);
  EXPECT_EQ(GL().TakeLog(), "Translate 1 2 3; CallList 7; CallList 8; Translate -1 -2 -3; ");
  EXPECT_EQ(list->Delete(), 1);
  EXPECT_EQ(list->Render({}) + display.RenderDisplayList(nullptr, {}) + other.Render({}) + other.Tick(), 0);
  EXPECT_EQ(GL().TakeLog(), "DeleteLists 7 2; ");
  GL().error = 0x505;
  EXPECT_EQ(display.GenerateDisplayList(1), nullptr);
  GL().error = 0, GL().nextList = 0;
  EXPECT_EQ(display.GenerateDisplayList(1), nullptr);
  EXPECT_EQ(display.GenerateDisplayList(LONGLONG{1} << 60), nullptr);
  EXPECT_EQ(GL().TakeLog(), "GenLists 1; DeleteLists 7 0; GenLists 1; ");
}

TEST_F(OpenGL, AnInfoWithTheFlagDrawsWithIt) {
  settings_.SetValue(_T("UseHardwareRendering"), 1);
  QFDisplayInfo info(1, nullptr, FRTransf());
  EXPECT_EQ(info.GetDisplay()->GetDisplayType(), 2);
  info.DrawLine({}, {});
  EXPECT_EQ(GL().TakeLog(), "ClearDepth; Begin 1; V 0 0 0; V 0 0 0; End; ");
  info.SetOpenGLDisplay(0);
  info.SetOpenGLDisplay(1);
  info.DrawLine({}, {});
  EXPECT_EQ(GL().TakeLog(), "");
}

}  // namespace
