#pragma once

#include "apps/compose/confine_writer.h"
#include "apps/compose/writer_server.h"

namespace quoll::compose {

/// The process that writes one draft: closes what else is open, confines itself, writes, and ends.
[[noreturn]] void run_writer(WriterServer::Job job, WriterConfinement& confinement,
                             int taken_folder, int output);

/// What the end of such a process means. `status` is as `waitpid` has it.
[[nodiscard]] WriterAnswer answer_of(int status);

}  // namespace quoll::compose
