// One scene with every operation of the display, drawn by OpenGL, from its recording and as SVG, against kept
// references in fixtures/scene. A test that fails writes its picture, and the difference in red, below the build
// folder; copy a picture that is right to the fixtures.
#include <gtest/gtest.h>
#include <png.h>

#include <fstream>

#include "host/pictures/opengl_picture.h"
#include "host/pictures/png_file.h"
#include "host/pictures/recording.h"
#include "host/pictures/recording_picture.h"
#include "host/pictures/svg_picture.h"
#include "platform/opengl.h"
#include "tests/folders.h"
#include "tests/registry_calls.h"
#include "tests/scratch.h"

namespace {

using namespace kestrova;

constexpr int kMostLevels = 16;          // by which a channel of a pixel may differ
constexpr double kMostDifferent = 0.01;  // of the pixels: drivers place the ends of lines differently

template <class Value>
struct ListOf : CList<Value> {
  ListOf(std::initializer_list<Value> values) {
    for (const Value& value : values) this->AddTail(value);
  }
};

struct Scene : Picture {
  void Draw(QFDisplayInfo& display, const PictureStyle&) override {
    Lines(display);
    Areas(display);
    Polylines(display);
    display.SetUseXYToModelTransf(1, GetRotateTransf(0.5, FRZAxis));
    display.SetUseInstTransf(1, GetTranslateTransf({4, 0, 0}));
    Areas(display);
    display.SetUseInstTransf(1, GetTranslateTransf({-4, 0, 0}));
    display.SetUseXYToModelTransf(0, FRTransf());
  }

  static void Lines(QFDisplayInfo& display) {
    const CRect clip(10, 10, 20, 20);
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

  static void ExpectLikeFixture(Picture& picture, const std::string& name) {
    OpenGLPicture image(kView, /*smooth=*/false);
    ASSERT_TRUE(image.Draw(picture));
    const Pixels drawn = image.Read(), kept = ReadPng(Fixture(name));
    Pixels difference = drawn;
    std::size_t different = 0;
    for (std::size_t i = 0; i < drawn.rgb.size(); i += 3) {
      bool same = i + 2 < kept.rgb.size();
      for (std::size_t c = i; same && c < i + 3; ++c) same = std::abs(drawn.rgb[c] - kept.rgb[c]) <= kMostLevels;
      for (std::size_t c = i; c < i + 3; ++c)
        difference.rgb[c] = same ? BYTE(191 + drawn.rgb[c] / 4) : BYTE(c == i ? 255 : 0);
      different += !same;
    }
    const double part = double(different) / (double(drawn.rgb.size()) / 3);
    EXPECT_EQ(kept.width, drawn.width);
    EXPECT_LE(part, kMostDifferent) << name;
    if (!HasFailure()) return;
    Keep(name, PngOf(drawn));
    Keep("difference-" + name, PngOf(difference));
  }

  const kvtest::ScratchFolder folder_;
  const kvtest::RegistryIn registry_{folder_.Path()};
};

TEST_F(SceneTest, ByOpenGL) {
  Scene scene;
  ExpectLikeFixture(scene, "opengl.png");
}

// Lines, lists without a mode and filled shapes only: the rest is not recorded.
TEST_F(SceneTest, FromItsRecording) {
  Scene scene;
  const std::string file = (folder_.Path() / "scene.kvrec").string();
  Record(scene, file);
  RecordingPicture replayed(RecordingPicture::ReadItems(file));
  ExpectLikeFixture(replayed, "replayed.png");
  EXPECT_EQ(replayed.LeftOut(), 1U) << "the text";
}

TEST_F(SceneTest, AsSvg) {
  Scene scene;
  const std::string svg = SvgOf(scene, kView);
  EXPECT_EQ(svg, kvtest::ReadFile(Fixture("scene.svg")));
  if (HasFailure()) Keep("scene.svg", svg);
}

}  // namespace
