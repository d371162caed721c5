#pragma once
// What is printed of an answer.

#include <winsock.h>

#include <ipexport.h>

#include "host/types.h"

namespace quennet {

/// Bytes of a datagram that PrintEchoReply looks at: the longest IP header and an echo message.
constexpr u32 reportedBytes = 60 + 12;

/// Prints what a received IP datagram says. `length` bytes have arrived; at least `reportedBytes`
/// can be read.
void PrintEchoReply(WindowNumber console, const u8* data, int length, const sockaddr_in& from);

/// Prints an answer that the system's library has received.
void PrintDllReply(WindowNumber console, const ICMP_ECHO_REPLY& reply, u32 sequence);

/// What arrived is no answer to a request of this process.
void PrintForeignPacket(WindowNumber console);

/// No answer has come in time.
void PrintTimeOut(WindowNumber console);

}  // namespace quennet
