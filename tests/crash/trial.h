#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>

#include "tests/crash/checks.h"

namespace quoll::crash {

enum class Harm {
  kKillAll,  ///< every process of the share, as when the session or the machine goes
  kKillOne,  ///< the process that makes the call
  kFault,    ///< the call fails
};

/// What a share finds.
struct World {
  /// The file system has unnamed files and copies inside itself.
  bool is_modern = true;
  /// No share was made here before.
  bool is_new = false;
};

/// What happens to a call by what the world does not have.
[[nodiscard]] Step step_of_world(const World& world, const Call& call);

/// One program that is harmed at the entry of one system call: the `call`-th, from 1, that its
/// thread makes.
struct Trial {
  Harm harm = Harm::kKillAll;
  World world;
  Lane lane = kEveryLane;
  long call = 0;
  /// Which of the call's faults, from 0.
  std::size_t fault = 0;
  /// Count only the calls that change a file.
  bool only_changes = false;
};

struct Result {
  /// False when the share ended before that call, or the call has no such fault.
  bool was_harmed = false;
  /// The calls of the thread up to the harm, or all of them.
  long calls = 0;
  /// The faults that the call can have.
  std::size_t faults = 0;
  /// "openat EIO", "linkat".
  std::string what;
  /// The loader met the fault and said so: the program never began.
  bool ended_by_loader = false;
  /// A library ended a child with a signal, and the program told what that meant.
  bool ended_by_library = false;
  /// The share could not know that the application had taken the draft.
  bool is_unsure = false;
  Findings findings;
};

/// How a program ended that was harmed.
struct Harmed {
  SteppedEnd end;
  /// It was the dynamic loader that was harmed.
  bool was_loader = false;
  /// It was the writing to standard error.
  bool was_telling = false;
};

/// A program that is harmed, in a home of its own.
class Subject {
 public:
  virtual ~Subject() = default;
  /// Another one in another home, which knows what this one has learnt.
  [[nodiscard]] virtual std::unique_ptr<Subject> another() const = 0;
  /// Forgets the run before. `anew` also takes back all that it left.
  virtual void prepare(bool anew) = 0;
  [[nodiscard]] virtual std::vector<std::string> command() const = 0;
  [[nodiscard]] virtual const test::Environment& environment() const = 0;
  /// A call is entered that is not harmed yet.
  virtual void entered(const Call& call) = 0;
  /// Looks at what is left, runs it again without harm and looks again.
  virtual void check(const Trial& trial, const Harmed& harmed, unsigned seconds,
                     Result& result) = 0;
};

/// A share, see `Scene`.
[[nodiscard]] std::unique_ptr<Subject> make_share();

/// Adds what is wrong about the end of a program that went on after the harm. True when it was
/// ended by the dynamic loader or was killed itself, so that nobody is left who could tell.
[[nodiscard]] bool check_end(const Trial& trial, const Harmed& harmed, Result& result);

/// How many calls each thread makes, or all of them when only those are counted that change a file:
/// they are few, and it is not always the same thread that takes an item.
using Calls = std::map<Lane, long>;

/// The calls of a share that is not harmed; throws when it fails.
[[nodiscard]] Calls count_calls(Subject& subject, const World& world, bool only_changes = false);

/// Runs, harms, and lets the subject look. `seconds` is the time for each program; 0 is all the
/// time that it wants.
[[nodiscard]] Result run_trial(Subject& subject, const Trial& trial, unsigned seconds);

}  // namespace quoll::crash
