#include "quoll/platform/queue.h"

#include <exception>

#include "quoll/foundation/exception.h"
#include "quoll/platform/log.h"

namespace quoll::platform {

void run_block(const std::function<void()>& block) {
  try {
    block();
  } catch (const foundation::NSException& exception) {
    log("Exception in a queued block %@", exception);
  } catch (const std::exception& exception) {
    log("Exception in a queued block %@", exception);
  } catch (...) {
    log_line("Exception in a queued block of an unknown kind");
  }
}

}  // namespace quoll::platform
