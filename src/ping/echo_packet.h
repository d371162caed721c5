#pragma once
// The echo request that the raw engine sends: an ICMP echo message (RFC 792) whose data is the time
// of sending. All numbers are in the byte order of the machine, whoever answers sends them back as
// they are.

#include "host/types.h"

namespace quennet {

constexpr u32 echoRequestSize = 12;
constexpr u8 echoRequestType = 8;
constexpr u8 echoReplyType = 0;

struct EchoMessage {
    u8 type;
    u8 code;
    u16 checksum;
    u16 identifier;  // low part of the process's number
    u16 sequence;
    u32 timestamp;  // GetTickCount at sending
};
static_assert(sizeof(EchoMessage) == echoRequestSize && offsetof(EchoMessage, timestamp) == 8);

/// The identifier of all requests of this process.
u16 EchoIdentifier();

/// Makes a request of `size` bytes, at least 12: all but checksum, sequence and timestamp, which
/// are 0, and with a filler behind them.
void FillEchoRequest(u8* packet, u32 size);

/// Puts sequence, time and checksum into a request of 12 bytes.
void StampEchoRequest(u8* packet, u16 sequence);

/// The Internet checksum (RFC 1071) of the data, in the byte order of the machine.
u16 InternetChecksum(const void* data, u32 length);

}  // namespace quennet
