#pragma once

#include <algorithm>
#include <array>
#include <thread>

#include "tests/crash/receiver_subject.h"
#include "tests/crash/trial.h"

namespace quoll::crash {

/// A row of trials: at least one at each call that a program makes.
struct Series {
  const char* name;
  const char* words;
  Harm harm;
  World world;
  std::unique_ptr<Subject> (*make)() = make_share;
};

inline constexpr Series kSeries[] = {
    {"kill-all", "every process killed", Harm::kKillAll, {}},
    {"kill-all-first",
     "every process killed, on the first share of a machine with a plain file system",
     Harm::kKillAll,
     {.is_modern = false, .is_new = true}},
    {"kill-one", "the process killed that makes the call", Harm::kKillOne, {}},
    {"fault", "the call fails", Harm::kFault, {}},
    {"fault-first",
     "the call fails, on the first share of a machine with a plain file system",
     Harm::kFault,
     {.is_modern = false, .is_new = true}},
    {"receiver-kill-all",
     "every process of the receiver killed",
     Harm::kKillAll,
     {},
     make_receiver},
    {"receiver-kill-one",
     "the process killed that makes the call, of the receiver's",
     Harm::kKillOne,
     {},
     make_receiver},
    {"receiver-fault", "the call of the receiver fails", Harm::kFault, {}, make_receiver},
    {"receiver-service-kill-all",
     "every process of the receiver's service killed",
     Harm::kKillAll,
     {},
     make_receiver_service},
    {"receiver-service-fault",
     "the call of the receiver's service fails",
     Harm::kFault,
     {},
     make_receiver_service},
};

struct SeriesOptions {
  std::size_t from = 0;
  /// 0: to the last.
  std::size_t to = 0;
  std::size_t every = 1;
  /// Shares at the same time. Most of a share's time is a wait.
  unsigned jobs = 3 * std::max(1U, std::thread::hardware_concurrency());
  /// After which a share hangs; 0: never.
  unsigned seconds = 90;
  /// Harm only calls that change a file.
  bool only_changes = false;
  /// How many shares are counted before.
  int unharmed = 10;
};

struct SeriesResult {
  long trials = 0;
  /// The trials that found something.
  long faulty = 0;
  /// The processes that could not go on with their trials.
  long stuck = 0;
  /// How often each kind of thing was found, by `About`.
  std::array<long, kAbouts> found{};
};

/// Runs the trials in several processes and writes what they find and the figures on standard
/// output.
[[nodiscard]] SeriesResult run_series(const Series& series, const SeriesOptions& options);

}  // namespace quoll::crash
