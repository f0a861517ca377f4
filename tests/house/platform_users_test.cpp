// The platform declares only what the layers above it call: every public function of platform/*.h has a user, or a row
// in the table of exceptions.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "tests/folders.h"

namespace {

namespace fs = std::filesystem;

// Functions without a user above the platform, and why each one stays.
const std::map<std::string, std::string> kKeptWithoutUser = {
    {"WritePrivateProfileSectionW", "later parts write sections"},
    {"GetSystemTime", "called by the system's clock, behind CurrentClock"},
    {"SetCurrentClock", "tests and benchmarks of jobs put a clock of their own in its place"},
    {"SetEnvironmentVariableW", "tests, benchmarks and fuzzers set variables on every platform"},
    {"VariantClear", "a module frees with it what PackIDispatchPointersToVariant returns"},
};

// A file's text without its comments.
std::string CodeOf(const fs::path& file) {
  std::ifstream in(file);
  std::ostringstream text;
  text << in.rdbuf();
  return std::regex_replace(text.str(), std::regex("//[^\n]*"), "");
}

void InsertWords(const std::string& code, std::set<std::string>& words) {
  static const std::regex word(R"([A-Za-z_]\w*)");
  for (std::sregex_iterator at(code.begin(), code.end(), word), end; at != end; ++at) words.insert(at->str());
}

TEST(PlatformFunctions, HaveAUserAboveThePlatform) {
  const fs::path root = kvtest::SourceFile();
  std::set<std::string> used;
  for (const char* layer : {"framework", "companions", "share", "desktop", "host"}) {
    if (!fs::exists(root / layer)) continue;
    for (const auto& entry : fs::recursive_directory_iterator(root / layer)) {
      const auto extension = entry.path().extension();
      if (extension == ".h" || extension == ".cpp") InsertWords(CodeOf(entry.path()), used);
    }
  }
  const std::regex declaration(R"(KVSHARE_API\s+(?!class|struct)[^;()]*?\b([A-Za-z_]\w*)\()");
  std::size_t functions = 0;
  for (const auto& entry : fs::directory_iterator(root / "platform")) {
    if (entry.path().extension() != ".h") continue;
    const std::string code = std::regex_replace(CodeOf(entry.path()), std::regex("#[^\n]*"), "");  // without macros
    for (std::sregex_iterator at(code.begin(), code.end(), declaration), end; at != end; ++at, ++functions) {
      const std::string name = at->str(1);
      EXPECT_NE(used.contains(name), kKeptWithoutUser.contains(name))
          << entry.path().filename() << ": " << name
          << (used.contains(name) ? " has a user: take it out of the exceptions" : " has no user: remove it");
    }
  }
  EXPECT_GT(functions, 100u) << "the declarations were not found below " << root;
}

}  // namespace
