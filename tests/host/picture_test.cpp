// Pictures as pixels: the drawing of a recording against the direct one, and views.
#include <gtest/gtest.h>

#include <random>
#include <regex>

#include "host/document/open_document.h"
#include "host/pictures/depth_order.h"
#include "host/pictures/document_picture.h"
#include "host/pictures/gdi_picture.h"
#include "host/pictures/machine_picture.h"
#include "host/pictures/opengl_picture.h"
#include "host/pictures/recording.h"
#include "host/pictures/recording_picture.h"
#include "host/pictures/svg_picture.h"
#include "host/pictures/toolpath_picture.h"
#include "host/shell/failure.h"
#include "tests/host/run_command.h"

namespace {

using namespace kestrova;

class Pictures : public kvtest::CommandTest {
 protected:
  Pictures() : CommandTest("document") {}

  static Pixels PixelsOf(Picture& picture) {
    OpenGLPicture image({.width = 320, .height = 240});
    EXPECT_TRUE(image.Draw(picture));
    return image.Read();
  }
  void ExpectReplayIsTheSame(Picture& direct) const {
    Record(direct, File("a.kvrec"));
    RecordingPicture replayed(RecordingPicture::ReadItems(File("a.kvrec")), direct.Stands());
    const Pixels pixels = PixelsOf(direct), again = PixelsOf(replayed);
    ASSERT_EQ(pixels.rgb.size(), again.rgb.size());
    std::size_t different = 0;
    for (std::size_t i = 0; i < pixels.rgb.size(); ++i) different += pixels.rgb[i] != again.rgb[i];
    EXPECT_EQ(different, 0U) << "of " << pixels.rgb.size() << " bytes";
    EXPECT_EQ(replayed.LeftOut(), 0U);
    const auto drawn = std::ranges::count_if(pixels.rgb, [](BYTE byte) { return byte != 0xFF; });
    EXPECT_GT(drawn, std::ptrdiff_t(pixels.rgb.size() / 50));
  }
};

// Without what a recording does not have.
template <class Base>
struct Bare : Base {
  using Base::Base;
  void DrawOnTop(QFDisplayInfo&, const PictureStyle&) override {}
  std::vector<LegendRow> Legend() const override { return {}; }
  std::vector<PictureMark> Marks() const override { return {}; }
};

TEST_F(Pictures, OfARecordingAreThoseOfTheDirectDrawing) {
  const OpenDocument opened(NewDocument("part.kvdoc", {"--nodes", "60"}));
  Bare<ToolpathPicture> toolpaths(*opened.document);
  ExpectReplayIsTheSame(toolpaths);
  const std::string machine = kvtest::SourceFile("examples/machines/MillTurn/TwinTurret12").string();
  Bare<MachinePicture> solids(machine, MachinePicture::Colors::kOwn);
  ExpectReplayIsTheSame(solids);
}

// True if a pixel near the place is not white.
bool IsDrawnNear(const Pixels& pixels, int x, int y) {
  for (int row = std::max(y - 1, 0); row <= std::min(y + 1, pixels.height - 1); ++row)
    for (int column = std::max(x - 1, 0); column <= std::min(x + 1, pixels.width - 1); ++column)
      if (pixels.rgb[3 * std::size_t(row * pixels.width + column) + 1] < 0xE0) return true;
  return false;
}

TEST_F(Pictures, OnADeviceContextHaveTheirLinesWhereOpenGLDrawsThem) {
  if (!std::filesystem::exists(kvtest::LibraryFile("libKVSHAREdesktop.so"))) GTEST_SKIP() << "KV_DESKTOP=OFF";
  const OpenDocument opened(NewDocument("part.kvdoc", {"--nodes", "12"}));
  Bare<ToolpathPicture> toolpaths(*opened.document);
  const Pixels opengl = PixelsOf(toolpaths), gdi = DrawByGdi(toolpaths, {.width = 320, .height = 240});
  ASSERT_EQ(gdi.rgb.size(), opengl.rgb.size());
  int drawn = 0, elsewhere = 0;
  for (int y = 0; y < gdi.height; ++y) {
    for (int x = 0; x < gdi.width; ++x) {
      if (gdi.rgb[3 * std::size_t(y * gdi.width + x) + 1] >= 0xC0) continue;
      ++drawn;
      elsewhere += !IsDrawnNear(opengl, x, y);
    }
  }
  EXPECT_GT(drawn, 1000);
  EXPECT_LT(elsewhere, drawn / 100);
}

TEST_F(Pictures, OfPatternsHaveColouredMarkersAndNumbersByAnOrder) {
  const std::string file = NewDocument("part.kvdoc", {"--nodes", "12"});
  const auto pattern = [&](const std::string& words) {
    std::vector<std::string> all = kvtest::WordsOf("pattern " + words);
    all.insert(all.begin() + 2, file);
    EXPECT_EQ(kvtest::RunCommand(all).exit_code, 0) << words;
  };
  pattern("add 7 --kind linear --direction 1,0,0 --spacing 20 --count 5");
  pattern("skip 7 1,3");
  const struct {
    const char* change;
    FeatureChoice choice;
    std::string numbers;  // with the distance from instance 0 in mm
  } rows[] = {
      {"", {.patterned = true}, "0@0 1@20 2@40 3@60 4@80 "},
      {"order 7 --operation 9 --instances 4,0,2", {.patterned = true}, "1@80 2@0 3@40 "},
      {"order 7 --operation 8 --instances 2,1", {.patterned = true, .node = 7}, "1@80 2@0 3@40 "},
      {"", {.patterned = true, .node = 8}, "1@40 2@20 "},
      {"", {.node = 7}, "Tapped Hole 2@0 "},
      {"", {.node = 7, .highlight = 7}, "Tapped Hole 2@0 "},
  };
  FRPosition first;
  for (const auto& row : rows) {
    if (*row.change) pattern(row.change);
    const OpenDocument opened(file);
    DocumentPicture picture(*opened.document, row.choice);
    const std::string svg = SvgOf(picture, {.name = "top", .width = 640, .height = 240});
    std::string numbers;
    const std::vector<PictureMark> marks = picture.Marks();
    if (!*row.change && !row.choice.node) first = marks.at(0).at;
    for (const PictureMark& mark : marks)
      numbers += mark.name + '@' + std::to_string(std::lround(mark.at.distance(first) * 1000)) + ' ';
    EXPECT_EQ(numbers, row.numbers);
    const auto ellipses = [&](const std::string& color) {
      const std::regex ellipse("<ellipse [^>]*stroke=\"" + color);
      return std::distance(std::sregex_iterator(svg.begin(), svg.end(), ellipse), {});
    };
    EXPECT_EQ(ellipses("#0000ff"), 3);
    EXPECT_EQ(ellipses("#ff0000"), 2);
    EXPECT_EQ(ellipses("#ffc800"), row.choice.highlight ? 5 : 0);
  }
}

// Disjoint random triangles: of two that cover the same place of the image, the nearer one comes later.
TEST(DepthOrder, PutsNearPiecesAfterFarOnes) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> place(-1, 1);
  std::vector<DepthPiece> pieces;
  for (std::size_t i = 0; i < 300; ++i) {
    const FRPosition at(place(random), place(random), place(random));
    DepthPiece piece = {{}, i};
    for (int corner = 0; corner < 3; ++corner)
      piece.points.push_back(at + FRVector(place(random), place(random), place(random)));
    pieces.push_back(piece);
  }
  Camera camera;
  camera.eye = {0, 0, 10};
  camera.axes = {FRXAxis, FRYAxis, FRZAxis};
  const std::vector<DepthPiece> ordered = DepthOrder(pieces, camera);
  // The height of the piece's plane at a place of the image that is inside it.
  const auto height = [](const DepthPiece& piece, double x, double y, double& z) {
    const FRPosition& a = piece.points[0];
    const FRVector normal = (piece.points[1] - a) * (piece.points[2] - a);
    for (std::size_t i = 0; i < piece.points.size(); ++i) {
      const FRPosition &from = piece.points[i], &to = piece.points[(i + 1) % piece.points.size()];
      const double side = (to.x() - from.x()) * (y - from.y()) - (to.y() - from.y()) * (x - from.x());
      if (side * normal.z() < 0.001 * std::abs(normal.z())) return false;
    }
    z = a.z() - ((x - a.x()) * normal.x() + (y - a.y()) * normal.y()) / normal.z();
    return true;
  };
  int covered = 0, wrong = 0;
  for (int sample = 0; sample < 2000; ++sample) {
    const double x = place(random), y = place(random);
    double last = -100, z = 0;
    for (const DepthPiece& piece : ordered) {
      if (!height(piece, x, y, z)) continue;
      ++covered;
      wrong += z < last - 1e-4;
      last = z;
    }
  }
  EXPECT_GT(covered, 10000);
  EXPECT_EQ(wrong, 0);
}

TEST(View, FitsTheModelIntoTheImage) {
  for (const char* name : {"iso", "top", "front", "right"}) {
    const ViewOptions view = {.name = name};
    Extent extent(AxesOf(name, Standing()));
    for (int corner = 0; corner < 8; ++corner)
      extent.Add({corner & 1 ? 5. : 3., corner & 2 ? -1. : -9., corner & 4 ? 2. : 0.});
    extent.Add({std::nan(""), 1e300, 0});
    const Camera camera = CameraFor(view, Standing(), extent, 1000, 500, 50);
    double widest = 0, highest = 0;
    for (int corner = 0; corner < 8; ++corner) {
      const FRPosition seen = camera.OnImage(extent.Corner(corner));
      widest = std::max(widest, std::abs(seen.x()));
      highest = std::max(highest, std::abs(seen.y()));
      EXPECT_GT(camera.Depth(extent.Corner(corner)), camera.near_plane) << name;
      EXPECT_LT(camera.Depth(extent.Corner(corner)), camera.far_plane) << name;
    }
    EXPECT_NEAR(std::max(widest, highest), 0.8, 1e-9) << name << ": a margin of 50 of 500 pixels on each side";
  }
}

}  // namespace
