// kestrova picture: what a recording of toolpaths holds.
#include <algorithm>
#include <cmath>
#include <set>

#include "host/jobs/toolpath.h"
#include "share/display/recording_reader.h"
#include "tests/host/run_command.h"

namespace {

using kestrova::HostFeature;

class PictureCommand : public kvtest::CommandTest {
 protected:
  PictureCommand() : CommandTest("picture") {}

  QFToolpathDisplayItems ItemsOf(const std::string& file) const {
    QFToolpathDisplayItems items;
    DisplayRecordingFailure failure;
    EXPECT_TRUE(ReadDisplayRecording(kvtest::ReadFile(file), items, failure)) << failure.reason;
    return items;
  }
};

TEST_F(PictureCommand, RecordsFeedMovesInTheirColourAndRapidMovesDashed) {
  const std::string document = NewDocument("part.kvdoc", {"--nodes", "60"}), out = File("a.kvrec");
  EXPECT_EQ(kvtest::RunCommand({"feedcolors", "add", "--process", "mill", "1200", "#102030"}).exit_code, 0);
  EXPECT_EQ(kvtest::RunCommand({"settings", "set", "UseFeedColors", "1", "--document", document}).exit_code, 0);
  const nlohmann::json answer = Json({document, "--out", out});
  const QFToolpathDisplayItems items = ItemsOf(out);
  EXPECT_EQ(answer["items"], items.size());
  ULONGLONG positions = 0;
  std::ptrdiff_t polylines = 0;
  std::set<std::pair<int, DWORD>> kinds;
  for (const auto& item : items) {
    const auto* const polyline = dynamic_cast<const QFToolpathDisplayPolyline*>(item.get());
    kinds.insert({item->m_bDashed, item->m_Color});
    EXPECT_EQ(item->m_nType, polyline ? QFeDisplayPolyline : QFeDisplayLine);
    EXPECT_EQ(item->m_bDashed, !polyline);
    polylines += polyline != nullptr;
    positions += polyline ? polyline->m_PtList.size() : 2;
  }
  EXPECT_EQ(answer["positions"], positions);
  EXPECT_EQ(kinds, (std::set<std::pair<int, DWORD>>{{0, 0x302010}, {1, 0x0000C0}}));
  const std::string text = kvtest::ReadFile(out + ".txt");
  EXPECT_TRUE(text.starts_with("# dashed\n")) << "the first item of a process writes its style";
  EXPECT_EQ(std::count(text.begin(), text.end(), '#'), 1 + 2 * polylines) << "around each polyline";
}

TEST(ToolpathContours, AreTheEndsOfTheMovesAtTheirDepth) {
  const HostFeature::Point square[] = {{0, 0}, {0.02, 0}, {0.02, 0.01}, {0, 0.01}};
  std::vector<double> depths;
  double outside = 0;
  const kestrova::Toolpath path = kestrova::ComputeToolpath(
      {square, 0.012, 0.008, 0.002, 1e-6, /*coarse=*/true}, [](int, const char*) { return true; },
      [&](double depth, std::span<const HostFeature::Point> points) {
        const double distance = 0.004 + 0.002 * double(depths.size() % 8);
        for (const auto& p : points) {
          const double x = std::max({-p.x, p.x - 0.02, 0.0}), y = std::max({-p.y, p.y - 0.01, 0.0});
          outside = std::max(outside, std::abs(std::hypot(x, y) - distance));
        }
        depths.push_back(depth);
      });
  EXPECT_LT(outside, 1e-9) << "each point at the contour's distance from the square";
  EXPECT_EQ(int(depths.size()), path.contours);
  EXPECT_DOUBLE_EQ(depths.front(), 0.004);
  EXPECT_DOUBLE_EQ(depths.back(), 0.012);
}

}  // namespace
