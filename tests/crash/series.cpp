#include "tests/crash/series.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <iostream>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace quoll::crash {

namespace {

struct Point {
  Lane lane;
  long call = 0;
};

/// The calls of some unharmed shares. How often a thread waits for another is not always the same.
struct Plan {
  std::unique_ptr<Subject> subject;
  std::vector<Point> points;
  long fewest = 0;
  long most = 0;
};

/// What the workers have in common, in memory that they share.
struct Progress {
  std::atomic<std::size_t> next{0};
  std::atomic<long> points{0};
  std::atomic<long> trials{0};
  std::atomic<long> ended_before{0};
  std::atomic<long> without_fault{0};
  std::atomic<long> by_loader{0};
  std::atomic<long> by_library{0};
  std::atomic<long> unsure{0};
  std::atomic<long> faulty{0};
  std::atomic<long> broken_workers{0};
  std::array<std::atomic<long>, kAbouts> found{};
};

Plan make_plan(const Series& series, const SeriesOptions& options) {
  const long beyond = options.only_changes ? 0 : 2;  // more than was seen of each thread
  Plan plan;
  plan.subject = series.make();
  Calls longest;
  for (int i = 0; i < options.unharmed; ++i) {
    long all = 0;
    for (const auto& [lane, calls] :
         count_calls(*plan.subject, series.world, options.only_changes)) {
      longest[lane] = std::max(longest[lane], calls);
      all += calls;
    }
    plan.fewest = i == 0 ? all : std::min(plan.fewest, all);
    plan.most = std::max(plan.most, all);
  }
  for (const auto& [lane, calls] : longest) {
    for (long call = 1; call <= calls + beyond; ++call) {
      plan.points.push_back({lane, call});
    }
  }
  return plan;
}

std::string words_of(const Point& point) {
  return "process " + std::to_string(point.lane.process) + ", thread " +
         std::to_string(point.lane.thread) + ", call " + std::to_string(point.call);
}

void tell(const Series& series, std::size_t number, const Point& point, const Result& result) {
  std::string text;
  for (const Finding& finding : result.findings) {
    std::string words = finding.text;
    std::replace(words.begin(), words.end(), '\n', ' ');
    text += std::string(series.name) + " " + std::to_string(number) + " (" + words_of(point) +
            "), " + result.what + ": " + crash::words_of(finding.about) + ": " + words + "\n";
  }
  std::cout << text << std::flush;
}

void count(const Result& result, Progress& progress) {
  ++progress.trials;
  progress.by_loader += result.ended_by_loader ? 1 : 0;
  progress.by_library += result.ended_by_library ? 1 : 0;
  progress.unsure += result.is_unsure ? 1 : 0;
  progress.faulty += result.findings.empty() ? 0 : 1;
  for (const Finding& finding : result.findings) {
    ++progress.found.at(static_cast<std::size_t>(finding.about));
  }
}

/// All trials of one point: one, or one for each fault that the call can have.
void try_point(Subject& subject, const Series& series, std::size_t number, const Point& point,
               const SeriesOptions& options, Progress& progress) {
  std::size_t faults = 1;
  bool was_harmed = false;
  bool ended_before = false;
  for (std::size_t fault = 0; fault < faults; ++fault) {
    const Result result = run_trial(subject,
                                    {.harm = series.harm,
                                     .world = series.world,
                                     .lane = point.lane,
                                     .call = point.call,
                                     .fault = fault,
                                     .only_changes = options.only_changes},
                                    options.seconds);
    faults = std::max(faults, result.faults);
    ended_before = ended_before || result.calls < point.call;
    if (result.was_harmed) {
      was_harmed = true;
      count(result, progress);
      tell(series, number, point, result);
    }
  }
  ++(was_harmed ? progress.points : ended_before ? progress.ended_before : progress.without_fault);
}

int work(const Series& series, const SeriesOptions& options, const Plan& plan, Progress& progress) {
  try {
    const std::unique_ptr<Subject> subject = plan.subject->another();
    const std::size_t all = plan.points.size();
    const std::size_t end = options.to > 0 ? std::min(options.to + 1, all) : all;
    for (std::size_t at = 0; (at = progress.next.fetch_add(options.every)) < end;) {
      try_point(*subject, series, at, plan.points[at], options, progress);
    }
    return 0;
  } catch (const std::exception& error) {
    std::cerr << series.name << ": " << error.what() << "\n";
    return 1;
  }
}

Progress& shared_progress() {
  void* const place =
      mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (place == MAP_FAILED) {
    throw std::runtime_error("no memory to share");
  }
  return *new (place) Progress;
}

void run_workers(const Series& series, const SeriesOptions& options, const Plan& plan,
                 Progress& progress) {
  std::vector<pid_t> workers;
  for (unsigned i = 0; i < options.jobs; ++i) {
    const pid_t worker = fork();
    if (worker == 0) {
      const int status = work(series, options, plan, progress);
      std::cout.flush();
      _exit(status);
    }
    workers.push_back(worker);
  }
  for (const pid_t worker : workers) {
    int status = 1;
    waitpid(worker, &status, 0);
    progress.broken_workers += status == 0 ? 0 : 1;
  }
}

}  // namespace

SeriesResult run_series(const Series& series, const SeriesOptions& options) {
  const auto began = std::chrono::steady_clock::now();
  std::cout << series.name << ": " << series.words << "\n" << std::flush;
  const Plan plan = make_plan(series, options);
  Progress& progress = shared_progress();
  progress.next = options.from;
  run_workers(series, options, plan, progress);
  const auto took =
      std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - began);
  const bool is_fault = series.harm == Harm::kFault;
  std::cout << "  " << plan.fewest << " to " << plan.most << " calls in an unharmed run, "
            << progress.points << " points harmed in " << progress.trials << " trials\n  "
            << progress.ended_before << " points beyond the end of the thread's run";
  if (is_fault) {
    std::cout << ", " << progress.without_fault << " calls that cannot fail, " << progress.by_loader
              << " trials ended by the loader, " << progress.by_library
              << " with a child ended by its library";
  }
  std::cout << ", " << progress.unsure << " opened without knowing it\n  " << progress.faulty
            << " trials found something, " << took.count() << " s\n"
            << std::flush;
  SeriesResult result{.trials = progress.trials,
                      .faulty = progress.faulty,
                      .stuck = progress.broken_workers,
                      .found = {}};
  std::copy(progress.found.begin(), progress.found.end(), result.found.begin());
  return result;
}

}  // namespace quoll::crash
