// One scene with every operation of the display, drawn by OpenGL, on a device context, from its recording and as SVG,
// against kept references in fixtures/scene. A test that fails writes its picture, and the difference in red, below the
// build folder; copy a picture that is right to the fixtures.
#include <gtest/gtest.h>
#include <png.h>

#include <fstream>
#include <map>
#include <set>

#include "framework/device_context.h"
#include "host/pictures/gdi_picture.h"
#include "host/pictures/opengl_picture.h"
#include "host/pictures/png_file.h"
#include "host/pictures/recording.h"
#include "host/pictures/recording_picture.h"
#include "host/pictures/svg_picture.h"
#include "platform/off_screen.h"
#include "platform/opengl.h"
#include "tests/folders.h"
#include "tests/registry_calls.h"
#include "tests/scratch.h"

namespace {

using namespace kestrova;

// A pixel is like the other image's if one of the nine around the same place is: drivers place ends of lines
// differently.
constexpr int kMostLevels = 16;            // by which a channel of a pixel may differ
constexpr double kMostDifferent = 0.0005;  // of the pixels; the text has four times as many

template <class Value>
struct ListOf : CList<Value> {
  ListOf(std::initializer_list<Value> values) {
    for (const Value& value : values) this->AddTail(value);
  }
};

struct Scene : Picture {
  Scene() { characters_.Create(1, 1, 0); }
  void Draw(QFDisplayInfo& display, const PictureStyle&) override {
    display.GetDisplayData()->SetDC(&characters_);  // for OpenGL's texts
    display.SetFont(-20, /*weight=*/400, 0, 0, _T("DejaVu Sans"));
    Lines(display);
    Areas(display);
    Polylines(display);
    display.SetUseXYToModelTransf(1, GetRotateTransf(0.5, FRZAxis));
    display.SetUseInstTransf(1, GetTranslateTransf({4, 0, 0}));
    Areas(display);
    display.SetUseInstTransf(1, GetTranslateTransf({-4, 0, 0}));
    display.SetUseXYToModelTransf(0, FRTransf());
  }

  CImageDC characters_;

  static void Lines(QFDisplayInfo& display) {
    const CRect clip(60, 10, 235, 225);  // of a device context
    display.SetRectClipRegion(&clip);
    display.ClipRegion();
    display.SetFillRegion(1);
    display.SetColor(0x0000FF);
    display.SetLineWidthWithInit(3);
    for (int i = 0; i < 6; ++i) display.DrawLine({i * 0.5, -3, 0}, {i * 0.5, -2, 0.3 * i});
    display.FillRegion();
    display.SetFillRegion(0);
    display.SetLineStyle(1);
    display.DrawLine({-3, -3, 0}, {-1, -2, 0});
    display.SetLineStyle(0);
    display.SetColor(0x008000);
    display.DrawArrow({-3, 0, 0}, {-3, 0, 2});
    display.DrawArrow({-2.5, 0, 2}, {-2.5, 0, 0.5});
    display.SetColor(0xC08000);
    display.DrawEllipse({-1.5, 0, 1}, 12, 8);
    display.DrawPlaneEllipse({-0.5, 0, 1}, 9, 9);
    display.DrawText({0, 0, 2}, _T("text"));
  }

  static void Areas(QFDisplayInfo& display) {
    display.SetColor(0xB46428);
    display.SetFillColor(0xB46428);
    display.SetIsFill(1);
    CList<FRUnitVector> none;
    ListOf<FRPosition> plate = {{0, 0, 0}, {1.5, 0, 0}, {0, 1.5, 0}};
    display.DrawPolygon(plate, none);
    ListOf<FRPosition> wall = {{0, 0, 0}, {1.5, 0, 0}, {0, 0, 1.5}};
    ListOf<FRUnitVector> normals = {{0, -1, 0}, {0.5, -1, 0}, {0, -1, 0.5}};
    display.DrawTriangle(wall, normals);
    ListOf<FRPosition> square = {{2, 0, 0}, {3, 0, 0}, {3, 1, 0}, {2, 1, 0}};
    display.DrawPolygon(square, none);  // four corners: OpenGL draws none
    display.SetTransparent(1);
    ListOf<FRPosition> window = {{-0.5, -0.5, 0.2}, {1, -0.5, 0.2}, {1, -0.5, 1.2}};
    ListOf<FRUnitVector> toward = {-FRYAxis};
    display.DrawTriangle(window, toward);
    display.SetTransparent(0);
  }

  static void Polylines(QFDisplayInfo& display) {
    const auto zigzag = [](double y) {
      std::vector<FRPosition> points;
      for (int i = 0; i < 6; ++i) points.emplace_back(-3 + i * 0.4, y, i % 2 * 0.5);
      return points;
    };
    display.SetColor(0x800080);
    CList<FRPosition> list;
    for (const FRPosition& point : zigzag(1.5)) list.AddTail(point);
    display.DrawPolyline(list);
    list.RemoveAll();
    for (const FRPosition& point : zigzag(2)) list.AddTail(point);
    display.DrawPolyline(list, GL_LINES);
    std::vector<FRPosition> points = zigzag(2.5);
    display.DrawPolyline(points, GL_LINE_LOOP);
    AFR_Lin_List path;
    for (const FRPosition& point : zigzag(30)) path.append({point.x() * 10, point.y(), point.z() * 10});
    AFR_Lin_List* thousandths = &path;
    double scale = 10;
    display.DrawPolyline(thousandths, scale);
  }
};

const ViewOptions kView = {.eye = FRPosition(5, -9, 6), .target = FRPosition(0.5, 0, 0), .width = 320, .height = 240};

class SceneTest : public testing::Test {
 protected:
  static std::filesystem::path Fixture(const std::string& name) {
    return kvtest::SourceFile("tests/host/fixtures/scene") / name;
  }
  static void Keep(const std::string& name, const std::string& bytes) {
    std::ofstream(kvtest::BuiltFile("scene-" + name), std::ios::binary) << bytes;
  }

  static Pixels ReadPng(const std::filesystem::path& file) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    Pixels pixels;
    if (!png_image_begin_read_from_file(&image, file.c_str())) return pixels;
    image.format = PNG_FORMAT_RGB;
    pixels = {int(image.width), int(image.height), std::vector<BYTE>(PNG_IMAGE_SIZE(image))};
    png_image_finish_read(&image, nullptr, pixels.rgb.data(), 0, nullptr);
    return pixels;
  }

  static bool IsLike(const Pixels& image, int x, int y, const Pixels& other) {
    const auto at = [](const Pixels& of, int column, int row) {
      return of.rgb.data() + 3 * (std::size_t(row) * std::size_t(of.width) + std::size_t(column));
    };
    for (int row = std::max(y - 1, 0); row <= std::min(y + 1, other.height - 1); ++row)
      for (int column = std::max(x - 1, 0); column <= std::min(x + 1, other.width - 1); ++column)
        if (std::equal(at(image, x, y), at(image, x, y) + 3, at(other, column, row),
                       [](BYTE a, BYTE b) { return std::abs(a - b) <= kMostLevels; }))
          return true;
    return false;
  }
  static void ExpectLikeFixture(const Pixels& drawn, const std::string& name) {
    const Pixels kept = ReadPng(Fixture(name));
    Pixels difference = drawn;
    int different = 0;
    for (int y = 0, byte = 0; y < drawn.height; ++y) {
      for (int x = 0; x < drawn.width; ++x, byte += 3) {
        const bool like = kept.rgb.size() == drawn.rgb.size() && IsLike(drawn, x, y, kept) && IsLike(kept, x, y, drawn);
        BYTE* const pixel = difference.rgb.data() + byte;
        for (int c = 0; c < 3; ++c) pixel[c] = BYTE(like ? 191 + pixel[c] / 4 : c == 0 ? 255 : 0);
        different += !like;
      }
    }
    EXPECT_LE(different, kMostDifferent * drawn.width * drawn.height) << name;
    if (!HasFailure()) return;
    Keep(name, PngOf(drawn));
    Keep("difference-" + name, PngOf(difference));
  }
  static Pixels ByOpenGL(Picture& picture) {
    OpenGLPicture image(kView, /*smooth=*/false);
    return image.Draw(picture) ? image.Read() : Pixels();
  }
  static bool HasFonts() { return std::filesystem::exists(kvtest::LibraryFile("libKVSHAREdesktop.so")); }

  const kvtest::ScratchFolder folder_;
  const kvtest::RegistryIn registry_{folder_.Path()};
};

TEST_F(SceneTest, ByOpenGL) {
  if (!HasFonts()) GTEST_SKIP() << "KV_DESKTOP=OFF";
  Scene scene;
  ExpectLikeFixture(ByOpenGL(scene), "opengl.png");
}

// All values of the context by their numbers, switches as 0 and 1.
std::map<unsigned, std::vector<GLfloat>> ContextState() {
  std::map<unsigned, std::vector<GLfloat>> state;
  for (unsigned name = 0x0B00; name < 0x0DE2; ++name) {
    std::vector<GLfloat>& values = state[name];
    values.resize(16);
    glGetFloatv(name, values.data());
    values.push_back(glIsEnabled(name));
  }
  while (glGetError() != GL_NO_ERROR) {
  }
  return state;
}

TEST_F(SceneTest, LeavesTheOtherStateOfTheContext) {
  const OffScreenContext context;
  const OffScreenImage image(context, 64, 64, 0);
  ASSERT_TRUE(image.IsReady());
  Scene scene;
  QFDisplayInfo display(/*useOpenGL=*/1, /*window=*/nullptr, FRTransf());
  const auto before = ContextState();
  display.InitialiseGraphics();
  scene.Draw(display, {});
  display.UninitialiseGraphics();
  std::set<unsigned> changed;
  for (const auto& [name, values] : ContextState())
    if (values != before.at(name)) changed.insert(name);
  // What the display sets for its drawing and, for existing modules, does not set back.
  EXPECT_EQ(changed,
            (std::set<unsigned>{GL_CURRENT_NORMAL, GL_CURRENT_RASTER_POSITION_VALID, GL_POINT_SMOOTH, GL_POINT_SIZE,
                                GL_LINE_WIDTH, GL_LINE_STIPPLE_PATTERN, GL_LIST_BASE, GL_BLEND_DST, GL_BLEND_SRC}));
}

TEST_F(SceneTest, IsNotDrawnWithoutAContext) {
  Scene scene;
  QFDisplayInfo display(/*useOpenGL=*/1, /*window=*/nullptr, FRTransf());
  display.InitialiseGraphics();
  scene.Draw(display, {});
  EXPECT_EQ(display.GenerateDisplayList(1), nullptr);
  EXPECT_EQ(display.UninitialiseGraphics(), 1);
}

TEST_F(SceneTest, OnADeviceContext) {
  if (!HasFonts()) GTEST_SKIP() << "KV_DESKTOP=OFF";
  Scene scene;
  ExpectLikeFixture(DrawByGdi(scene, {.width = 320, .height = 240}, /*smooth=*/false), "gdi.png");
}

// Lines, lists without a mode and filled shapes only: the rest is not recorded.
TEST_F(SceneTest, FromItsRecording) {
  Scene scene;
  const std::string file = (folder_.Path() / "scene.kvrec").string();
  Record(scene, file);
  RecordingPicture replayed(RecordingPicture::ReadItems(file));
  ExpectLikeFixture(ByOpenGL(replayed), "replayed.png");
  EXPECT_EQ(replayed.LeftOut(), 1U) << "the text";
}

TEST_F(SceneTest, AsSvg) {
  Scene scene;
  const std::string svg = SvgOf(scene, kView);
  EXPECT_EQ(svg, kvtest::ReadFile(Fixture("scene.svg")));
  if (HasFailure()) Keep("scene.svg", svg);
}

}  // namespace
