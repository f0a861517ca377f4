#include "platform/linux/user.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

User EffectiveUser() {
  passwd entry = {};
  passwd* found = nullptr;
  std::vector<char> texts(1024);
  while (getpwuid_r(geteuid(), &entry, texts.data(), texts.size(), &found) == ERANGE) texts.resize(texts.size() * 2);
  if (!found) return {std::to_string(geteuid()), ""};
  return {found->pw_name, found->pw_dir ? found->pw_dir : ""};
}
