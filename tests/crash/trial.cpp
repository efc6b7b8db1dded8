#include "tests/crash/trial.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <stdexcept>

#include "tests/crash/errors_of_calls.h"

namespace quoll::crash {

namespace {

constexpr auto npos = std::string::npos;

/// Refuses what the world does not have.
class Worldly : public Steps {
 public:
  explicit Worldly(const World& world) : world_(world) {}

  Step at(const Call& call) override { return step_of_world(world_, call); }
  [[nodiscard]] bool is_done() const override { return world_.is_modern; }

 private:
  World world_;
};

class Counting final : public Worldly {
 public:
  Counting(const World& world, bool only_changes) : Worldly(world), only_changes_(only_changes) {}

  Step at(const Call& call) override {
    if (!only_changes_ || changes_a_file(call)) {
      ++calls_[only_changes_ ? kEveryLane : call.lane];
    }
    return Worldly::at(call);
  }
  [[nodiscard]] bool is_done() const override { return false; }
  [[nodiscard]] const Calls& calls() const { return calls_; }

 private:
  bool only_changes_;
  Calls calls_;
};

class Harming final : public Worldly {
 public:
  Harming(const Trial& trial, Subject& subject, Result& result)
      : Worldly(trial.world), trial_(trial), subject_(subject), result_(result) {}

  Step at(const Call& call) override {
    if (!is_over_) {
      subject_.entered(call);
    }
    if (!is_over_ && (trial_.lane == kEveryLane || trial_.lane == call.lane) &&
        (!trial_.only_changes || changes_a_file(call)) && ++result_.calls == trial_.call) {
      is_over_ = true;
      const Step step = harm(call);
      if (step.kind != Step::Kind::kGoOn) {
        return step;
      }
    }
    return Worldly::at(call);
  }
  [[nodiscard]] bool is_done() const override { return is_over_ && Worldly::is_done(); }

  /// It was the dynamic loader that was harmed.
  [[nodiscard]] bool was_loader() const { return was_loader_; }
  /// It was the writing to standard error.
  [[nodiscard]] bool was_telling() const { return was_telling_; }

 private:
  Step harm(const Call& call) {
    result_.what = name_of_call(call);
    was_loader_ = is_of_loader(call);
    was_telling_ = (call.number == SYS_write || call.number == SYS_writev) &&
                   call.arguments[0] == STDERR_FILENO;
    if (trial_.harm != Harm::kFault) {
      result_.was_harmed = true;
      return {.kind = trial_.harm == Harm::kKillAll ? Step::Kind::kKillAll : Step::Kind::kKillOne};
    }
    const std::vector<Fault> faults = faults_of(call);
    result_.faults = faults.size();
    if (trial_.fault >= faults.size()) {
      return {.kind = Step::Kind::kKillAll};  // nothing to see here
    }
    result_.was_harmed = true;
    result_.what = faults[trial_.fault].name;
    return faults[trial_.fault].step;
  }

  Trial trial_;
  Subject& subject_;
  Result& result_;
  bool is_over_ = false;
  bool was_loader_ = false;
  bool was_telling_ = false;
};

}  // namespace

Step step_of_world(const World& world, const Call& call) {
  return !world.is_modern && needs_modern_files(call)
             ? Step{.kind = Step::Kind::kFail, .error = EOPNOTSUPP}
             : Step{};
}

bool check_end(const Trial& trial, const Harmed& harmed, Result& result) {
  const SteppedEnd& end = harmed.end;
  const bool is_loaders_end = trial.harm == Harm::kFault && harmed.was_loader &&
                              (end.status == 127 || !end.deaths.empty() || end.status >= 128);
  constexpr int kKilled = 128 + 9;
  if (is_loaders_end || (trial.harm == Harm::kKillOne && end.status == kKilled)) {
    result.ended_by_loader = is_loaders_end;
    return true;
  }
  for (const Death& death : end.deaths) {
    // GLib aborts a process that gets no thread, and sends itself SIGTERM when it loses a bus to
    // which it has just connected. The image helper is killed by the program when it takes too
    // long.
    const bool is_library = (death.signal == SIGTRAP && end.errors.find("GLib-ERROR") != npos) ||
                            death.signal == SIGTERM;
    if (death.is_program || !(is_library || death.signal == SIGKILL)) {
      result.findings.push_back({About::kDeath, words_of(death) + ": " + end.errors});
    }
    result.ended_by_library = result.ended_by_library || is_library;
  }
  return false;
}

Calls count_calls(Subject& subject, const World& world, bool only_changes) {
  subject.prepare(world.is_new);
  Counting counting(world, only_changes);
  const SteppedEnd end = run_stepped(subject.command(), subject.environment(), counting, 0);
  if (end.status != 0) {
    throw std::runtime_error("an unharmed run ends with " + std::to_string(end.status) + ": " +
                             end.errors);
  }
  return counting.calls();
}

Result run_trial(Subject& subject, const Trial& trial, unsigned seconds) {
  Result result;
  subject.prepare(trial.world.is_new);
  Harming harming(trial, subject, result);
  const Harmed harmed{
      .end = run_stepped(subject.command(), subject.environment(), harming, seconds),
      .was_loader = harming.was_loader(),
      .was_telling = harming.was_telling()};
  if (!result.was_harmed) {
    return result;
  }
  if (harmed.end.is_hung) {
    result.findings.push_back({About::kHang, "until " + std::to_string(seconds) + " s were over"});
  }
  subject.check(trial, harmed, seconds, result);
  if (!result.findings.empty()) {
    subject.prepare(true);  // so that the next trial finds nothing of it
  }
  return result;
}

}  // namespace quoll::crash
