#include "platform/crash_system.h"

#include <sys/utsname.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <vector>

namespace {

// The value of a line NAME=value or NAME="value".
std::string ReleaseField(const std::string& name) {
  std::ifstream file("/etc/os-release");
  for (std::string line; std::getline(file, line);) {
    if (line.rfind(name + '=', 0) != 0) continue;
    line.erase(0, name.size() + 1);
    if (line.size() > 1 && line.front() == '"' && line.back() == '"') line = line.substr(1, line.size() - 2);
    return line;
  }
  return {};
}

std::string FirstLine(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

}  // namespace

SystemVersion VersionOfSystem() {
  SystemVersion version;
  utsname kernel = {};
  uname(&kernel);
  version.name = ReleaseField("PRETTY_NAME");
  if (version.name.empty()) version.name = kernel.sysname;
  version.version = kernel.release;
  version.architecture = 9;
  version.isWorkstation = true;
  return version;
}

// A card is card0, card1, ...; its connectors have a dash.
bool FindGraphicsDevice(GraphicsDevice& device) {
  std::error_code error;
  std::vector<std::filesystem::path> cards;
  for (const auto& entry : std::filesystem::directory_iterator("/sys/class/drm", error)) {
    const std::string name = entry.path().filename();
    if (name.rfind("card", 0) == 0 && name.find('-') == name.npos) cards.push_back(entry.path());
  }
  if (cards.empty()) return false;
  const std::filesystem::path folder = *std::min_element(cards.begin(), cards.end()) / "device";
  const std::filesystem::path driver = std::filesystem::read_symlink(folder / "driver", error);
  device.card = driver.empty() ? "Unknown" : driver.filename().string();
  device.adapter = FirstLine(folder / "vendor");
  device.chip = FirstLine(folder / "device");
  return true;
}
