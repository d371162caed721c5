#pragma once
// The record of the ping tool. It lives between openings of the dialog, and a worker may outlive
// the dialog that started it.

#include "control/shared_word.h"

namespace quennet {

constexpr u32 pingTargetSize = 128;
constexpr u32 pingPacketSize = 1024;

/// Dialog and worker share it without a lock. `target` is written while no worker runs; the packets
/// are the worker's.
struct PingState {
    SharedWord window;  // the dialog that was opened last
    char target[pingTargetSize];
    SharedWord running;  // not 0 from the start of a worker to its last step
    SharedWord stopRequests;
    u8 request[pingPacketSize];
    u8 reply[pingPacketSize];
};
static_assert(offsetof(PingState, window) == 0 && offsetof(PingState, target) == 4);
static_assert(offsetof(PingState, running) == 132 && offsetof(PingState, stopRequests) == 136);
static_assert(offsetof(PingState, request) == 140 && offsetof(PingState, reply) == 1164);
static_assert(sizeof(PingState) == 2188);

}  // namespace quennet
