#include "platform/linux/user.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>
#include <vector>

namespace {

User ReadUser(uid_t id) {
  passwd entry = {};
  passwd* found = nullptr;
  std::vector<char> texts(1024);
  while (getpwuid_r(id, &entry, texts.data(), texts.size(), &found) == ERANGE) texts.resize(texts.size() * 2);
  if (!found) return {std::to_string(id), ""};
  return {found->pw_name, found->pw_dir ? found->pw_dir : ""};
}

}  // namespace

// Each thread reads the system's list of users once per user.
User EffectiveUser() {
  thread_local std::optional<std::pair<uid_t, User>> known;
  const uid_t id = geteuid();
  if (!known || known->first != id) known.emplace(id, ReadUser(id));
  return known->second;
}
