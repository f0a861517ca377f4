#include "platform/user_folders.h"

#include <cstdlib>
#include <string>

#include "platform/linux/user.h"
#include "platform/paths.h"

namespace {

std::string StateFolder() {
  const char* const named = std::getenv("KV_STATE");
  if (named && *named) return named;
  const char* const state = std::getenv("XDG_STATE_HOME");
  if (state && *state == '/') return std::string(state) + "/kestrova";
  const char* const variable = std::getenv("HOME");
  const std::string home = variable && *variable ? variable : EffectiveUser().home;
  return home.empty() ? home : home + "/.local/state/kestrova";
}

}  // namespace

Text UserStateFolder() {
  Text folder = ProductPathFromSystem(StateFolder());
  if (!folder.empty() && folder.back() != u'\\') folder += u'\\';
  return folder;
}
