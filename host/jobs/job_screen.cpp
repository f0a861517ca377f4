#include "host/jobs/job_screen.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "host/shell/output.h"
#include "host/shell/text_table.h"
#include "platform/console.h"

namespace kestrova {
namespace {

constexpr int kStderr = 2;

bool IsRunning(const JobView& job) { return job.status == eThreadRunning || job.status == eThreadSuspended; }

bool IsOver(const JobView& job) {
  return job.status == eThreadDone || job.status == eThreadTerminated || job.status == eThreadNotHandled ||
         job.status == eThreadDoneKeepData;
}

}  // namespace

std::string JobScreen::Line(const JobView& job, std::chrono::milliseconds elapsed) {
  std::string line =
      fmt::format("{:3}% {}  {}  {:.1f} s", job.percent, job.name, job.step, double(elapsed.count()) / 1000);
  MakeHarmless(line);
  return line;
}

void JobScreen::Show(const std::vector<JobView>& jobs) {
  static const bool terminal = _isatty(kStderr) != 0;
  const auto now = std::chrono::steady_clock::now();
  for (std::size_t place = 0; place < jobs.size(); ++place)
    if (IsRunning(jobs[place])) starts_.try_emplace(place, now);
  terminal ? Draw(jobs) : PrintChanges(jobs);
}

void JobScreen::Finish(const std::vector<JobView>& jobs) {
  if (drawn_ > 0) {
    Draw({});
  } else {
    Show(jobs);
  }
}

// Moves up to the first line, writes each line over the old one, and clears the lines below. Line wrap is off: the
// terminal truncates a long line, which would take two lines otherwise.
void JobScreen::Draw(const std::vector<JobView>& jobs) {
  std::string text = drawn_ > 0 ? fmt::format("\x1b[{}A", drawn_) : "";
  text += "\x1b[?7l";
  drawn_ = 0;
  const auto now = std::chrono::steady_clock::now();
  for (std::size_t place = 0; place < jobs.size(); ++place) {
    if (!IsRunning(jobs[place])) continue;
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(now - starts_[place]);
    text += "\r\x1b[K" + Line(jobs[place], elapsed) + "\n";
    ++drawn_;
  }
  fmt::print(stderr, "{}\x1b[J\x1b[?7h", text);
}

void JobScreen::PrintChanges(const std::vector<JobView>& jobs) {
  for (std::size_t place = 0; place < jobs.size(); ++place) {
    const JobView& job = jobs[place];
    QFeThreadStatus& printed = printed_[place];
    if (printed == job.status || !(IsRunning(job) || IsOver(job))) continue;
    printed = job.status;
    std::string line = fmt::format("{}, {}: {}", job.name, job.action, TextOf(job.status));
    if (!job.reason.empty()) line += ": " + job.reason;
    MakeHarmless(line);
    fmt::print(stderr, "{}\n", line);
  }
}

std::string JobsTable(const std::vector<JobView>& jobs) {
  TextTable table({{"Name", false},
                   {"Action", false},
                   {"Status", false},
                   {"Start", false},
                   {"End", false},
                   {"Time taken", false},
                   {"Reason", false}});
  for (const JobView& job : jobs)
    table.Add({job.name, job.action, fmt::format("{} {}", int(job.status), TextOf(job.status)), job.start, job.end,
               job.taken, job.reason});
  return table.Text();
}

nlohmann::ordered_json JobsJson(const std::vector<JobView>& jobs) {
  auto all = nlohmann::ordered_json::array();
  for (const JobView& job : jobs)
    all.push_back({{"id", job.id},
                   {"name", job.name},
                   {"action", job.action},
                   {"status", int(job.status)},
                   {"statusText", TextOf(job.status)},
                   {"date", job.date},
                   {"start", job.start},
                   {"end", job.end},
                   {"timeTaken", job.taken},
                   {"reason", job.reason}});
  return all;
}

bool AreAllDone(const std::vector<JobView>& jobs) {
  return std::all_of(jobs.begin(), jobs.end(),
                     [](const JobView& job) { return job.status == eThreadDone || job.status == eThreadDoneKeepData; });
}

}  // namespace kestrova
