// Rules for all sources: includes point down only, code for an operating system is only in the platform layer, and what
// the command line prints passes host/shell/output.h, which makes names and values harmless for a terminal.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "tests/folders.h"

namespace {

namespace fs = std::filesystem;

const std::vector<std::string> kLayers = {"platform", "framework", "companions", "share", "host", "desktop"};

// A line of a source. The file is relative to the root, with slashes; place is "file:line".
struct Line {
  std::string file, place, text;
};

// All lines of the layers that match the expression, with the match.
std::vector<std::pair<Line, std::smatch>> Matches(const std::regex& expression) {
  static const std::vector<Line> lines = [] {
    std::vector<Line> all;
    for (const std::string& layer : kLayers) {
      for (const auto& entry : fs::recursive_directory_iterator(kvtest::SourceFile(layer))) {
        if (entry.path().extension() != ".h" && entry.path().extension() != ".cpp") continue;
        const std::string name = fs::relative(entry.path(), kvtest::SourceFile()).generic_string();
        std::ifstream in(entry.path());
        int number = 0;
        for (std::string text; std::getline(in, text);)
          all.push_back({name, name + ":" + std::to_string(++number), text});
      }
    }
    return all;
  }();
  std::vector<std::pair<Line, std::smatch>> found;
  std::smatch match;
  for (const Line& line : lines) {
    if (std::regex_search(line.text, match, expression)) found.emplace_back(line, match);
  }
  return found;
}

struct Include {
  Line line;
  bool quoted;
  std::string target;
};

std::vector<Include> AllIncludes() {
  std::vector<Include> includes;
  for (const auto& [line, match] : Matches(std::regex(R"re(^\s*#\s*include\s*(["<])([^">]+)[">])re")))
    includes.push_back({line, match[1] == "\"", match[2]});
  return includes;
}

// share/machine/x.h -> share/machine; share/kvshare.h -> empty
std::string RoomOf(const std::string& path) {
  const std::size_t end = path.find('/', path.find('/') + 1);
  return end == std::string::npos ? "" : path.substr(0, end);
}

int LayerOf(const std::string& path) {
  return int(std::find(kLayers.begin(), kLayers.end(), path.substr(0, path.find('/'))) - kLayers.begin());
}

// Rooms of share/ and host/ by rank: each may include only rooms of a lower rank. Files directly in share/ or host/ may
// include every room.
constexpr std::pair<int, std::string_view> kRooms[] = {
    {0, "share/core"},        {1, "share/utilities"}, {2, "share/settings"},  {3, "share/env"},
    {4, "share/objects"},     {5, "share/machine"},   {5, "share/jobs"},      {5, "share/display"},
    {5, "share/diagnostics"}, {6, "share/patterns"},  {6, "share/interface"}, {0, "host/shell"},
    {1, "host/document"},     {1, "host/registry"},   {1, "host/settings"},   {1, "host/machine"},
    {1, "host/environment"},  {2, "host/module"},     {2, "host/logs"},       {2, "host/jobs"},
    {3, "host/crash"},        {3, "host/pictures"},   {4, "host/commands"}};

int RankOf(std::string_view room) {
  for (const auto& [rank, name] : kRooms)
    if (name == room) return rank;
  return -1;
}

// The folder that a header in an internal/ folder belongs to: share/machine/internal/x.h -> share/machine/. Empty for
// any other path.
std::string OwnerOfInternal(const std::string& path) {
  const std::size_t at = path.find("/internal/");
  return at == std::string::npos ? "" : path.substr(0, at + 1);
}

}  // namespace

TEST(House, IncludesPointDown) {
  const std::vector<Include> includes = AllIncludes();
  ASSERT_GT(includes.size(), 50u) << "the sources were not found below " << kvtest::SourceFile();
  for (const Include& include : includes) {
    if (!include.quoted) continue;
    SCOPED_TRACE(include.line.place + " includes " + include.target);
    const int from = LayerOf(include.line.file), to = LayerOf(include.target);
    EXPECT_LT(to, int(kLayers.size())) << "it names no layer: write the path from the root";
    EXPECT_LE(to, from) << "it points up";
    const bool desktop = from == LayerOf("desktop/");
    EXPECT_TRUE(!desktop || to == from || to <= LayerOf("companions/")) << "the module does not know the library";
    EXPECT_TRUE(include.line.file.starts_with(OwnerOfInternal(include.target))) << "a header of another room's own";
    if (to != from || (from != LayerOf("share/") && from != LayerOf("host/"))) continue;
    const std::string room = RoomOf(include.line.file), target = RoomOf(include.target);
    if (room.empty() || room == target) continue;
    EXPECT_GE(RankOf(room), 0) << "a room without a rank";
    EXPECT_GT(RankOf(room), RankOf(target)) << "rooms may include only rooms of a lower rank";
  }
}

TEST(House, SystemHeadersStayInThePlatform) {
  const std::regex foreign(
      R"(^(unistd|pthread|dlfcn|fcntl|signal|pwd|dirent|windows|sqlite3|sql|sqlext|odbcinst|poll|malloc)\.h$|^(sys|gsf|unicode|Q[A-Z].*)/|^Q[A-Z])");
  for (const Include& include : AllIncludes()) {
    if (include.line.file.starts_with("platform/") || include.line.file.starts_with("desktop/")) continue;
    EXPECT_FALSE(std::regex_search(include.target, foreign)) << include.line.place << " includes " << include.target;
  }
}

TEST(House, TextIsWrittenWithTheTypesOfThePlatform) {
  const std::regex fixed(R"re((^|[^A-Za-z0-9_%"'\\])u["']|\bchar16_t\b|u16string)re");
  for (const auto& [line, match] : Matches(fixed)) {
    const std::size_t comment = line.text.find("//");
    if (line.file.starts_with("platform/linux/") || line.file.starts_with("desktop/")) continue;
    if (comment < std::size_t(match.position())) continue;
    ADD_FAILURE() << line.place << " " << line.text << "\nwrite _T(...), TCHAR, TextView or Text";
  }
}

TEST(House, OnlyThePlatformTestsForAnOperatingSystem) {
  const std::regex test(R"(^\s*#\s*(if|ifdef|ifndef|elif)\b.*(_WIN32|_WIN64|__linux__|__unix__|__APPLE__))");
  for (const auto& [line, match] : Matches(test))
    EXPECT_TRUE(line.file.starts_with("platform/")) << line.place << " " << line.text;
}

TEST(House, OutputIsPrintedByOnePlaceOnly) {
  const std::regex direct("std::(cout|cerr)|\\b(puts|putchar|printf|vprintf|fputs)\\(|fmt::print\\(");
  // Progress and the lines of running jobs draw on stderr.
  const std::regex border("host/shell/(output|progress_bar)|host/jobs/job_screen");
  for (const auto& [line, match] : Matches(direct))
    EXPECT_TRUE(!line.file.starts_with("host/") || std::regex_search(line.file, border)) << line.place << line.text;
}

TEST(House, PublicHeadersCompileWithoutThirdPartyHeaders) {
  const std::regex third(R"(^(fmt|pugixml|Eigen|CLI|nlohmann|sqlite3|unicode)([/.]|$))");
  for (const Include& include : AllIncludes()) {
    const std::string& file = include.line.file;
    if (!file.ends_with(".h") || file.starts_with("host/") || file.starts_with("desktop/")) continue;
    if (file.starts_with("platform/linux/")) continue;
    EXPECT_FALSE(std::regex_search(include.target, third)) << include.line.place << " includes " << include.target;
  }
}
