#pragma once
// The first login of a connection, and what the host is told of it.

#include "control/session.h"

namespace quennet {

/// Logs in once, unless `stopRetrying` is set. Success is a `controlSocket` other than noSocket: an
/// end or an abort during the login closes it again.
void ConnectWithRetries(Session* session);

/// Tells the host that the connection stands: ShellPanelConnected, then two notifications.
void NotifyConnected(Session* session);

/// Thread entry of message 24, argument the session: logs in, learns the server's family, goes to
/// the start directory and tells the host, also of a failure. Gives back the `backgroundJobs` and
/// the use that message 24 counted for it, and the exchange that it kept.
DWORD WINAPI ConnectWorker(void* argument);

}  // namespace quennet
