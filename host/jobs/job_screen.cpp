#include "host/jobs/job_screen.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "framework/text.h"
#include "platform/console.h"

namespace kestrova {
namespace {

constexpr int kStderr = 2;
constexpr std::size_t kColumns = 6;
using Row = std::array<std::string, kColumns>;

bool IsRunning(const JobView& job) { return job.status == eThreadRunning || job.status == eThreadSuspended; }

bool IsOver(const JobView& job) {
  return job.status == eThreadDone || job.status == eThreadTerminated || job.status == eThreadNotHandled ||
         job.status == eThreadDoneKeepData;
}

// Characters, as near as a terminal's columns can be told.
std::size_t WidthOf(const std::string& text) {
  return std::size_t(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace

std::string JobScreen::Line(const JobView& job, std::chrono::milliseconds elapsed) {
  return fmt::format("{:3}% {}  {}  {:.1f} s", job.percent, job.name, job.step, double(elapsed.count()) / 1000);
}

void JobScreen::Show(const std::vector<JobView>& jobs) {
  static const bool terminal = _isatty(kStderr) != 0;
  const auto now = std::chrono::steady_clock::now();
  for (std::size_t place = 0; place < jobs.size(); ++place)
    if (IsRunning(jobs[place])) begins_.try_emplace(place, now);
  terminal ? Draw(jobs) : Tell(jobs);
}

void JobScreen::Finish(const std::vector<JobView>& jobs) {
  if (drawn_ > 0) {
    Draw({});
  } else {
    Show(jobs);
  }
}

// Up to the first line, then each line over the former one, and nothing below. What is too long is cut off by the
// terminal: a line that wraps would be two.
void JobScreen::Draw(const std::vector<JobView>& jobs) {
  std::string text = drawn_ > 0 ? fmt::format("\x1b[{}A", drawn_) : "";
  text += "\x1b[?7l";
  drawn_ = 0;
  const auto now = std::chrono::steady_clock::now();
  for (std::size_t place = 0; place < jobs.size(); ++place) {
    if (!IsRunning(jobs[place])) continue;
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(now - begins_[place]);
    text += "\r\x1b[K" + Line(jobs[place], elapsed) + "\n";
    ++drawn_;
  }
  fmt::print(stderr, "{}\x1b[J\x1b[?7h", text);
}

void JobScreen::Tell(const std::vector<JobView>& jobs) {
  for (std::size_t place = 0; place < jobs.size(); ++place) {
    const JobView& job = jobs[place];
    QFeThreadStatus& told = told_[place];
    if (told == job.status || !(IsRunning(job) || IsOver(job))) continue;
    told = job.status;
    fmt::print(stderr, "{}, {}: {}\n", job.name, job.action, TextOf(job.status));
  }
}

std::string JobsTable(const std::vector<JobView>& jobs) {
  std::vector<Row> rows = {{"Name", "Action", "Status", "Start", "End", "Time taken"}};
  for (const JobView& job : jobs)
    rows.push_back({job.name, job.action, fmt::format("{} {}", int(job.status), TextOf(job.status)), job.start, job.end,
                    job.taken});
  std::array<std::size_t, kColumns> widths = {};
  for (const Row& row : rows)
    for (std::size_t at = 0; at < kColumns; ++at) widths[at] = std::max(widths[at], WidthOf(row[at]));
  std::string text;
  for (const Row& row : rows) {
    std::string line;
    for (std::size_t at = 0; at < kColumns; ++at) line += row[at] + std::string(widths[at] - WidthOf(row[at]) + 2, ' ');
    text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
  }
  return text;
}

nlohmann::ordered_json JobsJson(const std::vector<JobView>& jobs) {
  auto all = nlohmann::ordered_json::array();
  for (const JobView& job : jobs)
    all.push_back({{"name", job.name},
                   {"action", job.action},
                   {"status", int(job.status)},
                   {"statusText", TextOf(job.status)},
                   {"start", job.start},
                   {"end", job.end},
                   {"timeTaken", job.taken}});
  return all;
}

bool AreAllDone(const std::vector<JobView>& jobs) {
  return std::all_of(jobs.begin(), jobs.end(),
                     [](const JobView& job) { return job.status == eThreadDone || job.status == eThreadDoneKeepData; });
}

}  // namespace kestrova
