// The user of this process, from the system's list of users.
#pragma once

#include <string>

struct User {
  std::string name;  // the user number if the user is not in the list
  std::string home;  // empty if the user is not in the list
};

User EffectiveUser();
