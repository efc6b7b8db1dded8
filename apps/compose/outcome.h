#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/compose/left_out.h"

namespace quoll::compose {

/// What else the user should know, without a full stop.
struct Note {
  std::string text;
  std::string advice{};  ///< what to do by commands; for a terminal and the log
  [[nodiscard]] std::string sentence() const;
};

/// What became of a draft.
struct Outcome {
  enum class State {
    kGiven,     ///< to a mail client
    kKept,      ///< as a message file; no client has it
    kWaits,     ///< it could not be written now
    kStopped,   ///< it waits, since its writer was ended from outside
    kSetAside,  ///< it cannot be written
  };

  State state = State::kKept;
  /// Its message file, or the folder of what was taken when there is none.
  std::string path;
  std::string client;       ///< its name, when it was given
  std::string to_attach;    ///< the folder of what a person has to attach by hand; empty for none
  std::string reason;       ///< why it was not given
  std::string advice;       ///< what to do then by commands; for a terminal and the log
  bool in_flood = false;    ///< one of so many that none was given to a client
  bool is_earlier = false;  ///< an earlier program had taken it
  LeftOutFiles left_out;
  std::vector<Note> notes;

  [[nodiscard]] bool is_written() const { return state == State::kGiven || state == State::kKept; }
  /// To follow "the draft": "was given to NAME". Never empty.
  [[nodiscard]] std::string sentence() const;
};

/// Logs what became of the draft.
void log_outcome(const Outcome& outcome);

}  // namespace quoll::compose
