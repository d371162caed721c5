#pragma once
// What a thread does before it sleeps, whatever it sleeps for.

namespace quennet {

/// Sends off what the calling thread has written to its sockets and what still stands in user
/// memory. Every operation of the layer that suspends its thread calls this first: the peer may be
/// waiting for just these bytes. Does not wait itself. Defined beside the sockets.
void BeforeWait();

}  // namespace quennet
