#pragma once
// The life of a connection: messages 24 and 25.

#include "control/session.h"

namespace quennet {

/// Message 24: allocates the block, shows the connection dialog, makes the watchdog and starts the
/// login on a thread of its own. The outcome reaches the host through `holder`, which is filled
/// last, and through notifications. A connection that still stands in the holder is ended first.
/// The calling thread must serve messages as long as the connection lives.
void ConnectRequest(HWND owner, HostWord* holder, WindowNumber console, u8 panelId,
                    u32* wsaUseCount, u16 cookie, ConnectParams* params);

/// Message 25: starts the thread that waits until nothing works on the connection, says QUIT,
/// closes the sockets, gives everything back and empties the holder. The host learns of the end by
/// ShellPanelClosed. A second request for the same connection does nothing.
void DisconnectRequest(HostWord* holder);

}  // namespace quennet
