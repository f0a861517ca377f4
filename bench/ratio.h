// Benchmarks as ratios: our code and its peer run alternately in one process, and the result is the median of the
// pairs' ratios. Each row prints one line of a Markdown table.
//
//   kvbench::Table table("Registry");
//   table.Pair({.name = "open, query, close", .size = 100, .peer = "SQLite C interface", .goal = 2.0},
//              [&] { OpenQueryClose(); }, [&] { StepPreparedStatement(); });
//
// Each callable performs one whole operation. Set-up belongs outside, and results are destroyed outside the measured
// time. One warm-up run determines how many repetitions a sample needs to last the minimum time. Single-threaded.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace kvbench {

// Prevents the optimiser from removing the computation of a result.
template <class T>
inline void Keep(const T& value) {
  asm volatile("" : : "r,m"(value) : "memory");
}

struct Case {
  std::string name;
  std::size_t size = 0;
  std::string peer;
  // The largest ratio of our time to the peer's time that meets the goal; 0: no goal.
  double goal = 0;
  // Operations per call of the callable; times are printed per operation.
  std::size_t operations = 1;
};

struct Ratio {
  double seconds = 0;
  double peer_seconds = 0;
  double median = 0;
  double lowest = 0;
  double highest = 0;
};

namespace detail {

inline double Now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// Seconds per run. The results of the runs are kept until the clock has stopped, so their destruction is not measured.
template <class F>
double Sample(F& run, std::size_t repetitions) {
  using Result = decltype(run());
  // The next large allocation makes the heap merge the blocks that the other contender has freed. Do it before the
  // clock starts.
  void* volatile block = std::malloc(1 << 14);
  std::free(block);
  double seconds = 0;
  if constexpr (std::is_void_v<Result>) {
    const double start = Now();
    for (std::size_t i = 0; i < repetitions; ++i) run();
    seconds = Now() - start;
  } else {
    std::vector<Result> kept;
    kept.reserve(repetitions);
    const double start = Now();
    for (std::size_t i = 0; i < repetitions; ++i) kept.push_back(run());
    seconds = Now() - start;
  }
  return seconds / double(repetitions);
}

template <class F>
std::size_t WarmUp(F& run, double minimum) {
  const double once = std::max(Sample(run, 1), 1e-9);
  return std::max<std::size_t>(1, std::size_t(minimum / once));
}

inline double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

inline std::string Time(double seconds) {
  char text[32];
  const char* unit = seconds < 1e-6 ? "ns" : seconds < 1e-3 ? "us" : seconds < 1 ? "ms" : "s";
  const double scale = seconds < 1e-6 ? 1e9 : seconds < 1e-3 ? 1e6 : seconds < 1 ? 1e3 : 1;
  std::snprintf(text, sizeof text, "%.3g %s", seconds * scale, unit);
  return text;
}

}  // namespace detail

// Measures ours and peer alternately: `pairs` pairs of samples of at least `minimum` seconds each.
template <class Ours, class Peer>
Ratio Measure(Ours ours, Peer peer, int pairs = 7, double minimum = 0.02) {
  const std::size_t ours_repetitions = detail::WarmUp(ours, minimum);
  const std::size_t peer_repetitions = detail::WarmUp(peer, minimum);
  std::vector<double> a, b, ratios;
  for (int i = 0; i < pairs; ++i) {
    a.push_back(detail::Sample(ours, ours_repetitions));
    b.push_back(detail::Sample(peer, peer_repetitions));
    ratios.push_back(a.back() / b.back());
  }
  const auto [lowest, highest] = std::minmax_element(ratios.begin(), ratios.end());
  return {detail::Median(a), detail::Median(b), detail::Median(ratios), *lowest, *highest};
}

class Table {
 public:
  explicit Table(const std::string& title) {
    std::printf("\n### %s\n\n| case | size | time | peer | peer's time | ratio (lowest to highest) | goal |\n",
                title.c_str());
    std::printf("|---|---:|---:|---|---:|---:|---:|\n");
  }

  template <class Ours, class Peer>
  Ratio Pair(const Case& what, Ours ours, Peer peer, int pairs = 7, double minimum = 0.02) {
    const Ratio ratio = Measure(std::move(ours), std::move(peer), pairs, minimum);
    Print(what, ratio);
    return ratio;
  }

  // Prints a row of figures measured by the caller, such as peak memory. Both texts contain their unit.
  static void Row(const Case& what, const std::string& ours, const std::string& peer, double ratio) {
    std::printf("| %s | %zu | %s | %s | %s | %.2f | %s |\n", what.name.c_str(), what.size, ours.c_str(),
                what.peer.c_str(), peer.c_str(), ratio, Goal(what, ratio).c_str());
    std::fflush(stdout);
  }

 private:
  static std::string Goal(const Case& what, double ratio) {
    if (what.goal == 0) return "";
    char text[48];
    std::snprintf(text, sizeof text, "%.2g %s", what.goal, ratio <= what.goal ? "met" : "missed");
    return text;
  }

  static void Print(const Case& what, const Ratio& ratio) {
    const double per = double(what.operations);
    std::printf("| %s | %zu | %s | %s | %s | %.2f (%.2f to %.2f) | %s |\n", what.name.c_str(), what.size,
                detail::Time(ratio.seconds / per).c_str(), what.peer.c_str(),
                detail::Time(ratio.peer_seconds / per).c_str(), ratio.median, ratio.lowest, ratio.highest,
                Goal(what, ratio.median).c_str());
    std::fflush(stdout);
  }
};

}  // namespace kvbench
