#pragma once

#include <memory>

#include "tests/crash/trial.h"

namespace quoll::crash {

/// The receiver, which takes a draft with two files, writes it and gives it to a mail client that
/// notes what it is given. A draft was promised once its folder has its name.
[[nodiscard]] std::unique_ptr<Subject> make_receiver();
/// The same as a service that is called over the bus. A draft was promised also once the caller has
/// its answer.
[[nodiscard]] std::unique_ptr<Subject> make_receiver_service();

}  // namespace quoll::crash
