#include "platform/thread_exit.h"

#include <vector>

namespace {

constinit thread_local bool t_ended = false;

struct Calls {
  std::vector<void (*)()> added;

  ~Calls() {
    while (!added.empty()) {
      const auto call = added.back();
      added.pop_back();
      call();
    }
    t_ended = true;
  }
};

}  // namespace

void AtThreadExit(void (*call)()) {
  if (t_ended) return;
  thread_local Calls calls;
  calls.added.push_back(call);
}
