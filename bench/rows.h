// SPDX-License-Identifier: Apache-2.0
//
// The benchmarks of tables share this: each row measures one operation at three sizes of its table,
// and how many times longer the largest takes than the smallest. All of them are measured in turn,
// many times, in one run; the fastest of each is shown, which other load disturbed least.
#ifndef BENCH_ROWS_H_
#define BENCH_ROWS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace bench {

constexpr std::size_t kSizes[] = {1000, 10000, 100000};
constexpr std::size_t kRounds = 15;

// The processor time of this thread, which other programs on the machine do not add to.
class Stopwatch {
 public:
  double nanoseconds() const { return now() - start_; }

 private:
  static double now() {
    timespec time;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
  }
  double start_ = now();
};

// Runs one operation on a table of `entries` entries, `*operations` times in all, and returns the
// nanoseconds that took without the preparation.
using Measure = std::function<double(std::size_t entries, std::size_t* operations)>;

struct Row {
  const char* name;
  Measure measure;
};

// Runs the rows whose names contain the program's first argument, all without one.
inline void run(const std::vector<Row>& rows, int argc, char** argv) {
  struct Fastest {
    const Row* row;
    double nanoseconds[std::size(kSizes)];
  };
  std::vector<Fastest> results;
  for (const Row& row : rows) {
    if (argc < 2 || std::string(row.name).find(argv[1]) != std::string::npos) {
      results.push_back({&row, {}});
    }
  }
  for (std::size_t round = 0; round < kRounds; ++round) {
    for (Fastest& fastest : results) {
      for (std::size_t i = 0; i < std::size(kSizes); ++i) {
        std::size_t operations = 0;
        double each = fastest.row->measure(kSizes[i], &operations);
        each /= static_cast<double>(operations);
        double& best = fastest.nanoseconds[i];
        best = round == 0 ? each : std::min(best, each);
      }
    }
  }
  std::printf("%-34s %9s %9s %9s %8s %10s\n", "nanoseconds an operation", "1,000", "10,000",
              "100,000", "ratio", "million/s");
  for (const Fastest& fastest : results) {
    const auto& best = fastest.nanoseconds;
    std::printf("%-34s %9.1f %9.1f %9.1f %8.2f %10.2f\n", fastest.row->name, best[0], best[1],
                best[2], best[2] / best[0], 1000.0 / best[2]);
  }
}

}  // namespace bench

#endif  // BENCH_ROWS_H_
