#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

// What the benchmarks share: times in milliseconds, medians, and the one line that a comparison prints.

template <typename Work>
double Milliseconds(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

inline double Median(std::vector<double> times) {
  std::ranges::sort(times);
  return times[times.size() / 2];
}

// Runs both by turns and prints the ratio of their median times; each returns its own. The first round only
// warms up. Each goes first as often as second, because the second finds warmer caches.
template <typename Ours, typename Bare>
void Compare(const char* name, double aim, int rounds, Ours ours, Bare bare) {
  std::vector<double> our_times, bare_times;
  for (int round = 0; round <= rounds; ++round) {
    const bool is_ours_first = round % 2 == 0;
    double our_time = is_ours_first ? ours() : 0;
    const double bare_time = bare();
    if (!is_ours_first) our_time = ours();
    if (round == 0) continue;
    our_times.push_back(our_time);
    bare_times.push_back(bare_time);
  }
  const double our_median = Median(our_times), bare_median = Median(bare_times);
  std::printf("%s: ours %.3f ms, bare %.3f ms, ratio %.2f (aim: at most %.2f)\n", name, our_median,
              bare_median, our_median / bare_median, aim);
  std::fflush(stdout);
}
