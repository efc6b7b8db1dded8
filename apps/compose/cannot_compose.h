#pragma once

#include "apps/compose/compose_error.h"

namespace quoll::compose {

using CannotCompose = ComposeError;

}  // namespace quoll::compose
