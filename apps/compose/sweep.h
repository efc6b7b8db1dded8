#pragma once

#include "apps/compose/moment.h"

namespace quoll::compose {

/// Removes from the receiver's folders what nobody needs any more and nobody works on: what a
/// program that was ended has left half made, drafts that were set aside 30 days ago, what clients
/// were given 7 days ago, and what earlier versions left. Drafts that wait stay.
void sweep(const Moment& now);

}  // namespace quoll::compose
