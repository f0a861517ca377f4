// Shows jobs to the user: lines while they run, a table at the end.
#pragma once

#include <chrono>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "host/jobs/job_queue.h"

namespace kestrova {

// On a terminal, one line per running job with percentage, step and elapsed time, redrawn by each Show. Otherwise a
// line when a job starts and one when it ends. All output goes to stderr.
class JobScreen {
 public:
  void Show(const std::vector<JobView>& jobs);
  // Clears the lines of a terminal; otherwise writes the missing lines.
  void Finish(const std::vector<JobView>& jobs);

  // " 45% Rough Mill 12  fitting arcs  0.3 s"
  static std::string Line(const JobView& job, std::chrono::milliseconds elapsed);

 private:
  void Draw(const std::vector<JobView>& jobs);
  void PrintChanges(const std::vector<JobView>& jobs);

  int drawn_ = 0;                                                        // lines on the terminal
  std::map<std::size_t, std::chrono::steady_clock::time_point> starts_;  // by place in the list of jobs
  std::map<std::size_t, QFeThreadStatus> printed_;
};

// A row per job: name, action, status, start, end, time taken, and the reason if its command threw.
std::string JobsTable(const std::vector<JobView>& jobs);
// The same as an array of objects; the status is a number and a text.
nlohmann::ordered_json JobsJson(const std::vector<JobView>& jobs);
bool AreAllDone(const std::vector<JobView>& jobs);

}  // namespace kestrova
