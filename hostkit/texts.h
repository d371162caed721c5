#pragma once
// The host's texts: messages to the user and the labels of dialogs, by number.

#include "hostkit/types.h"

namespace hostkit {

/// Null for a number that has no text.
const char* TextOfId(u32 id);

}  // namespace hostkit
