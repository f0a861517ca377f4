// What the user sees of jobs: lines while they run, a table when they are over.
#pragma once

#include <chrono>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "host/jobs/job_queue.h"

namespace kestrova {

// On a terminal one line a running job with percentage, step and elapsed time, drawn anew at each Show; else a line
// when a job begins and one when it is over. All on stderr.
class JobScreen {
 public:
  void Show(const std::vector<JobView>& jobs);
  // Wipes the lines, or writes those that are missing.
  void Finish(const std::vector<JobView>& jobs);

  // " 45% Rough Mill 12  fitting arcs  0.3 s"
  static std::string Line(const JobView& job, std::chrono::milliseconds elapsed);

 private:
  void Draw(const std::vector<JobView>& jobs);
  void Tell(const std::vector<JobView>& jobs);

  int drawn_ = 0;                                                        // lines on the terminal
  std::map<std::size_t, std::chrono::steady_clock::time_point> begins_;  // by place
  std::map<std::size_t, QFeThreadStatus> told_;
};

// Name, action, status, start, end and time taken, a row a job, columns as wide as they need be.
std::string JobsTable(const std::vector<JobView>& jobs);
// The same as an array of objects; the status as number and text.
nlohmann::ordered_json JobsJson(const std::vector<JobView>& jobs);
bool AreAllDone(const std::vector<JobView>& jobs);

}  // namespace kestrova
