// Includes point down only, and what belongs to one operating system stays in the platform layer.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

struct Include {
  std::string file;  // relative to the root, with slashes
  int line;
  std::string target;
  bool quoted;
};

const std::vector<std::string> kLayers = {"platform", "framework", "companions", "share", "host"};

std::string FirstFolder(const std::string& path) { return path.substr(0, path.find('/')); }

// share/machine/x.h -> machine; share/kvshare.h -> empty
std::string ShareRoom(const std::string& path) {
  const std::size_t start = path.find('/') + 1;
  const std::size_t end = path.find('/', start);
  return end == std::string::npos ? "" : path.substr(start, end - start);
}

std::vector<fs::path> Sources() {
  std::vector<fs::path> files;
  for (const std::string& layer : kLayers) {
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(KV_SOURCE_DIR) / layer)) {
      if (entry.path().extension() == ".h" || entry.path().extension() == ".cpp") files.push_back(entry.path());
    }
  }
  return files;
}

std::vector<std::string> Lines(const fs::path& file) {
  std::vector<std::string> lines;
  std::ifstream in(file);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::vector<Include> AllIncludes() {
  static const std::regex pattern(R"re(^\s*#\s*include\s*(["<])([^">]+)[">])re");
  std::vector<Include> includes;
  for (const fs::path& file : Sources()) {
    const std::string name = fs::relative(file, KV_SOURCE_DIR).generic_string();
    int number = 0;
    for (const std::string& line : Lines(file)) {
      ++number;
      std::smatch match;
      if (std::regex_search(line, match, pattern)) includes.push_back({name, number, match[2], match[1] == "\""});
    }
  }
  return includes;
}

int LayerOf(const std::string& path) {
  return int(std::find(kLayers.begin(), kLayers.end(), FirstFolder(path)) - kLayers.begin());
}

// Whether a room of share/ may include another.
bool MayEnter(const std::string& from, const std::string& to) {
  static const std::vector<std::string> open = {"objects", "settings", "env", "utilities"};
  if (from == to || from.empty() || std::find(open.begin(), open.end(), to) != open.end()) return true;
  return (from == "patterns" && to == "display") || (from == "interface" && to == "diagnostics");
}

}  // namespace

TEST(House, IncludesPointDown) {
  const std::vector<Include> includes = AllIncludes();
  ASSERT_GT(includes.size(), 50u) << "the sources were not found below " << KV_SOURCE_DIR;
  for (const Include& include : includes) {
    if (!include.quoted) continue;
    const int from = LayerOf(include.file), to = LayerOf(include.target);
    EXPECT_LT(to, int(kLayers.size())) << include.file << ":" << include.line << " includes " << include.target
                                       << ", which names no layer: write the path from the root";
    EXPECT_LE(to, from) << include.file << ":" << include.line << " includes " << include.target << ", which points up";
    if (from == LayerOf("share/") && to == from) {
      EXPECT_TRUE(MayEnter(ShareRoom(include.file), ShareRoom(include.target)))
          << include.file << ":" << include.line << " includes " << include.target
          << ": these rooms don't know one another";
    }
  }
}

TEST(House, SystemHeadersStayInThePlatform) {
  static const std::regex foreign(
      R"(^(unistd|pthread|dlfcn|fcntl|signal|pwd|dirent|windows|sqlite3|poll|malloc)\.h$|^(sys|gsf|unicode|Q[A-Z].*)/|^Q[A-Z])");
  for (const Include& include : AllIncludes()) {
    if (include.file.starts_with("platform/")) continue;
    EXPECT_FALSE(std::regex_search(include.target, foreign))
        << include.file << ":" << include.line << " includes <" << include.target << ">";
  }
}

TEST(House, OnlyThePlatformTestsForAnOperatingSystem) {
  static const std::regex test(R"(^\s*#\s*(if|ifdef|ifndef|elif)\b.*(_WIN32|_WIN64|__linux__|__unix__|__APPLE__))");
  for (const fs::path& file : Sources()) {
    const std::string name = fs::relative(file, KV_SOURCE_DIR).generic_string();
    if (name.starts_with("platform/")) continue;
    int number = 0;
    for (const std::string& line : Lines(file)) {
      ++number;
      EXPECT_FALSE(std::regex_search(line, test)) << name << ":" << number << " " << line;
    }
  }
}

TEST(House, PublicHeadersCompileWithoutThirdPartyHeaders) {
  static const std::regex third(R"(^(fmt|pugixml|Eigen|CLI|nlohmann|sqlite3|unicode)([/.]|$))");
  for (const Include& include : AllIncludes()) {
    const bool isPublic = !include.file.starts_with("host/") && !include.file.starts_with("platform/linux/");
    if (!isPublic || !include.file.ends_with(".h")) continue;
    EXPECT_FALSE(std::regex_search(include.target, third))
        << include.file << ":" << include.line << " includes <" << include.target << ">";
  }
}
