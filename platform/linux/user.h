// The user that this process works for, as the system's list of users has him.
#pragma once

#include <string>

struct User {
  std::string name;  // the number, for a user who is not in the list, as in a container
  std::string home;  // empty for him
};

User EffectiveUser();
