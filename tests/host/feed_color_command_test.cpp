// kestrova feedcolors, as a user runs it, and the bar on a terminal.
#include "host/settings/feed_color_table.h"
#include "host/shell/color_text.h"
#include "tests/host/run_command.h"

namespace {

using kestrova::ColorFromText, kestrova::ColorText, kestrova::FeedColorsText;
using kvtest::Prints, kvtest::Refused, kvtest::RunResult;

class FeedColorCommand : public kvtest::CommandTest {
 protected:
  FeedColorCommand() : CommandTest("feedcolors") {}
  RunResult Feed(std::vector<std::string> words, const std::string& process = "mill") const {
    words.insert(words.end(), {"--process", process});
    return Run(words);
  }
};

TEST_F(FeedColorCommand, AddsReplacesRemovesAndLooksUp) {
  const RunResult done = Prints("");
  EXPECT_EQ(Feed({"add", "200", "#00FF00"}), done);
  EXPECT_EQ(Feed({"add", "50.004", "0xFF0000"}), done) << "0xBBGGRR";
  EXPECT_EQ(Feed({"add", "200.00", "#FF8001"}), done) << "the same row";
  EXPECT_EQ(Feed({"add", "70", "255"}, "turn"), done) << "another table";
  EXPECT_EQ(Feed({"remove", "100000"}), done) << "the row of an empty table";
  EXPECT_EQ(Feed({"show"}), Prints("up to  50.00  #0000FF\nup to 200.00  #FF8001\nabove         none\n"));
  for (const auto& [feed, color] : {std::pair{"50", "#0000FF\n"}, {"50.01", "#FF8001\n"}, {"201", "none\n"}})
    EXPECT_EQ(Feed({"color", feed}), Prints(color));
  EXPECT_EQ(Feed({"remove", "60"}),
            Refused("HKCU\\Software\\Zemlor\\Kestrova\\FeedColors\\Mill has no row 60.00; it has 50.00, 200.00", 1));
}

TEST_F(FeedColorCommand, OfRowsWithTheSameTextTheFoundColorStays) {
  for (const auto& [name, color] : {std::pair{_T("50.004"), DWORD{2}}, std::pair{_T("5e1"), DWORD{1}}})
    kvtest::Put(HKEY_CURRENT_USER, _T("Software\\Zemlor\\Kestrova\\FeedColors\\Mill"), name,
                {REG_DWORD, kvtest::Raw(color)});
  EXPECT_EQ(Feed({"color", "50"}).out, "#010000\n");
  Feed({"add", "60", "255"});
  EXPECT_EQ(Feed({"show"}).out, "up to 50.00  #010000\nup to 60.00  #FF0000\nabove        none\n");
}

TEST_F(FeedColorCommand, JsonHasNumbersAndNull) {
  Feed({"add", "12.5", "#010203"}, "edm");
  const auto shown = Json({"show", "--process", "edm"});
  EXPECT_EQ(shown["key"], "HKCU\\Software\\Zemlor\\Kestrova\\FeedColors\\Edm");
  ASSERT_EQ(shown["rows"].size(), 2u);
  EXPECT_EQ(shown["rows"][0], (nlohmann::json{{"upTo", 12.5}, {"rgb", "#010203"}, {"value", 0x030201}}));
  EXPECT_EQ(shown["rows"][1]["upTo"], 100000);
  const auto color = Json({"color", "100001", "--process", "edm"});
  EXPECT_EQ(color, (nlohmann::json{{"process", "edm"}, {"feed", 100001.0}, {"rgb", nullptr}, {"value", nullptr}}));
}

TEST_F(FeedColorCommand, RefusesBadFeedsAndColors) {
  for (const char* feed : {"", "nan", "1e3", "1.2.3", "1000000001"}) {
    EXPECT_EQ(Feed({"add", feed, "#000000"}),
              Refused(std::string("FEED \"") + feed + "\" is not a number from 0 to 1000000000, such as 120 or 99.5",
                      /*exit_code=*/2));
  }
  for (const char* color : {"", "#12345", "#1234567", "#12345G", "0x", "0x100000000", "-1", "12 "})
    EXPECT_EQ(ColorFromText(color), std::nullopt) << color;
  EXPECT_EQ(ColorText(*ColorFromText("0xff000001")), "0xFF000001") << "no plain colour, but a number that can be kept";
  for (const std::string color : {"red", "0x1000000"}) {
    EXPECT_EQ(Feed({"add", "1", color}),
              Refused("COLOR \"" + color + "\" is neither #RRGGBB nor 0xBBGGRR; write it like '#FF8000'",
                      /*exit_code=*/2));
  }
}

TEST(FeedColorTable, TerminalGetsABarWithItsThresholdsBelowTheEnds) {
  const std::string red = "\x1b[48;2;255;0;0m", blue = "\x1b[48;2;1;2;255m", end = "\x1b[0m";
  EXPECT_EQ(FeedColorsText({{100, 0xFF}, {2000.5, 0xFF0201}}, /*colored=*/true),
            red + std::string(32, ' ') + end + blue + std::string(32, ' ') + end + "\n" + std::string(26, ' ') +
                "100.00" + std::string(25, ' ') + "2000.50\n" + "up to  100.00  " + red + "    " + end + " #FF0000\n" +
                "up to 2000.50  " + blue + "    " + end + " #0102FF\n" + "above          none\n");
  EXPECT_EQ(FeedColorsText({}, /*colored=*/true), "above   none\n");
  // Of a thousand rows the bar has 64, and no threshold overlaps the one before it.
  const std::string many = FeedColorsText(std::vector<kestrova::FeedColorRow>(1000, {7, 0xFF}), /*colored=*/true);
  std::string bar, legend = "\n7.00";
  for (int cell = 0; cell < 64; ++cell) bar += red + " " + end;
  for (int label = 1; label < 13; ++label) legend += " 7.00";
  EXPECT_EQ(many.substr(0, bar.size() + legend.size()), bar + legend);
}

}  // namespace
