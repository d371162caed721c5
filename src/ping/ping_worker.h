#pragma once
// The thread that pings.

#include "ping/ping_state.h"

namespace quennet {

/// Thread function; the argument is a PingState whose `running` the caller has set. Prints on the
/// dialog's list box, gives the dialog its idle buttons back at the end, and makes `running` 0 with
/// its last step. A dialog that is closed meanwhile is left alone, and so is one opened since.
DWORD WINAPI PingWorker(void* argument);

/// Sends echo requests to `target`, one a second, until `stopRequests` is set or a failure, which
/// is printed: through a raw socket, or where there is none through the system's library. Looks at
/// `stopRequests` between requests, each of which takes two seconds at most.
void PingHost(WindowNumber console, PingState* state);

}  // namespace quennet
