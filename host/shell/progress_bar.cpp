#include "host/shell/progress_bar.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "platform/console.h"

namespace kestrova {
namespace {

constexpr LONGLONG kSilent_ms = 500;
constexpr LONGLONG kBetween_ms = 100;
constexpr ULONGLONG kCells = 20;
constexpr int kStderr = 2;
constexpr char kClearLine[] = "\r\x1b[K";

ProgressBar* g_bar = nullptr;

LONGLONG Now_ms() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace

ProgressBar::ProgressBar(const char* what, ULONGLONG total)
    : what_(what), total_(total), next_ms_(Now_ms() + kSilent_ms), outer_(g_bar) {
  g_bar = this;
}

ProgressBar::~ProgressBar() {
  g_bar = outer_;
  if (shown_) std::fputs(kClearLine, stderr);
}

int ProgressBar::Step(LONGLONG done) {
  if (g_bar && Now_ms() >= g_bar->next_ms_) g_bar->Draw(ULONGLONG(std::max(done, LONGLONG(0))));
  return 1;
}

void ProgressBar::Draw(ULONGLONG done) {
  static const bool terminal = _isatty(kStderr) != 0;
  next_ms_ = Now_ms() + kBetween_ms;
  if (!terminal) return;
  shown_ = true;
  fmt::print(stderr, "{}{}", kClearLine, Text(what_, done, total_));
}

std::string ProgressBar::Text(const char* what, ULONGLONG done, ULONGLONG total) {
  const double part = total > 0 ? double(std::min(done, total)) / double(total) : 1.0;
  const auto cells = std::size_t(part * double(kCells));
  return fmt::format("[{:-<{}}] {:3}% {}", std::string(cells, '#'), kCells, int(part * 100), what);
}

}  // namespace kestrova
